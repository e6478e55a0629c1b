#include "PopupView.h"

#include <Ecore_Input.h>
#include <Efl_Ui.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

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
  t_StopRowFocus();  // a hidden popup holds no keys
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
  m_HoldKeys();
  // A window that gets the focus only later has dropped the row focus.
  if (!m_rowFocus.bWindowHooked && m_pWindow) {
    evas_object_smart_callback_add(m_pWindow, "focus,in", m_WindowFocusInCB, this);
    m_rowFocus.bWindowHooked = true;
  }
  if (!m_rowFocus.bListHooked) {
    evas_object_smart_callback_add(pGenlist, "realized", m_RowRealizedCB, this);
    evas_object_smart_callback_add(pGenlist, "item,focused", m_RowFocusedCB, this);
    m_rowFocus.bListHooked = true;
  }
  m_TryRowFocus();
}

void CPopupView::t_StopRowFocus() {
  if (m_rowFocus.pJob) ecore_job_del(m_rowFocus.pJob);
  m_UnhookRender();
  if (m_rowFocus.bWindowHooked && m_pWindow) {
    evas_object_smart_callback_del_full(m_pWindow, "focus,in", m_WindowFocusInCB, this);
  }
  if (m_rowFocus.bListHooked && m_rowFocus.pGenlist) {
    evas_object_smart_callback_del_full(m_rowFocus.pGenlist, "realized", m_RowRealizedCB, this);
    evas_object_smart_callback_del_full(m_rowFocus.pGenlist, "item,focused", m_RowFocusedCB, this);
  }
  m_DropHold();
  m_rowFocus = RowFocus();
}

// Keys the viewer presses before the row has the focus wait for it: else a
// Down lands on the list's first row, and a Return on nothing. Handlers put
// first, not an event filter: a filter sees only the events of the next pass
// of the main loop, while keys read with the window's focus may already be
// queued behind the callback that shows the popup.
void CPopupView::m_HoldKeys() {
  if (m_rowFocus.pKeyDownHold) return;
  m_rowFocus.pKeyDownHold = ecore_event_handler_prepend(ECORE_EVENT_KEY_DOWN, m_KeyHoldCB, this);
  m_rowFocus.pKeyUpHold = ecore_event_handler_prepend(ECORE_EVENT_KEY_UP, m_KeyHoldCB, this);
}

// Held keys go back to the main loop in their order, at the end of its queue.
// Keys already queued before them (pressed while the row was being focused)
// would come first: they are sent behind them, until the released keys have
// been handled; then keys pass.
void CPopupView::m_ReleaseKeys() {
  for (const HeldKey& held : m_vecHeldKeys) {
    ecore_event_add(held.type, held.pEvent, nullptr, nullptr);
    m_vecReplayedKeys.push_back(held.pEvent);
  }
  m_vecHeldKeys.clear();
  if (m_vecReplayedKeys.empty()) m_DropHold();
}

// Keys pass from now on; the ones still held go back to the main loop.
void CPopupView::m_DropHold() {
  if (m_rowFocus.pKeyDownHold) ecore_event_handler_del(m_rowFocus.pKeyDownHold);
  if (m_rowFocus.pKeyUpHold) ecore_event_handler_del(m_rowFocus.pKeyUpHold);
  m_rowFocus.pKeyDownHold = m_rowFocus.pKeyUpHold = nullptr;
  for (const HeldKey& held : m_vecHeldKeys) ecore_event_add(held.type, held.pEvent, nullptr, nullptr);
  m_vecHeldKeys.clear();
  m_vecReplayedKeys.clear();
}

void CPopupView::m_QueueRowFocus() {
  if (m_rowFocus.bPending && m_rowFocus.pJob == nullptr) m_rowFocus.pJob = ecore_job_add(m_RowFocusJobCB, this);
}

bool CPopupView::m_IsRealized(Elm_Object_Item* pRow) const {
  Eina_List* pRealized = elm_genlist_realized_items_get(m_rowFocus.pGenlist);
  const bool bRealized = eina_list_data_find(pRealized, pRow) != nullptr;
  eina_list_free(pRealized);
  return bRealized;
}

// The toolkit takes the row once the window has the focus and the row is in
// the list's focus order. A realized row is, except inside the list's
// "realized" callback (hence the job) and, for a row scrolled into view while
// the list was built, until the next frame (asked for by damage).
void CPopupView::m_TryRowFocus() {
  RowFocus& focus = m_rowFocus;
  if (!focus.bPending || focus.pGenlist == nullptr) return;
  // Without the window's focus the toolkit drops item focus; focus,in retries.
  if (m_pWindow && !elm_win_focus_get(m_pWindow)) return;
  if (focus.pRow == nullptr) {
    focus.bPending = false;
    if (elm_genlist_items_count(focus.pGenlist) == 0 && focus.pFallback) {
      elm_object_focus_set(focus.pFallback, EINA_TRUE);
    } else {
      elm_object_focus_set(focus.pGenlist, EINA_TRUE);
    }
    m_ReleaseKeys();
    return;
  }
  if (!m_IsRealized(focus.pRow)) return;  // its "realized" retries
  // Asked the way the toolkit asks before it focuses a row (else it logs
  // "Could not fetch a node" and the row stays unfocused).
  efl_ui_focus_object_setup_order(focus.pRow);
  if (efl_ui_focus_manager_request_subchild(focus.pGenlist, focus.pRow) == nullptr) {
    m_HookRender();
    if (m_pWindow) evas_damage_rectangle_add(evas_object_evas_get(m_pWindow), 0, 0, 1, 1);
    return;
  }
  elm_object_focus_set(focus.pGenlist, EINA_TRUE);
  if (focus.pfnBefore) {
    focus.pfnBefore(focus.pData, focus.pRow);
    focus.pfnBefore = nullptr;  // once, even when the focus has to be tried again
  }
  elm_object_item_focus_set(focus.pRow, EINA_TRUE);
  // A window whose focus is on its way out refuses it: the next focus,in retries.
  if (elm_object_focused_item_get(focus.pGenlist) != focus.pRow) return;
  focus.bPending = false;
  focus.pLastRow = focus.pRow;
  m_ReleaseKeys();
}

void CPopupView::m_HookRender() {
  if (m_rowFocus.bRenderHooked || m_pWindow == nullptr) return;
  evas_event_callback_add(evas_object_evas_get(m_pWindow), EVAS_CALLBACK_RENDER_POST, m_RenderPostCB, this);
  m_rowFocus.bRenderHooked = true;
}

void CPopupView::m_UnhookRender() {
  if (!m_rowFocus.bRenderHooked || m_pWindow == nullptr) return;
  evas_event_callback_del_full(evas_object_evas_get(m_pWindow), EVAS_CALLBACK_RENDER_POST, m_RenderPostCB, this);
  m_rowFocus.bRenderHooked = false;
}

void CPopupView::m_RenderPostCB(void* data, Evas*, void*) {
  auto* pThis = static_cast<CPopupView*>(data);
  if (pThis == nullptr) return;
  pThis->m_UnhookRender();
  // Not from inside the render: a job after it.
  pThis->m_QueueRowFocus();
}

void CPopupView::m_RowFocusJobCB(void* data) {
  auto* pThis = static_cast<CPopupView*>(data);
  if (pThis == nullptr) return;
  pThis->m_rowFocus.pJob = nullptr;
  pThis->m_TryRowFocus();
}

void CPopupView::m_WindowFocusInCB(void* data, Evas_Object*, void*) {
  auto* pThis = static_cast<CPopupView*>(data);
  if (pThis == nullptr || pThis->m_pPopup == nullptr || !evas_object_visible_get(pThis->m_pPopup)) return;
  RowFocus& focus = pThis->m_rowFocus;
  if (focus.bPending) {
    // At once, not in a job: the keys that came with the focus are next in the queue.
    pThis->m_TryRowFocus();
    return;
  }
  // A window that lost the focus and got it back has lost the list's row
  // focus with it: give it back to the row that had it, unless the viewer had
  // moved on to another widget.
  Evas_Object* pFocused = elm_object_focused_object_get(pThis->m_pWindow);
  if (focus.pLastRow && elm_object_focused_item_get(focus.pGenlist) == nullptr &&
      (pFocused == nullptr || pFocused == focus.pGenlist)) {
    elm_object_item_focus_set(focus.pLastRow, EINA_TRUE);
  }
}

void CPopupView::m_RowFocusedCB(void* data, Evas_Object*, void* event) {
  auto* pThis = static_cast<CPopupView*>(data);
  if (pThis && event) pThis->m_rowFocus.pLastRow = static_cast<Elm_Object_Item*>(event);
}

void CPopupView::m_RowRealizedCB(void* data, Evas_Object*, void* event) {
  auto* pThis = static_cast<CPopupView*>(data);
  if (pThis && event && event == pThis->m_rowFocus.pRow) pThis->m_QueueRowFocus();
}

Eina_Bool CPopupView::m_KeyHoldCB(void* data, int type, void* event) {
  auto* pThis = static_cast<CPopupView*>(data);
  if (pThis == nullptr || event == nullptr) return ECORE_CALLBACK_PASS_ON;
  std::vector<Ecore_Event_Key*>& replayed = pThis->m_vecReplayedKeys;
  const auto it = std::find(replayed.begin(), replayed.end(), event);
  if (it != replayed.end()) {
    replayed.erase(it);
    if (replayed.empty() && !pThis->m_rowFocus.bPending) pThis->m_DropHold();
    return ECORE_CALLBACK_PASS_ON;
  }
  Ecore_Event_Key* pCopy = m_CopyKey(static_cast<const Ecore_Event_Key*>(event));
  if (pCopy == nullptr) return ECORE_CALLBACK_PASS_ON;
  if (!pThis->m_rowFocus.bPending) {
    // Queued before the released keys: behind them.
    ecore_event_add(type, pCopy, nullptr, nullptr);
    replayed.push_back(pCopy);
    return ECORE_CALLBACK_DONE;
  }
  pThis->m_vecHeldKeys.push_back({type, pCopy});
  // A key for a window that never got the input focus (nobody gave it): the
  // row can only take the focus once the window has it.
  if (!pThis->m_rowFocus.bFocusAsked && pThis->m_pWindow && !elm_win_focus_get(pThis->m_pWindow)) {
    pThis->m_rowFocus.bFocusAsked = true;
    ecore_evas_focus_set(ecore_evas_ecore_evas_get(evas_object_evas_get(pThis->m_pWindow)), EINA_TRUE);
  }
  return ECORE_CALLBACK_DONE;
}

// One allocation holding the event and its texts, freed by the main loop with
// free() once the replayed event has been handled.
Ecore_Event_Key* CPopupView::m_CopyKey(const Ecore_Event_Key* pKey) {
  const char* texts[] = {pKey->keyname, pKey->key, pKey->string, pKey->compose};
  size_t nSize = sizeof(Ecore_Event_Key);
  for (const char* pText : texts) nSize += pText ? strlen(pText) + 1 : 0;
  auto* pCopy = static_cast<Ecore_Event_Key*>(calloc(1, nSize));
  if (pCopy == nullptr) return nullptr;
  *pCopy = *pKey;
  const char** copies[] = {&pCopy->keyname, &pCopy->key, &pCopy->string, &pCopy->compose};
  char* pNext = reinterpret_cast<char*>(pCopy + 1);
  for (size_t i = 0; i < 4; ++i) {
    if (texts[i] == nullptr) continue;
    *copies[i] = strcpy(pNext, texts[i]);
    pNext += strlen(texts[i]) + 1;
  }
  return pCopy;
}
