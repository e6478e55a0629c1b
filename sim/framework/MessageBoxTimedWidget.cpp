// The time-out and visibility half of the platform's widgets: after the set
// number of seconds (scaled by TVSIM_TIME_SCALE) without activity while shown,
// the time-out callback runs, and again every period until the widget is
// hidden, or until the next activity when the callback returns 0.
#include <Ecore.h>

#include "MessageBox.h"
#include "TimeScale.h"

namespace {

// What m_pTimer points to: the timer and a copy of the callback, so that the
// timer's callback needs none of the widget's members.
struct TimerState {
  Ecore_Timer* timer = nullptr;
  TimedWidget::TimeOutCallback callback = nullptr;
  void* data = nullptr;
  bool frozen = false;
  bool* deleted = nullptr;  // set while the callback runs
};

Eina_Bool OnTimer(void* data) {
  auto* state = static_cast<TimerState*>(data);
  if (state->callback == nullptr) return ECORE_CALLBACK_RENEW;
  bool deleted = false;
  state->deleted = &deleted;
  const unsigned char again = state->callback(state->data);
  // The callback may have hidden the widget or deleted it: then the timer and
  // its state are gone already.
  if (deleted) return ECORE_CALLBACK_CANCEL;
  state->deleted = nullptr;
  if (!again) {
    ecore_timer_freeze(state->timer);
    state->frozen = true;
  }
  return ECORE_CALLBACK_RENEW;
}

}  // namespace

TimedWidget::TimedWidget() = default;

TimedWidget::~TimedWidget() { t_StopTimer(); }

void TimedWidget::Destroy() {
  t_StopTimer();
  m_bVisible = false;
}

void TimedWidget::Show() {
  t_StartTimer();
  t_SetVisible(true);
}

void TimedWidget::Hide() {
  t_StopTimer();
  t_SetVisible(false);
}

void TimedWidget::SetTimeOutSecs(int seconds) {
  m_nTimeOutSecs = seconds > 0 ? seconds : 0;
  if (m_bVisible) t_StartTimer();
}

void TimedWidget::SetTimeOutCallback(TimeOutCallback callback, void* data) {
  m_pTimeOutCb = callback;
  m_pTimeOutData = data;
  if (auto* state = static_cast<TimerState*>(m_pTimer)) {
    state->callback = callback;
    state->data = data;
  }
}

void TimedWidget::SetVisibleChangeCallback(VisibleChangeCallback callback, void* data) {
  m_pVisibleCb = callback;
  m_pVisibleData = data;
}

void TimedWidget::t_SetVisible(bool visible) {
  if (m_bVisible == visible) return;
  m_bVisible = visible;
  if (m_pVisibleCb) m_pVisibleCb(m_pVisibleData);  // last: it may delete the widget
}

// (Re)starts the period from now; no time-out set means no timer.
void TimedWidget::t_StartTimer() {
  if (m_nTimeOutSecs <= 0) {
    t_StopTimer();
    return;
  }
  const double period = tvsim::Scaled(static_cast<double>(m_nTimeOutSecs));
  auto* state = static_cast<TimerState*>(m_pTimer);
  if (state == nullptr) {
    state = new TimerState();
    state->timer = ecore_timer_loop_add(period, OnTimer, state);
    if (state->timer == nullptr) {
      delete state;
      return;
    }
    m_pTimer = state;
  } else {
    if (state->frozen) ecore_timer_thaw(state->timer);
    state->frozen = false;
    ecore_timer_interval_set(state->timer, period);
    ecore_timer_reset(state->timer);
  }
  state->callback = m_pTimeOutCb;
  state->data = m_pTimeOutData;
}

void TimedWidget::t_StopTimer() {
  auto* state = static_cast<TimerState*>(m_pTimer);
  if (state == nullptr) return;
  m_pTimer = nullptr;
  if (state->deleted) *state->deleted = true;
  ecore_timer_del(state->timer);
  delete state;
}
