#include "AntennaSelectionPopup.h"

#include <libintl.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "App.h"
#include "Logging.h"
#include "MessageBox.h"
#include "Trace.h"
#include "Util.h"

#if __has_include("StopRecordingPopupView.h")
#include "StopRecordingPopupView.h"
#define HAVE_STOP_RECORDING_POPUP 1
#endif

namespace {

const char* const kThemePath = TV_RES_DIR "/edje/antenna-selection.edj";
const char* const kLayoutGroup = "genlist.layout";
const char* const kContentPart = "elm.swallow.content";
const char* const kPopupStyle = "C_PopupBasic_WhiteRight";
const char* const kGenlistStyle = "C_Scrollbar_White";
const char* const kItemStyle = "C_Textitem_WhiteSingleline01";
const char* const kButtonStyle = "C_ButtonBasic_WhiteText";
const char* const kItemTextPart = "elm.text";
const char* const kKeyBack = "XF86Back";
const int kTimeOutSeconds = 30;
// The source path the trace points report.
const char* const kTraceFile = "src/AntennaSelectionPopup.cpp";

}  // namespace

AntennaSelectionPopup* AntennaSelectionPopup::s_instance = nullptr;
bool AntennaSelectionPopup::s_bWaitStopRecToChangeAntenna = false;

AntennaSelectionPopup::AntennaSelectionPopup()
    : m_pCloseButton(nullptr),
      m_pGenlist(nullptr),
      m_pLayout(nullptr),
      m_pFocusItem(nullptr),
      m_bIgnoreSelect(false),
      m_bFirstVoiceText(true),
      m_pMsgBox(nullptr),
      m_pStopRecPopup(nullptr),
      m_bSelectCurrentOnShow(false) {
  LOG_TRACE("\n");
  rec_register_to_other_apps_cb(sm_CbSvcPvr, this);
}

AntennaSelectionPopup::~AntennaSelectionPopup() {
  LOG_TRACE("\n");
  rec_unregister_to_other_apps_cb(sm_CbSvcPvr);
}

AntennaSelectionPopup* AntennaSelectionPopup::GetInstance() {
  if (s_instance == nullptr) {
    s_instance = new AntennaSelectionPopup();
    s_instance->Create();
  }
  return s_instance;
}

void AntennaSelectionPopup::DestroyInstance() {
  if (s_instance == nullptr) return;
  s_instance->Destroy();
  delete s_instance;
  s_instance = nullptr;
}

TvMode AntennaSelectionPopup::GetTvMode() {
  LOG_TRACE("\n");
  return s_instance ? s_instance->m_tvMode : TvMode();
}

void AntennaSelectionPopup::Update() {
  CPopupView::Update();
#ifdef HAVE_STOP_RECORDING_POPUP
  if (m_pStopRecPopup) m_pStopRecPopup->Update();
#endif
}

void AntennaSelectionPopup::t_Create() {
  CPopupView::t_Create();
  m_vecAntennaList.clear();

  elm_object_style_set(m_pPopup, kPopupStyle);
  evas_object_size_hint_weight_set(m_pPopup, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  evas_object_size_hint_align_set(m_pPopup, EVAS_HINT_FILL, EVAS_HINT_FILL);
  elm_object_event_callback_add(m_pPopup, m_PopupPressCB, this);
  if (m_pPopup) evas_object_event_callback_add(m_pPopup, EVAS_CALLBACK_DEL, m_ContentDelCB, this);

  m_pLayout = elm_layout_add(m_pPopup);
  LOG_TRACE("%s\n", kThemePath);
  if (!elm_layout_file_set(m_pLayout, kThemePath, kLayoutGroup)) {
    LOG_ERROR("elm_layout_file_set_err\n");
  }
  elm_object_content_set(m_pPopup, m_pLayout);
  elm_object_part_text_set(m_pPopup, "title,text", gettext("TV_SID_ANTENNA_TYPE"));
  evas_object_size_hint_weight_set(m_pLayout, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  evas_object_size_hint_align_set(m_pLayout, EVAS_HINT_FILL, EVAS_HINT_FILL);
  evas_object_show(m_pLayout);

  m_pGenlist = elm_genlist_add(m_pLayout);
  elm_object_style_set(m_pGenlist, kGenlistStyle);
  elm_object_part_content_set(m_pLayout, kContentPart, m_pGenlist);
  elm_object_scroll_item_loop_enabled_set(m_pGenlist, EINA_FALSE);
  // ALWAYS: picking the already selected row must still call its callback.
  elm_genlist_select_mode_set(m_pGenlist, ELM_OBJECT_SELECT_MODE_ALWAYS);

  m_AddAntennaListItem();

  evas_object_show(m_pGenlist);
  evas_object_smart_callback_add(m_pGenlist, "item,focused", m_ItemFocusedCB, this);
  evas_object_smart_callback_add(m_pGenlist, "realized", m_ItemRealizedCB, this);

  m_pCloseButton = elm_button_add(m_pPopup);
  elm_object_style_set(m_pCloseButton, kButtonStyle);
  elm_object_text_set(m_pCloseButton, gettext("SID_CLOSE"));
  elm_object_part_content_set(m_pPopup, "button1", m_pCloseButton);
  evas_object_smart_callback_add(m_pCloseButton, "clicked", m_ButtonClickCB, this);
  evas_object_smart_callback_add(m_pCloseButton, "focused", m_ButtonFocusedCB, this);
}

void AntennaSelectionPopup::m_AddAntennaListItem() {
  Elm_Genlist_Item_Class* pItc = elm_genlist_item_class_new();
  if (pItc) {
    pItc->item_style = kItemStyle;
    pItc->func.text_get = m_ItemTextGet;
    pItc->func.del = m_ItemDelCB;  // the rows own their name copies
  }

  Util::GetAntennaList(m_vecAntennaList);
  LOG_TRACE("Antenna list size = %d\n", static_cast<int>(m_vecAntennaList.size()));

  for (TvMode& mode : m_vecAntennaList) {
    std::string strName = Util::GetAntennaNameByMode(mode);
    LOG_TRACE("add Antenna list item, %s\n", strName.c_str());
    char* pData = strdup(strName.c_str());
    // Read per row on purpose: the current mode is what the TV says now.
    TvMode current = Util::GetTvMode();
    if (current == mode) {
      LOG_TRACE("current Antenna item %s\n", strName.c_str());
      m_pFocusItem = elm_genlist_item_append(m_pGenlist, pItc, pData, nullptr, ELM_GENLIST_ITEM_NONE,
                                             m_AntennaItemSelectCb, this);
    } else {
      elm_genlist_item_append(m_pGenlist, pItc, pData, nullptr, ELM_GENLIST_ITEM_NONE, m_AntennaItemSelectCb,
                              this);
    }
  }

  if (m_pFocusItem) {
    elm_genlist_item_show(m_pFocusItem, ELM_GENLIST_ITEM_SCROLLTO_TOP);
    // Selecting or focusing a row of a popup that is not shown yet leaves the
    // toolkit's focus layer pointing at a dead object when the popup is
    // deleted; both happen in t_Show instead, once.
    m_bSelectCurrentOnShow = true;
  }
  if (pItc) elm_genlist_item_class_free(pItc);
}

void AntennaSelectionPopup::t_Show() {
  CPopupView::t_Show();
  evas_object_show(m_pPopup);
  evas_object_show(m_pLayout);
  evas_object_show(m_pCloseButton);
  evas_object_show(m_pGenlist);
  // Focusing the row right here is refused or lost while the window has no
  // focus or the row is not on screen yet; the base class waits for both.
  t_FocusRowSoon(m_pGenlist, m_pFocusItem, m_pCloseButton, m_BeforeRowFocusCB, this);
}

// The first time the current row gets the focus it is also selected.
void AntennaSelectionPopup::m_BeforeRowFocusCB(void* data, Elm_Object_Item* row) {
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis == nullptr || row == nullptr || !pThis->m_bSelectCurrentOnShow) return;
  pThis->m_bSelectCurrentOnShow = false;
  // Set only when there is a current row: without one there is no selection
  // to swallow, and the flag would eat the viewer's first pick.
  pThis->m_bIgnoreSelect = true;
  elm_genlist_item_selected_set(row, EINA_TRUE);
}

void AntennaSelectionPopup::t_Destroy() {
  LOG_TRACE("\n");
  m_bSelectCurrentOnShow = false;
  // Nothing that carries `this` may fire while the widgets go away.
  if (m_pGenlist) {
    evas_object_smart_callback_del_full(m_pGenlist, "item,focused", m_ItemFocusedCB, this);
    evas_object_smart_callback_del_full(m_pGenlist, "realized", m_ItemRealizedCB, this);
  }
  if (m_pCloseButton) {
    evas_object_smart_callback_del_full(m_pCloseButton, "clicked", m_ButtonClickCB, this);
    evas_object_smart_callback_del_full(m_pCloseButton, "focused", m_ButtonFocusedCB, this);
  }
  if (m_pPopup) {
    elm_object_event_callback_del(m_pPopup, m_PopupPressCB, this);
    evas_object_event_callback_del_full(m_pPopup, EVAS_CALLBACK_DEL, m_ContentDelCB, this);
  }
  CPopupView::t_Destroy();
  m_ForgetWidgets();  // children of the popup: deleted with it above

  if (m_pMsgBox) {
    delete m_pMsgBox;
    m_pMsgBox = nullptr;
  }
  if (m_pStopRecPopup) {
    LOG_TRACE("\n");
#ifdef HAVE_STOP_RECORDING_POPUP
    m_pStopRecPopup->Destroy();
    delete m_pStopRecPopup;
#endif
    m_pStopRecPopup = nullptr;
  }
}

int AntennaSelectionPopup::t_GetTimeOutSeconds() { return kTimeOutSeconds; }

void AntennaSelectionPopup::t_OnTimeOut() {
  LOG_TRACE("enter_t_OnTimeOut\n");
  ui_app_exit();
}

void AntennaSelectionPopup::m_ForgetWidgets() {
  m_pCloseButton = nullptr;
  m_pGenlist = nullptr;
  m_pLayout = nullptr;
  m_pFocusItem = nullptr;
}

// The popup went away under us (its window was deleted).
void AntennaSelectionPopup::m_ContentDelCB(void* data, Evas*, Evas_Object*, void*) {
  if (data) static_cast<AntennaSelectionPopup*>(data)->m_ForgetWidgets();
}

char* AntennaSelectionPopup::m_ItemTextGet(void* data, Evas_Object*, const char* part) {
  const char* pName = static_cast<const char*>(data);
  if (pName != nullptr && part != nullptr && strcmp(part, kItemTextPart) == 0) {
    LOG_TRACE("text is %s\n", pName);
    // Row texts are markup: an antenna named "A&B" must show as such.
    return elm_entry_utf8_to_markup(pName);
  }
  LOG_INFO("pPart is not elm.text.sliding\n");
  return nullptr;
}

void AntennaSelectionPopup::m_ItemDelCB(void* data, Evas_Object*) { free(data); }

void AntennaSelectionPopup::m_ItemRealizedCB(void* data, Evas_Object*, void* event) {
  LOG_INFO("m_ItemRealizedCB is call\n");
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis == nullptr) return;
  auto* pItem = static_cast<Elm_Object_Item*>(event);
  if (pItem == nullptr) {
    LOG_ERROR("\n");
    return;
  }
  Evas_Object* pAccess = elm_object_item_access_object_get(pItem);
  if (pAccess) elm_access_info_cb_set(pAccess, ELM_ACCESS_INFO, m_ItemVoiceTextCB, pThis);
}

char* AntennaSelectionPopup::m_ItemVoiceTextCB(void* data, Evas_Object*) {
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis == nullptr) return strdup("");

  std::string strText;
  bool bComplete = true;
  auto append = [&](const char* pPiece) {
    if (!bComplete || pPiece == nullptr) {
      bComplete = false;
      return;
    }
    strText += pPiece;
  };
  if (pThis->m_bFirstVoiceText) {
    pThis->m_bFirstVoiceText = false;
    append(gettext("TV_SID_ANTENNA_TYPE"));
    append(",");
    append(std::to_string(pThis->m_vecAntennaList.size()).c_str());
    append(",");
    append(gettext("TV_SID_ITEMS"));
    append(",");
  }
  Elm_Object_Item* pFocused = pThis->m_pGenlist ? elm_object_focused_item_get(pThis->m_pGenlist) : nullptr;
  append(pFocused ? elm_object_item_part_text_get(pFocused, nullptr) : nullptr);
  return strdup(strText.c_str());
}

Eina_Bool AntennaSelectionPopup::m_PopupPressCB(void* data, Evas_Object*, Evas_Object*, Evas_Callback_Type type,
                                                void* event) {
  // Only key events carry a key name; anything else (the wheel) is no key.
  const char* pKeyName = nullptr;
  if (event && type == EVAS_CALLBACK_KEY_DOWN) pKeyName = static_cast<Evas_Event_Key_Down*>(event)->keyname;
  if (event && type == EVAS_CALLBACK_KEY_UP) pKeyName = static_cast<Evas_Event_Key_Up*>(event)->keyname;
  if (event == nullptr || pKeyName == nullptr) {
    LOG_ERROR("event or keyname is null\n");
    return EINA_TRUE;
  }
  LOG_TRACE("%d, %s\n", static_cast<int>(type), pKeyName);
  if (data == nullptr) {
    LOG_ERROR("param error\n");
    return EINA_TRUE;
  }
  if (type != EVAS_CALLBACK_KEY_DOWN) {
    LOG_INFO("Type is not key down\n");
    return EINA_TRUE;
  }
  LOG_TRACE("m_PopupPressCB...\n");
  if (strcmp(pKeyName, kKeyBack) == 0) {
    LOG_TRACE("key back.\n");
    ui_app_exit();
    return EINA_TRUE;
  }
  // Other keys belong to the list and the button (Return selects a row).
  return EINA_FALSE;
}

void AntennaSelectionPopup::m_ButtonClickCB(void* data, Evas_Object* obj, void*) {
  LOG_TRACE("m_ButtonClickCB\n");
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis == nullptr || obj == nullptr) {
    LOG_ERROR("Assertion failed.\n");
    return;
  }
  if (obj == pThis->m_pCloseButton) {
    LOG_TRACE("Cancel button clicked\n");
    ui_app_exit();
  }
}

void AntennaSelectionPopup::m_ButtonFocusedCB(void* data, Evas_Object* obj, void*) {
  LOG_TRACE("m_ButtonFocusedCB\n");
  static trace::TraceCodeLocation s_location(
      kTraceFile, __LINE__, "static void AntennaSelectionPopup::m_ButtonFocusedCB(void*, Evas_Object*, void*)");
  trace::TraceScope scope(s_location);
  {
    trace::TraceScopeHandler handler = trace::TraceScopeHandler::Instance(scope);
    if (handler.IsActive()) scope.m_Store(obj ? elm_object_part_text_get(obj, nullptr) : nullptr);
  }
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis) {
    pThis->t_ResetTimeOut();
  } else {
    LOG_ERROR("Assertion failed.\n");
  }
}

void AntennaSelectionPopup::m_ItemFocusedCB(void* data, Evas_Object* obj, void* event) {
  LOG_INFO("m_ItemFocusedCB is call\n");
  static trace::TraceCodeLocation s_location(
      kTraceFile, __LINE__, "static void AntennaSelectionPopup::m_ItemFocusedCB(void*, Evas_Object*, void*)");
  trace::TraceScope scope(s_location);
  {
    trace::TraceScopeHandler handler = trace::TraceScopeHandler::Instance(scope);
    if (handler.IsActive()) scope.m_Store(obj ? elm_object_part_text_get(obj, nullptr) : nullptr);
  }
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis && pThis->m_pCloseButton) {
    pThis->t_ResetTimeOut();
    pThis->m_pFocusItem = static_cast<Elm_Object_Item*>(event);
  }
}

void AntennaSelectionPopup::m_AntennaItemSelectCb(void* data, Evas_Object* obj, void* event) {
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis == nullptr || obj == nullptr) {
    LOG_ERROR("get this pointer error\n");
    return;
  }
  // The popup's own selection of the current row, while the list is built.
  if (pThis->m_bIgnoreSelect) {
    pThis->m_bIgnoreSelect = false;
    return;
  }
  auto* pItem = static_cast<Elm_Object_Item*>(event);
  const int nIndex = Util::GetGenlistItemIndex(pItem);
  if (nIndex < 0 || static_cast<size_t>(nIndex) >= pThis->m_vecAntennaList.size()) return;

  TvMode selected = pThis->m_vecAntennaList[nIndex];
  TvMode current = Util::GetTvMode();
  std::string strCurrentName = Util::GetAntennaNameByMode(current);
  const char* pSelectedName = static_cast<const char*>(elm_object_item_data_get(pItem));
  std::string strCount = std::to_string(pThis->m_vecAntennaList.size());
  Util::KPILogging(Util::KPI_SELECT_ANTENNA, pSelectedName, strCurrentName.c_str(), strCount.c_str());

  if (current == selected) {
    LOG_TRACE("It's selecting same antenna as current , Do nothing.\n");
    ui_app_exit();
    return;
  }

  const int nRecordCnt = Util::PvrRecording(false);
  const int nTunerCnt = Util::NumOfRecordableTuner();
  LOG_TRACE("nRecordCnt %d, nTunerCnt %d \n", nRecordCnt, nTunerCnt);

  if (nRecordCnt == 0 || (nRecordCnt == 1 && nTunerCnt > 1)) {
    Util::ChangeAntenna(selected);
    ui_app_exit();
  } else if (nRecordCnt == 1 || nRecordCnt == 2) {
    // A recording would be cut off. Asking first (message box, stop-recording
    // popup) comes with the confirmation flow; until then end without switching.
    ui_app_exit();
  } else {
    LOG_ERROR("Wrong recording count %d\n", nRecordCnt);
  }
}

void AntennaSelectionPopup::sm_CbSvcPvr(rec_result, void*) {
  // Only stop reports the popup waits for matter; nothing waits yet.
  LOG_TRACE("\n");
}
