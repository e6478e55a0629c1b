#include "AntennaSelectionPopup.h"

#include <libintl.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "App.h"
#include "Logging.h"
#include "MessageBox.h"
#include "Trace.h"
#include "Util.h"

#include "StopRecordingPopupView.h"

namespace {

const char* const kThemePath = TV_RES_DIR "/edje/antenna-selection.edj";
const char* const kLayoutGroup = "genlist.layout";
const char* const kContentPart = "elm.swallow.content";
const char* const kPopupStyle = "C_PopupBasic_WhiteRight";
const char* const kGenlistStyle = "C_Scrollbar_White";
const char* const kItemStyle = "C_Textitem_WhiteSingleline01";
const char* const kButtonStyle = "C_ButtonBasic_WhiteText";
const char* const kItemTextPart = "elm.text";
// Five rows, as high as the theme makes the list (at the application's base scale).
const int kListMinHeight = 96 * 5;
const char* const kKeyBack = "XF86Back";
const char* const kKeyReturn = "Return";
const int kTimeOutSeconds = 30;
const int kMsgBoxTimeOutSeconds = 10;
// The recorder's id list has room for the two recordings a TV can run at once.
const int kMaxRecordings = 2;
const char kCallerAppId[] = "org.norix.epg";
// The source path the trace points report.
const char* const kTraceFile = "src/AntennaSelectionPopup.cpp";

}  // namespace

// 1 when multimedia playback ran and was stopped, else 0.
static int StopPlayingMultimedia() {
  int playing = 0;
  if (rec_is_playing_multimedia(&playing) != 0) {
    LOG_ERROR("rec_is_playing_multimedia is failed!\n");
    return 0;
  }
  if (playing != 1) return 0;
  if (rec_stop_playing_sync(kCallerAppId) != 0) return 0;
  LOG_INFO("stop playing\n");
  return 1;
}

// The stop requests the last StopCurrentRecording sent: none means no report
// will come.
static int s_nStopRequests = 0;

// Stops playback and every listed recording; 0 at the first failure.
static int StopCurrentRecording() {
  s_nStopRequests = 0;
  uint64_t ids[kMaxRecordings] = {0, 0};
  int nCount = 0;
  const int eResult = rec_get_recording_service_id_list(ids, static_cast<int>(sizeof(ids)), &nCount, 0);
  if (eResult != 0) {
    LOG_ERROR("get recording service id list failed, nCount = %d, eResult = %d\n", nCount, eResult);
    return 0;
  }
  LOG_TRACE("get recording service id list success, nCount = %d, eResult = %d\n", nCount, 0);
  StopPlayingMultimedia();
  // The count is what the recorder runs, which may exceed what the list holds.
  for (int i = 0; i < nCount && i < kMaxRecordings; ++i) {
    const unsigned long long nId = ids[i];
    if (rec_stop_recording(ids[i], 1, kCallerAppId) != 0) {
      LOG_ERROR("stop recording failed , servic id = 0x%llx\n", nId);
      return 0;
    }
    ++s_nStopRequests;
    LOG_TRACE("stop recording success , servic id = 0x%llx\n", nId);
  }
  return 1;
}

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
  if (m_pStopRecPopup) m_pStopRecPopup->Update();
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
  bool bThemed = elm_layout_file_set(m_pLayout, kThemePath, kLayoutGroup);
  if (!bThemed) LOG_ERROR("elm_layout_file_set_err\n");
  // A group without the list's part (another version of the theme) is as good as none.
  bThemed = bThemed && edje_object_part_exists(elm_layout_edje_get(m_pLayout), kContentPart);
  if (!bThemed) {
    // A popup without rows helps nobody: the list goes in a plain table, its
    // rows still in the platform's style.
    LOG_ERROR("cannot use %s from %s, the list is shown without it\n", kLayoutGroup, kThemePath);
    evas_object_del(m_pLayout);
    m_pLayout = elm_table_add(m_pPopup);
  }
  elm_object_content_set(m_pPopup, m_pLayout);
  elm_object_part_text_set(m_pPopup, "title,text", gettext("TV_SID_ANTENNA_TYPE"));
  evas_object_size_hint_weight_set(m_pLayout, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  evas_object_size_hint_align_set(m_pLayout, EVAS_HINT_FILL, EVAS_HINT_FILL);
  evas_object_show(m_pLayout);

  m_pGenlist = elm_genlist_add(m_pLayout);
  elm_object_style_set(m_pGenlist, kGenlistStyle);
  if (bThemed) {
    elm_object_part_content_set(m_pLayout, kContentPart, m_pGenlist);
  } else {
    // A list in a popup shows no rows unless something beside it asks for room.
    Evas_Object* pRoom = evas_object_rectangle_add(evas_object_evas_get(m_pLayout));
    evas_object_color_set(pRoom, 0, 0, 0, 0);
    evas_object_size_hint_min_set(pRoom, 0, ELM_SCALE_SIZE(kListMinHeight));
    // Filling its cell too: a table lays the list out only in a cell whose items all fill it.
    evas_object_size_hint_weight_set(pRoom, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    evas_object_size_hint_align_set(pRoom, EVAS_HINT_FILL, EVAS_HINT_FILL);
    elm_table_pack(m_pLayout, pRoom, 0, 0, 1, 1);
    evas_object_size_hint_weight_set(m_pGenlist, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    evas_object_size_hint_align_set(m_pGenlist, EVAS_HINT_FILL, EVAS_HINT_FILL);
    elm_table_pack(m_pLayout, m_pGenlist, 0, 0, 1, 1);
  }
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
  if (m_pMsgBox) {
    // Safe inside the box's own callbacks: it deletes its widgets later. It
    // goes first, and its hide is finished at once, so that the focus it hands
    // back lands on widgets that still exist.
    m_pMsgBox->Destroy();
    edje_message_signal_process();
    delete m_pMsgBox;
    m_pMsgBox = nullptr;
  }
  if (m_pStopRecPopup) {
    // Shown over this popup, it goes before it for the same reason.
    LOG_TRACE("\n");
    m_pStopRecPopup->Destroy();
    delete m_pStopRecPopup;
    m_pStopRecPopup = nullptr;
  }
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

  // Nobody waits for a stop report once the popup is gone.
  s_bWaitStopRecToChangeAntenna = false;
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
    // Row texts are markup: an antenna named "A&B" must show as such, and one
    // with a line break on one line.
    return elm_entry_utf8_to_markup(Util::GetSingleLineText(pName).c_str());
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
  const char* pKeyName = t_KeyName(type, event);
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
  } else if (nRecordCnt == 1) {
    pThis->t_Hide();
    // Finish the hide now, before the next popup takes the focus (docs/decisions.md).
    edje_message_signal_process();
    pThis->m_tvMode = selected;
    pThis->t_CreateMsgWidget();
  } else if (nRecordCnt == 2) {
    pThis->t_Hide();
    // Finish the hide now, before the next popup takes the focus (docs/decisions.md).
    edje_message_signal_process();
    pThis->m_tvMode = selected;
    pThis->m_pStopRecPopup = new CStopRecordingPopupView();
    pThis->m_pStopRecPopup->Create();
    pThis->m_pStopRecPopup->Show();
  } else {
    LOG_ERROR("Wrong recording count %d\n", nRecordCnt);
  }
}

void AntennaSelectionPopup::t_CreateMsgWidget() {
  LOG_TRACE("t_CreateMsgWidget...\n");
  if (m_pMsgBox) {
    m_pMsgBox->Destroy();
    delete m_pMsgBox;
    m_pMsgBox = nullptr;
  }
  m_pMsgBox = new MessageBox(false);
  if (!m_pMsgBox->Create(Util::GetWindow(), 2, TimedWidget::BG_COLOR_WHITE, 0, false)) {
    LOG_ERROR("MessageBox Create failed\n");
  }
  m_pMsgBox->SetTitle(gettext("TV_SID_CHANGE_ANTENNA"));
  m_pMsgBox->SetMessage(gettext("TV_SID_17_PVR_MSG_REC_STOPS_CONTINUE"));
  m_pMsgBox->SetButtonText(1, gettext("TV_SID_CHANGE_ANTENNA"), nullptr);
  m_pMsgBox->SetButtonCallback(1, m_ChangeAntennaCB, this);
  m_pMsgBox->SetButtonText(2, gettext("SID_CANCEL"), nullptr);
  m_pMsgBox->SetButtonCallback(2, m_ChangeAntennaCancelCB, this);
  // Cancel first: agreeing stops a recording, so it takes a deliberate move.
  m_pMsgBox->SetDefaultFocus(2);
  m_pMsgBox->SetTimeOutSecs(kMsgBoxTimeOutSeconds);
  m_pMsgBox->SetTimeOutCallback(m_ChangeAntennaTimeOut, this);
  m_pMsgBox->SetVisibleChangeCallback(m_OnMsgBoxVisibilityChange, this);
  m_pMsgBox->Show();
}

bool AntennaSelectionPopup::m_ChangeAntennaCB(void* data, Evas_Object*, const char* keyName) {
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis == nullptr || pThis->m_pMsgBox == nullptr || keyName == nullptr) {
    LOG_ERROR("Para err\n");
    return false;
  }
  LOG_TRACE("m_ChangeAntennaCB keyname %s\n", keyName);
  if (strcmp(keyName, kKeyReturn) == 0) {
    pThis->m_pMsgBox->Hide();
    // The switch waits for the recorder's report (sm_CbSvcPvr), unless none
    // will come.
    WaitForStopReport();
    if (StopCurrentRecording() == 0) {
      StopReportWillNotCome(false);
    } else if (s_nStopRequests == 0) {
      StopReportWillNotCome(true);
    }
  } else if (strcmp(keyName, kKeyBack) == 0) {
    pThis->m_pMsgBox->Hide();
    ui_app_exit();
  }
  return false;
}

bool AntennaSelectionPopup::m_ChangeAntennaCancelCB(void* data, Evas_Object*, const char* keyName) {
  LOG_TRACE("\n");
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis == nullptr || pThis->m_pMsgBox == nullptr || keyName == nullptr) return false;
  if (strcmp(keyName, kKeyReturn) != 0 && strcmp(keyName, kKeyBack) != 0) return false;
  pThis->m_pMsgBox->Hide();
  edje_message_signal_process();  // as in m_AntennaItemSelectCb
  // Back to a freshly built list. This deletes the box from inside its own
  // callback, which the platform's box allows (it deletes its widgets from
  // the main loop); pThis is gone afterwards.
  DestroyInstance();
  GetInstance()->Show();
  return true;
}

Eina_Bool AntennaSelectionPopup::m_ChangeAntennaTimeOut(void* data) {
  LOG_TRACE("MessageBox time out,m_OnTimeOutHideMsgBox\n");
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis == nullptr || pThis->m_pMsgBox == nullptr) {
    LOG_ERROR("param is err\n");
    return EINA_FALSE;
  }
  pThis->m_pMsgBox->Hide();
  ui_app_exit();
  return EINA_TRUE;
}

void AntennaSelectionPopup::m_OnMsgBoxVisibilityChange(void* data) {
  LOG_TRACE("m_OnMsgBoxVisibilityChange...\n");
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis && pThis->m_pMsgBox) LOG_TRACE("bMsgBoxVisible:%d\n", pThis->m_pMsgBox->IsVisible() ? 1 : 0);
}

void AntennaSelectionPopup::sm_CbSvcPvr(rec_result result, void* data) {
  LOG_TRACE("\n");
  auto* pThis = static_cast<AntennaSelectionPopup*>(data);
  if (pThis == nullptr) {
    LOG_ERROR("Assertion failed.\n");
    return;
  }
  // Only the report of a stopped recording, and only while the switch waits for it.
  if (result.event != 1 || result.result != 1 || !s_bWaitStopRecToChangeAntenna) return;
  LOG_TRACE("recording stopped, change antenna now\n");
  s_bWaitStopRecToChangeAntenna = false;
  if (pThis->m_pMsgBox) pThis->m_pMsgBox->Hide();
  Util::ChangeAntenna(pThis->m_tvMode);
  ui_app_exit();
}

void AntennaSelectionPopup::WaitForStopReport() { s_bWaitStopRecToChangeAntenna = true; }

void AntennaSelectionPopup::StopReportWillNotCome(bool bNothingLeftToStop) {
  if (!s_bWaitStopRecToChangeAntenna) return;
  s_bWaitStopRecToChangeAntenna = false;
  if (bNothingLeftToStop && s_instance) {
    LOG_TRACE("no recording left to stop, change antenna now\n");
    Util::ChangeAntenna(s_instance->m_tvMode);
  } else {
    LOG_ERROR("the stop request failed, leaving without change\n");
  }
  ui_app_exit();
}
