#include "PopupView.h"

#include "Logging.h"
#include "Util.h"

namespace {

const double kEnlargedScale = 1.2;
const double kNormalScale = 1.0;

}  // namespace

CPopupView::CPopupView() : m_pWindow(nullptr), m_pPopup(nullptr) {}

CPopupView::~CPopupView() {}

void CPopupView::t_Create() {
  CView::t_Create();
  m_pWindow = t_GetWindow();
  m_pPopup = elm_popup_add(m_pWindow);
  if (m_pPopup == nullptr) {
    LOG_ERROR("Assertion failed.\n");
    return;
  }
  // The window may take the popup down with it; forget the pointer then.
  evas_object_event_callback_add(m_pPopup, EVAS_CALLBACK_DEL, m_PopupDelCB, this);
  Update();
}

void CPopupView::t_Destroy() {
  t_StopRowFocus();
  if (m_pPopup) {
    evas_object_event_callback_del_full(m_pPopup, EVAS_CALLBACK_DEL, m_PopupDelCB, this);
    evas_object_del(m_pPopup);
    m_pPopup = nullptr;
  }
  CView::t_Destroy();
}

void CPopupView::t_Show() {
  CView::t_Show();
  if (m_pPopup) evas_object_show(m_pPopup);
}

void CPopupView::t_Hide() {
  if (m_pPopup) evas_object_hide(m_pPopup);
  CView::t_Hide();
}

void CPopupView::Update() {
  if (Util::IsEnlarge()) {
    LOG_TRACE("enlarge on\n");
    if (m_pPopup) elm_object_scale_set(m_pPopup, kEnlargedScale);
  } else {
    LOG_TRACE("enlarge off\n");
    if (m_pPopup) elm_object_scale_set(m_pPopup, kNormalScale);
  }
}

Evas_Object* CPopupView::t_GetWindow() { return Util::GetWindow(); }

const char* CPopupView::t_KeyName(Evas_Callback_Type type, void* event) {
  if (event == nullptr) return nullptr;
  if (type == EVAS_CALLBACK_KEY_DOWN) return static_cast<Evas_Event_Key_Down*>(event)->keyname;
  if (type == EVAS_CALLBACK_KEY_UP) return static_cast<Evas_Event_Key_Up*>(event)->keyname;
  return nullptr;
}

void CPopupView::m_PopupDelCB(void* data, Evas*, Evas_Object*, void*) {
  auto* pThis = static_cast<CPopupView*>(data);
  if (pThis == nullptr) return;
  pThis->m_pPopup = nullptr;
  pThis->t_StopRowFocus();
}

void CPopupView::t_FocusRowSoon(Evas_Object* pGenlist, Elm_Object_Item* pRow, Evas_Object* pFallback,
                                RowFocusCb pfnBefore, void* pData) {
  if (pGenlist == nullptr) return;
  if (m_rowFocus.pGenlist != pGenlist) t_StopRowFocus();
  m_rowFocus.pGenlist = pGenlist;
  m_rowFocus.pRow = pRow;
  m_rowFocus.pFallback = pFallback;
  m_rowFocus.pfnBefore = pfnBefore;
  m_rowFocus.pData = pData;
  m_rowFocus.bPending = true;
  // A window that gets the focus only later has dropped the row focus.
  if (!m_rowFocus.bWindowHooked && m_pWindow) {
    evas_object_smart_callback_add(m_pWindow, "focus,in", m_WindowFocusInCB, this);
    m_rowFocus.bWindowHooked = true;
  }
  if (!m_rowFocus.bListHooked) {
    evas_object_smart_callback_add(pGenlist, "realized", m_RowRealizedCB, this);
    m_rowFocus.bListHooked = true;
  }
  m_QueueRowFocus();
}

void CPopupView::t_StopRowFocus() {
  if (m_rowFocus.pJob) ecore_job_del(m_rowFocus.pJob);
  m_UnhookRender();
  if (m_rowFocus.bWindowHooked && m_pWindow) {
    evas_object_smart_callback_del_full(m_pWindow, "focus,in", m_WindowFocusInCB, this);
  }
  if (m_rowFocus.bListHooked && m_rowFocus.pGenlist) {
    evas_object_smart_callback_del_full(m_rowFocus.pGenlist, "realized", m_RowRealizedCB, this);
  }
  m_rowFocus = RowFocus();
}

void CPopupView::m_QueueRowFocus() {
  if (m_rowFocus.bPending && m_rowFocus.pJob == nullptr) m_rowFocus.pJob = ecore_job_add(m_RowFocusJobCB, this);
}

void CPopupView::m_UnhookRender() {
  if (!m_rowFocus.bRenderHooked || m_pWindow == nullptr) return;
  evas_event_callback_del_full(evas_object_evas_get(m_pWindow), EVAS_CALLBACK_RENDER_POST, m_RenderPostCB, this);
  m_rowFocus.bRenderHooked = false;
}

// On screen: realized and inside the list's box. The toolkit logs an error
// for a row it has not realized, so that is asked first.
bool CPopupView::m_IsOnScreen(Elm_Object_Item* pRow) const {
  Eina_List* pRealized = elm_genlist_realized_items_get(m_rowFocus.pGenlist);
  const bool bRealized = eina_list_data_find(pRealized, pRow) != nullptr;
  eina_list_free(pRealized);
  if (!bRealized) return false;
  Evas_Object* pTrack = elm_object_item_track(pRow);
  if (pTrack == nullptr) return false;
  Evas_Coord x, y, w, h, lx, ly, lw, lh;
  evas_object_geometry_get(pTrack, &x, &y, &w, &h);
  elm_object_item_untrack(pRow);
  evas_object_geometry_get(m_rowFocus.pGenlist, &lx, &ly, &lw, &lh);
  return w > 0 && h > 0 && y >= ly && y + h <= ly + lh;
}

void CPopupView::m_RowFocusJobCB(void* data) {
  auto* pThis = static_cast<CPopupView*>(data);
  if (pThis == nullptr) return;
  RowFocus& focus = pThis->m_rowFocus;
  focus.pJob = nullptr;
  if (!focus.bPending || focus.pGenlist == nullptr) return;
  // Without the window's focus the toolkit drops item focus; focus,in retries.
  if (pThis->m_pWindow && !elm_win_focus_get(pThis->m_pWindow)) return;
  if (focus.pRow == nullptr) {
    focus.bPending = false;
    if (elm_genlist_items_count(focus.pGenlist) == 0 && focus.pFallback) {
      elm_object_focus_set(focus.pFallback, EINA_TRUE);
    } else {
      elm_object_focus_set(focus.pGenlist, EINA_TRUE);
    }
    return;
  }
  // The list takes a row into its focus order in the frame after the row came
  // into view (until then focusing it fails with an error): wait for the row
  // to be on screen for one whole frame, looking again after each frame.
  const bool bOnScreen = pThis->m_IsOnScreen(focus.pRow);
  const bool bReady = bOnScreen && focus.bSeenOnScreen;
  focus.bSeenOnScreen = bOnScreen;
  if (!bReady) {
    if (!focus.bRenderHooked && pThis->m_pWindow) {
      evas_event_callback_add(evas_object_evas_get(pThis->m_pWindow), EVAS_CALLBACK_RENDER_POST, m_RenderPostCB,
                              pThis);
      focus.bRenderHooked = true;
    }
    // An idle canvas draws its next frame only when something changes: ask
    // for one, so that the row is focused in the frame right after.
    if (bOnScreen && pThis->m_pWindow) evas_damage_rectangle_add(evas_object_evas_get(pThis->m_pWindow), 0, 0, 1, 1);
    return;
  }
  pThis->m_UnhookRender();
  focus.bPending = false;
  elm_object_focus_set(focus.pGenlist, EINA_TRUE);
  if (focus.pfnBefore) focus.pfnBefore(focus.pData, focus.pRow);
  elm_object_item_focus_set(focus.pRow, EINA_TRUE);
}

void CPopupView::m_WindowFocusInCB(void* data, Evas_Object*, void*) {
  auto* pThis = static_cast<CPopupView*>(data);
  if (pThis == nullptr || pThis->m_pPopup == nullptr || !evas_object_visible_get(pThis->m_pPopup)) return;
  // Only a focus still to be given: never pull it from where the viewer put it.
  pThis->m_QueueRowFocus();
}

void CPopupView::m_RowRealizedCB(void* data, Evas_Object*, void* event) {
  auto* pThis = static_cast<CPopupView*>(data);
  if (pThis && event && event == pThis->m_rowFocus.pRow) pThis->m_QueueRowFocus();
}

void CPopupView::m_RenderPostCB(void* data, Evas*, void*) {
  // Not from inside the render: a job after it.
  if (data) static_cast<CPopupView*>(data)->m_QueueRowFocus();
}
