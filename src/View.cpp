#include "View.h"

CView::CView() : m_pTimer(nullptr) {}

// Deliberately releases nothing: owners run Destroy() first, which deletes the timer.
CView::~CView() {}

int CView::GetShowProperty() { return 0; }

void CView::Create() { t_Create(); }

void CView::Destroy() { t_Destroy(); }

void CView::Show() { t_Show(); }

void CView::Hide() { t_Hide(); }

void CView::OnPause() {
  if (m_pTimer) ecore_timer_freeze(m_pTimer);
  t_Pause();
}

void CView::OnResume() {
  if (m_pTimer) {
    ecore_timer_thaw(m_pTimer);
    // A resumed view gets the full period again, not what was left of it.
    ecore_timer_reset(m_pTimer);
  }
  t_Resume();
}

void CView::t_Create() {}

void CView::t_Destroy() {
  if (m_pTimer) {
    ecore_timer_del(m_pTimer);
    m_pTimer = nullptr;
  }
}

void CView::t_Show() {
  const int nSeconds = t_GetTimeOutSeconds();
  // Showing a shown view keeps the running countdown.
  if (nSeconds > 0 && m_pTimer == nullptr) {
    m_pTimer = ecore_timer_add(static_cast<double>(nSeconds), m_TimeOutCB, this);
  }
}

void CView::t_Hide() {
  if (m_pTimer) {
    ecore_timer_del(m_pTimer);
    m_pTimer = nullptr;
  }
}

void CView::t_Pause() {}

void CView::t_Resume() {}

int CView::t_GetTimeOutSeconds() { return 0; }

void CView::t_OnTimeOut() {}

void CView::t_ResetTimeOut() {
  if (m_pTimer) ecore_timer_reset(m_pTimer);
}

Eina_Bool CView::m_TimeOutCB(void* data) {
  // Periodic on purpose: the timer keeps firing until the view hides or is
  // destroyed. t_OnTimeOut may delete the view (and this timer), so nothing
  // touches the view after it returns.
  if (data == nullptr) return ECORE_CALLBACK_RENEW;
  static_cast<CView*>(data)->t_OnTimeOut();
  return ECORE_CALLBACK_RENEW;
}
