#include "StopRecordingPopupView.h"

#include <libintl.h>

#include <cstdlib>
#include <cstring>

#include "AntennaSelectionPopup.h"
#include "App.h"
#include "CombineStrings.h"
#include "Logging.h"
#include "ProgramGuide.h"
#include "Recorder.h"
#include "Util.h"

namespace {

const char* const kThemePath = TV_RES_DIR "/edje/antenna-selection.edj";
const char* const kRecordIconPath = TV_RES_DIR "/images/epg_icon_body_recording.png";
const char* const kLayoutGroup = "change.antenna.layout";
const char* const kBriefPart = "brief.text.area";
const char* const kListPart = "item.area";
const char* const kPopupStyle = "C_PopupBasic_WhiteBottom";
const char* const kItemStyle = "C_TextItem_WhiteMultiline01";
const char* const kButtonStyle = "C_ButtonBasic_WhiteText";
const char* const kText1Part = "elm.text";
const char* const kText2Part = "elm.text.1";
const char* const kIconPart = "elm.swallow.content.1";
const char* const kKeyBack = "XF86Back";
const char* const kStopText = "TV_SID_17_PVR_MSG_STOP_RECORIDNG_CHANGE_CHANNEL";
const char* const kSeparator = "  ";
const int kTimeOutSeconds = 30;
const double kEnlargedLayoutScale = 1.2;
// Three two-line items, as high as the theme makes the list (at the application's base scale).
const int kListMinHeight = (96 + 40) * 3;
const char kCallerAppId[] = "org.norix.epg";

// One field of a line of fields (antenna, number, name, title) from the TV: on
// one line, and with a direction of its own (U+2068 first strong isolate ..
// U+2069 pop directional isolate), so that a right-to-left name does not
// reorder the fields around it in a left-to-right line, nor the reverse. The
// name's own embedding, override and isolate marks (U+202A..U+202E,
// U+2066..U+2069) go: a stray one would end the isolate early or outlast it.
std::string Field(const std::string& text) {
  const std::string strLine = Util::GetSingleLineText(text);
  std::string strField = "\xE2\x81\xA8";
  for (size_t i = 0; i < strLine.size(); ++i) {
    const unsigned char* p = reinterpret_cast<const unsigned char*>(strLine.data()) + i;
    const bool bMark = i + 2 < strLine.size() && p[0] == 0xE2 &&
                       ((p[1] == 0x80 && p[2] >= 0xAA && p[2] <= 0xAE) || (p[1] == 0x81 && p[2] >= 0xA6 && p[2] <= 0xA9));
    if (bMark) {
      i += 2;
    } else {
      strField += strLine[i];
    }
  }
  return strField + "\xE2\x81\xA9";
}

// "[A  ]N  S  " : the antenna is left out, with its separator, when unnamed. With
// every field isolated the line has no direction of its own: it starts with the
// mark of the display's (U+200F right-to-left, U+200E left-to-right).
std::string ChannelPrefix(const std::string& antenna, const std::string& number, const std::string& name) {
  std::string text = Util::ReverseOSD() ? "\xE2\x80\x8F" : "\xE2\x80\x8E";
  if (!antenna.empty()) text += Field(antenna) + kSeparator;
  text += Field(number) + kSeparator + Field(name) + kSeparator;
  return text;
}

// The programme title, or "No information" for an untitled one.
void AppendTitle(std::string& text, const ProgramInfo& program) {
  const std::string title = program.Title();
  if (!title.empty()) {
    text += Field(title);
    return;
  }
  const char* pNoInfo = gettext("SID_NO_INFORMATION");
  if (pNoInfo) text += Field(pNoInfo);
}

// Texts from the TV (service and programme names) go into markup fields.
char* MarkupCopy(const std::string& text) {
  char* pMarkup = elm_entry_utf8_to_markup(text.c_str());
  return pMarkup ? pMarkup : strdup(text.c_str());
}

}  // namespace

CStopRecordingPopupView::CStopRecordingPopupView()
    : m_pLayout(nullptr), m_pBrief(nullptr), m_pCancelButton(nullptr), m_pGenlist(nullptr), m_ServIdList{0, 0} {}

CStopRecordingPopupView::~CStopRecordingPopupView() {}

void CStopRecordingPopupView::t_Create() {
  LOG_TRACE("Create ...\n");
  CPopupView::t_Create();
  m_CreateServIdList();
  m_PrepareItemText();

  elm_object_style_set(m_pPopup, kPopupStyle);
  evas_object_size_hint_weight_set(m_pPopup, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  evas_object_size_hint_align_set(m_pPopup, EVAS_HINT_FILL, EVAS_HINT_FILL);
  elm_object_part_text_set(m_pPopup, "title,text", gettext("TV_SID_CHANGE_CHANNEL"));
  elm_object_event_callback_add(m_pPopup, m_PopupPressCB, this);

  m_pLayout = elm_layout_add(m_pPopup);
  // A group without its parts (another version of the theme) is as good as none.
  const bool bThemed = elm_layout_file_set(m_pLayout, kThemePath, kLayoutGroup) &&
                       edje_object_part_exists(elm_layout_edje_get(m_pLayout), kBriefPart) &&
                       edje_object_part_exists(elm_layout_edje_get(m_pLayout), kListPart);
  if (!bThemed) {
    // The viewer must still see what to choose from: the brief text and the
    // list go in a plain table, the items still in the platform's style.
    LOG_ERROR("cannot use %s from %s, the choices are shown without it\n", kLayoutGroup, kThemePath);
    evas_object_del(m_pLayout);
    m_pLayout = elm_table_add(m_pPopup);
    m_pBrief = elm_label_add(m_pLayout);
    elm_label_line_wrap_set(m_pBrief, ELM_WRAP_WORD);
    evas_object_size_hint_weight_set(m_pBrief, EVAS_HINT_EXPAND, 0.0);
    evas_object_size_hint_align_set(m_pBrief, EVAS_HINT_FILL, 0.0);
    elm_table_pack(m_pLayout, m_pBrief, 0, 0, 1, 1);
    evas_object_show(m_pBrief);
  }
  elm_object_content_set(m_pPopup, m_pLayout);
  evas_object_size_hint_weight_set(m_pLayout, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  evas_object_size_hint_align_set(m_pLayout, EVAS_HINT_FILL, EVAS_HINT_FILL);
  evas_object_show(m_pLayout);
  if (bThemed && Util::ReverseOSD()) elm_object_signal_emit(m_pLayout, "elm,state,reverse_osd", "elm");
  if (Util::IsEnlarge()) {
    LOG_TRACE("enlarge on\n");
    elm_object_scale_set(m_pLayout, kEnlargedLayoutScale);
  }
  m_SetNotifyInfo();

  m_pGenlist = elm_genlist_add(m_pLayout);
  if (bThemed) {
    elm_object_part_content_set(m_pLayout, kListPart, m_pGenlist);
  } else {
    // A list in a popup shows no items unless something beside it asks for room.
    Evas_Object* pRoom = evas_object_rectangle_add(evas_object_evas_get(m_pLayout));
    evas_object_color_set(pRoom, 0, 0, 0, 0);
    evas_object_size_hint_min_set(pRoom, 0, ELM_SCALE_SIZE(kListMinHeight));
    // Filling its cell too: a table lays the list out only in a cell whose items all fill it.
    evas_object_size_hint_weight_set(pRoom, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    evas_object_size_hint_align_set(pRoom, EVAS_HINT_FILL, EVAS_HINT_FILL);
    elm_table_pack(m_pLayout, pRoom, 0, 1, 1, 1);
    evas_object_size_hint_weight_set(m_pGenlist, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
    evas_object_size_hint_align_set(m_pGenlist, EVAS_HINT_FILL, EVAS_HINT_FILL);
    elm_table_pack(m_pLayout, m_pGenlist, 0, 1, 1, 1);
  }
  // ALWAYS: choosing the already selected item must still act.
  elm_genlist_select_mode_set(m_pGenlist, ELM_OBJECT_SELECT_MODE_ALWAYS);

  Elm_Genlist_Item_Class* pItc = elm_genlist_item_class_new();
  if (pItc) {
    pItc->item_style = kItemStyle;
    pItc->func.text_get = m_ItemTextGet;
    pItc->func.content_get = m_ItemContentGet;
  }
  for (ChangeItem& item : m_ChangeItem) {
    elm_genlist_item_append(m_pGenlist, pItc, &item, nullptr, ELM_GENLIST_ITEM_NONE, m_ItemSelectCb, this);
  }
  if (pItc) elm_genlist_item_class_free(pItc);
  evas_object_show(m_pGenlist);

  m_pCancelButton = elm_button_add(m_pPopup);
  elm_object_style_set(m_pCancelButton, kButtonStyle);
  elm_object_text_set(m_pCancelButton, gettext("SID_CANCEL"));
  elm_object_part_content_set(m_pPopup, "button1", m_pCancelButton);
  evas_object_smart_callback_add(m_pCancelButton, "clicked", m_ButtonClickCB, this);
  evas_object_smart_callback_add(m_pCancelButton, "focused", m_ButtonFocusedCB, this);
}

void CStopRecordingPopupView::t_Destroy() {
  // Nothing that carries `this` may fire while the widgets go away.
  if (m_pCancelButton) {
    evas_object_smart_callback_del_full(m_pCancelButton, "clicked", m_ButtonClickCB, this);
    evas_object_smart_callback_del_full(m_pCancelButton, "focused", m_ButtonFocusedCB, this);
  }
  if (m_pPopup) elm_object_event_callback_del(m_pPopup, m_PopupPressCB, this);
  CPopupView::t_Destroy();
  m_pLayout = nullptr;
  m_pBrief = nullptr;
  m_pCancelButton = nullptr;
  m_pGenlist = nullptr;
}

void CStopRecordingPopupView::t_Show() {
  CPopupView::t_Show();
  evas_object_show(m_pLayout);
  evas_object_show(m_pCancelButton);
  evas_object_show(m_pGenlist);
  // Item 0 gets the focus once the toolkit takes it (see CPopupView).
  t_FocusRowSoon(m_pGenlist, elm_genlist_first_item_get(m_pGenlist), m_pCancelButton, nullptr, nullptr);
}

int CStopRecordingPopupView::t_GetTimeOutSeconds() { return kTimeOutSeconds; }

void CStopRecordingPopupView::t_OnTimeOut() { m_BackToAntennaList(); }

Evas_Object* CStopRecordingPopupView::t_GetWindow() { return Util::GetWindow(); }

void CStopRecordingPopupView::m_BackToAntennaList() {
  // Deletes this view; nothing of it may be touched afterwards.
  AntennaSelectionPopup::DestroyInstance();
  AntennaSelectionPopup::GetInstance()->Show();
}

char* CStopRecordingPopupView::m_ItemTextGet(void* data, Evas_Object*, const char* part) {
  const auto* pItem = static_cast<const ChangeItem*>(data);
  if (pItem == nullptr) {
    LOG_ERROR("pData is NULL\n");
    return nullptr;
  }
  if (part == nullptr) return nullptr;
  if (strcmp(part, kText1Part) == 0) return MarkupCopy(pItem->text1);
  if (pItem->hasText2 && strcmp(part, kText2Part) == 0) return MarkupCopy(pItem->text2);
  return nullptr;
}

Evas_Object* CStopRecordingPopupView::m_ItemContentGet(void* data, Evas_Object* obj, const char* part) {
  const auto* pItem = static_cast<const ChangeItem*>(data);
  if (pItem == nullptr || obj == nullptr) {
    LOG_ERROR("para error\n");
    return nullptr;
  }
  // Only the stop items carry the recording icon.
  if (part == nullptr || strcmp(part, kIconPart) != 0 || !pItem->hasText2) return nullptr;
  const char* pStopText = gettext(kStopText);
  if (pStopText == nullptr || pItem->text1 != pStopText) return nullptr;
  LOG_TRACE("add record icon. path [%s]\n", kRecordIconPath);
  Evas_Object* pIcon = elm_icon_add(obj);
  elm_image_file_set(pIcon, kRecordIconPath, nullptr);
  evas_object_size_hint_weight_set(pIcon, EVAS_HINT_EXPAND, EVAS_HINT_EXPAND);
  evas_object_size_hint_align_set(pIcon, EVAS_HINT_FILL, EVAS_HINT_FILL);
  evas_object_size_hint_aspect_set(pIcon, EVAS_ASPECT_CONTROL_VERTICAL, 1, 1);
  evas_object_show(pIcon);
  return pIcon;
}

void CStopRecordingPopupView::m_ItemSelectCb(void* data, Evas_Object* obj, void*) {
  auto* pThis = static_cast<CStopRecordingPopupView*>(data);
  if (pThis == nullptr) {
    LOG_ERROR("get this pointer error\n");
    return;
  }
  const int nItemIndex = Util::GetGenlistItemIndex(obj ? elm_genlist_selected_item_get(obj) : nullptr);
  LOG_INFO("the nItemIndex is %d\n", nItemIndex);
  if (nItemIndex == RECORD_NUMBER) {
    LOG_TRACE("Do not change channel.\n");
    pThis->Hide();
    ui_app_exit();
    return;
  }
  if (nItemIndex < 0 || nItemIndex > RECORD_NUMBER) {
    LOG_ERROR("index should not bigger than 1\n");
    return;
  }
  Util::StopPlayingMultimedia();
  const uint64_t nServiceId = pThis->m_ServIdList[nItemIndex];
  // Before the request, so that the recorder's report finds the switch waiting.
  AntennaSelectionPopup::WaitForStopReport();
  const unsigned long long nId = nServiceId;
  const bool bAccepted = rec_stop_recording(nServiceId, 1, kCallerAppId) == 0;
  if (bAccepted) {
    LOG_INFO("stop recording success , servic id = 0x%llx\n", nId);
  } else {
    LOG_ERROR("stop recording failed , servic id = 0x%llx\n", nId);
  }
  pThis->Hide();
  // A refused stop is never reported: the recording runs on, so no switch.
  if (!bAccepted) AntennaSelectionPopup::StopReportWillNotCome(false);
}

void CStopRecordingPopupView::m_ButtonClickCB(void* data, Evas_Object* obj, void*) {
  LOG_TRACE("m_ButtonClickCB\n");
  auto* pThis = static_cast<CStopRecordingPopupView*>(data);
  if (pThis == nullptr || obj == nullptr) {
    LOG_ERROR("Assertion failed.\n");
    return;
  }
  if (obj != pThis->m_pCancelButton) return;
  LOG_TRACE("Cancel button clicked, exit epg\n");
  m_BackToAntennaList();
}

void CStopRecordingPopupView::m_ButtonFocusedCB(void* data, Evas_Object*, void*) {
  LOG_TRACE("m_ButtonFocusedCB\n");
  auto* pThis = static_cast<CStopRecordingPopupView*>(data);
  if (pThis == nullptr) {
    LOG_ERROR("Assertion failed.\n");
    return;
  }
  pThis->t_ResetTimeOut();
}

Eina_Bool CStopRecordingPopupView::m_PopupPressCB(void* data, Evas_Object*, Evas_Object*, Evas_Callback_Type type,
                                                  void* event_info) {
  const char* pKeyName = t_KeyName(type, event_info);
  if (event_info == nullptr || pKeyName == nullptr) {
    LOG_ERROR("event or keyname is null\n");
    return EINA_TRUE;
  }
  auto* pThis = static_cast<CStopRecordingPopupView*>(data);
  if (pThis == nullptr || type != EVAS_CALLBACK_KEY_DOWN) {
    LOG_ERROR("param error or Type is not key down\n");
    return EINA_TRUE;
  }
  LOG_TRACE("m_PopupPressCB...\n");
  if (strcmp(pKeyName, kKeyBack) == 0) {
    LOG_TRACE("key back.\n");
    pThis->Hide();
    ui_app_exit();
    return EINA_TRUE;
  }
  // Other keys belong to the list and the button (Return chooses an item).
  return EINA_FALSE;
}

void CStopRecordingPopupView::m_CreateServIdList() {
  int nCount = 0;
  const int eResult = rec_get_recording_service_id_list(m_ServIdList, static_cast<int>(sizeof(m_ServIdList)), &nCount, 0);
  if (eResult != 0) {
    LOG_ERROR("get recording service id list failed, nCount = %d, eResult = %d\n", nCount, eResult);
  } else {
    LOG_INFO("get recording service id list success, nCount = %d, eResult = %d\n", nCount, eResult);
  }
  const bool bFound = Util::GetCurrentService(AntennaSelectionPopup::GetTvMode(), m_ServiceData);
  LOG_TRACE("GetCurrentService for changing tvmode ret %d\n", bFound ? 1 : 0);
}

void CStopRecordingPopupView::m_PrepareItemText() {
  for (int index = 0; index < RECORD_NUMBER; ++index) {
    std::string strText = m_GetButtonItemText(index);
    m_ChangeItem[index].hasText2 = true;
    m_ChangeItem[index].text1 = gettext(kStopText);
    m_ChangeItem[index].text2 = strText;
  }
  ChangeItem& stay = m_ChangeItem[RECORD_NUMBER];
  stay.hasText2 = true;
  stay.text1 = gettext("TV_SID_17_PVR_MSG_DO_NOT_CHANNEL_CH");

  // Read in this order (each read logs its failures): number, name, antenna.
  TvMode tvMode = AntennaSelectionPopup::GetTvMode();
  const std::string strNumber = Util::GetServiceNumberString(tvMode, &m_ServiceData);
  const std::string strName = Util::GetServiceName(&m_ServiceData);
  const std::string strAntenna = Util::GetAntennaNameByMode(tvMode);
  std::string strText = ChannelPrefix(strAntenna, strNumber, strName);
  uint64_t nServiceId = UINT64_MAX;  // no such service
  if (const ServiceAttributeTable* pTable = m_ServiceData.GetAttributeTable()) {
    if (const ServiceAttributeValue* pValue = pTable->GetAttribute(ATTR_SERVICE_ID)) {
      nServiceId = *pValue->GetValuePointer();
    }
  }
  ProgramInfo program;
  if (ProgramGuide::GetInstance()->GetPresentProgram(nServiceId, program)) AppendTitle(strText, program);
  stay.text2 = strText;
  LOG_TRACE("m_ChangeItem[RECORD_NUMBER].text2 is %s\n", stay.text2.c_str());
}

std::string CStopRecordingPopupView::m_GetButtonItemText(int index) {
  const uint64_t nServiceId = m_ServIdList[index];
  ServiceData data;
  if (!Util::GetServiceData(nServiceId, &data)) {
    LOG_ERROR("ServData can not get .\n");
    return std::string();
  }
  ProgramInfo program;
  if (!ProgramGuide::GetInstance()->GetPresentProgram(nServiceId, program)) {
    LOG_ERROR("ProgData can not get .\n");
    return std::string();
  }
  // Read in this order (each read logs its failures): number, name, mode, antenna.
  const std::string strNumber = Util::GetServiceNumberString(&data);
  const std::string strName = Util::GetServiceName(&data);
  TvMode tvMode = AntennaSelectionPopup::GetTvMode();
  const std::string strAntenna = Util::GetAntennaName(data, tvMode);
  std::string strText = ChannelPrefix(strAntenna, strNumber, strName);
  AppendTitle(strText, program);
  LOG_TRACE("ResultValue is %s\n", strText.c_str());
  return strText;
}

void CStopRecordingPopupView::m_SetNotifyInfo() {
  char szBuffer[256] = {0};
  const std::string strName = Util::GetServiceName(&m_ServiceData);
  LOG_TRACE("Service name is %s\n", strName.c_str());
  CombineStrings(szBuffer, static_cast<int>(sizeof(szBuffer)) - 1, gettext("TV_SID_MIX_17_PVR_MSG_CHANGE_CHANNEL_ACTION"),
                 Field(strName).c_str(), nullptr, nullptr, nullptr);
  char* pMarkup = MarkupCopy(szBuffer);
  if (m_pBrief) {
    elm_object_text_set(m_pBrief, pMarkup);
  } else {
    elm_object_part_text_set(m_pLayout, kBriefPart, pMarkup);
  }
  free(pMarkup);
}
