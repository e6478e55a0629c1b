// TV state utilities shared by both popups. Every middleware object is opened
// afresh per call and never kept; failures give a neutral result and a log line.
#include "Util.h"

#include <iconv.h>

#include <algorithm>
#include <cstring>
#include <list>
#include <vector>

#include "App.h"
#include "CaProfileService.h"
#include "ChannelText.h"
#include "Logging.h"
#include "Recorder.h"
#include "ServiceHub.h"
#include "Settings.h"
#include "VirtualChannels.h"

// Logged by each caller itself, so that the line names the function that needed it.
#define FAILED_OPEN_MSG "ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &m_pNavigator) failed\n"

namespace Util {
namespace {

ServiceMode s_nServiceMode = SERVICE_MODE_NONE;
bool s_bPvrSupportRead = false;
bool s_bPvrSupport = false;
Evas_Object* s_pWindow = nullptr;

const char* const kSaAtvFeatureKey = "com.velmora/featureconf/broadcasting.antenna_selection_util.service_mode_for_sa_atv";
const char* const kPvrFeatureKey = "com.velmora/featureconf/pvr.pvr_support";
const char* const kMlsFocusKey = "db/mls/mls_focus";
const char* const kMlsStateKey = "memory/mls/state";
const char* const kPipKey = "db/menu/picture/pip/onoff";
const char* const kSatConnectionKey = "db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType";
const char* const kFocusZoomKey = "db/menu/system/accessibility/focuszoom";
const char* const kCallerAppId = "org.norix.epg";

// Room for two service ids: the popups never handle more than two recordings.
constexpr int kRecordingIdBytes = 16;

const int kServiceIdFetch[] = {12, 51, 13, 14, 15, 2, 3, 1, 16, 63, 23, 25, 24,
                               41, 22, 9, 46, 85, 45, 27, 17, 110, 156, 150, 166, 154};
const int kCurrentServiceFetch[] = {12, 13, 14, 16, 3, 23, 1, 9, 46, 85, 27, 154};

// True when the hub reports success; the navigator may still be null.
bool OpenMainNavigator(Navigator*& navigator) {
  navigator = nullptr;
  return ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &navigator) == 0;
}

ServiceMode ServiceModeOfCountry(int country) {
  switch (country) {
    case 0: case 2:
      return static_cast<ServiceMode>(0);
    case 1: case 36: case 63: case 75:
      return static_cast<ServiceMode>(21);
    case 34: case 64: case 65: case 67: case 69: case 70:
    case 71: case 72: case 73: case 74: case 80: case 85:
      return SERVICE_MODE_SA_ATV;
    default:
      return static_cast<ServiceMode>(1);
  }
}

bool Contains(const std::vector<TvMode>& list, const TvMode& mode) {
  return std::find(list.begin(), list.end(), mode) != list.end();
}

// Whether a candidate goes into the list: it has services, or the TV is on it now.
bool Offered(const TvMode& candidate, const TvMode& current) {
  return ExistChannelByTvMode(candidate) || candidate == current;
}

}  // namespace

// ---- Tuning mode and antenna queries ----

TvMode GetTvMode() {
  TvMode mode;
  Navigator* navigator = nullptr;
  if (!OpenMainNavigator(navigator) || navigator == nullptr) {
    LOG_INFO(FAILED_OPEN_MSG);
    return mode;
  }
  if (navigator->GetTvMode(mode) <= 0) LOG_ERROR("Get Current TV Mode failed.\n");
  return mode;
}

void SetTvMode(TvMode mode) {
  Navigator* navigator = nullptr;
  if (!OpenMainNavigator(navigator)) {
    LOG_INFO(FAILED_OPEN_MSG);
    return;
  }
  if (navigator == nullptr) return;
  // A failed switch is not reported: the caller ends the application right after.
  if (navigator->SetTvMode(mode, std::string()) >= 1) LOG_TRACE("Set TV mode Sucess!\n");
}

void ChangeAntenna(TvMode mode) { SetTvMode(mode); }

bool ExistChannelByTvMode(TvMode mode) {
  ServiceQuery query;
  NavigationQueries::GetNavigationCriteria(NAVIGATION_MODE_ALL, query, NAVIGATION_SORT_MODE_DEFAULT);
  int count = 0;
  Navigator* navigator = nullptr;
  if (!OpenMainNavigator(navigator)) {
    LOG_INFO(FAILED_OPEN_MSG);
    return false;
  }
  if (navigator == nullptr) return false;
  if (navigator->GetServiceCount(query, count, mode, 0) <= 0) return false;
  LOG_TRACE("service count: [%d] in the Tvmode [antenna: %d, serviceMode: %d]\n", count, mode.antennaMode,
            mode.serviceMode);
  return count > 0;
}

ServiceMode GetServiceMode() {
  if (s_nServiceMode != SERVICE_MODE_NONE) return s_nServiceMode;
  int country = -1;
  GetCountry(country);
  bool saAtv = false;
  if (system_info_get_custom_bool(kSaAtvFeatureKey, &saAtv) != 0 || country == -1) {
    LOG_ERROR("get region or country failed\n");
    s_nServiceMode = SERVICE_MODE_NONE;  // computed again next time
    return SERVICE_MODE_NONE;
  }
  s_nServiceMode = saAtv ? SERVICE_MODE_SA_ATV : ServiceModeOfCountry(country);
  return s_nServiceMode;
}

bool GetCountry(int& country) {
  if (system_settings_get_value_int(SYSTEM_SETTINGS_KEY_COUNTRY, &country) != 0) {
    LOG_ERROR("Get Country failed.\n");
    return false;
  }
  return true;
}

int GetRegionKind() {
  int value = 0;
  const int ret = system_info_get_value_int(SYSTEM_INFO_KEY_REGION_KIND, &value);
  LOG_TRACE("nRigionKind(%d)\n", value);
  return ret == 0 ? value : 0;
}

std::string GetAntennaNameByMode(TvMode& mode) {
  LOG_TRACE("antenna type %d %d\n", mode.serviceMode, mode.antennaMode);
  return ChannelText::GetChannelTypeString(mode, CHANNEL_KIND_ANY);
}

std::string GetAntennaName(ServiceData& /*service*/, TvMode& mode) { return GetAntennaNameByMode(mode); }

// ---- Antenna list ----

void GetAntennaList(std::vector<TvMode>& list) {
  Navigator* navigator = nullptr;
  if (!OpenMainNavigator(navigator) || navigator == nullptr) {
    LOG_INFO(FAILED_OPEN_MSG);
    return;
  }
  TvMode current;
  if (navigator->GetTvMode(current) != 1) {
    LOG_ERROR("Navigator::GetTvMode failed.\n");
    LOG_ERROR("Assertion failed.\n");
    return;
  }
  const ServiceMode sm = GetServiceMode();  // the cache, or computed and stored
  for (AntennaMode antenna : {ANTENNA_MODE_0, ANTENNA_MODE_1}) {
    const TvMode candidate(antenna, sm);
    if (Offered(candidate, current)) list.push_back(candidate);
  }
  if (m_IsSupportSatelliteAntenna()) {
    // 2, 19, 20 and 21 are not satellite service modes: they are never offered here.
    for (int m = 1; m <= 52; ++m) {
      if (m == 2 || (m >= 19 && m <= 21)) continue;
      const TvMode candidate(ANTENNA_MODE_SATELLITE, static_cast<ServiceMode>(m));
      if (Offered(candidate, current)) list.push_back(candidate);
    }
  } else {
    LOG_TRACE("din't support satellite Antenna mode\n");
  }
  CaProfileService* profiles = CaProfileService::ProfileServiceInstance();
  if (profiles == nullptr) {
    LOG_ERROR("CaProfileService::ProfileServiceInstance() failed\n");
    return;
  }
  std::list<OperatorProfile> installed;
  if (!profiles->GetInstalledOperatorProfiles(installed, 0)) {
    LOG_ERROR("CaProfileService::GetInstalledOperatorProfiles() failed\n");
    return;
  }
  // Profiles need services of their own; being tuned to one is not enough.
  for (const OperatorProfile& profile : installed) {
    if (!Contains(list, profile.tvMode) && ExistChannelByTvMode(profile.tvMode)) list.push_back(profile.tvMode);
  }
}

bool m_IsSupportSatelliteAntenna() {
  int focus = -2;
  int state = -1;
  // Unreadable multi-screen keys keep their presets, which mean the default screen.
  vconf_get_int(kMlsFocusKey, &focus);
  vconf_get_int(kMlsStateKey, &state);
  int screen = 0;
  if (focus == 2 && state == 1) {
    LOG_TRACE("mls mode, nFocusSlotID:[%d], nMLSState[%d]\n", focus, state);
    screen = 1;
  } else {
    LOG_TRACE("default mode, nFocusSlotID:[%d], nMLSState[%d]\n", focus, state);
  }
  LOG_TRACE("the current Screen ID: [%d]\n", screen);

  // Every failure below counts as supported: better one entry too many than a
  // satellite the viewer cannot get back to.
  Navigator* navigator = nullptr;
  if (ServiceHub::OpenNavigator(PROFILE_SCREEN, screen, &navigator) != 0 || navigator == nullptr) {
    LOG_ERROR("Create Service Navigation failed\n");
    return true;
  }
  TvMode mode;
  const int ret = navigator->GetTvMode(mode);
  if (ret <= 0) {
    LOG_ERROR("get current tv mode Failed!!! ret = [%d]\n", ret);
    return true;
  }
  int pip = -1;
  if (vconf_get_int(kPipKey, &pip) != 0) {
    LOG_ERROR("vconf get fails db/menu/picture/pip/onoff\n");
    return true;
  }
  int connection = 0;
  if (vconf_get_bool(kSatConnectionKey, &connection) != 0) {
    LOG_ERROR("vconf get fails db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType\n");
    return true;
  }
  if (pip != 1 || connection) return true;
  // One satellite connection already busy with the picture-in-picture screen.
  return mode.antennaMode != ANTENNA_MODE_SATELLITE;
}

// ---- Recording and tuner capacity ----

bool IsPvrSupport() {
  if (!s_bPvrSupportRead) {
    if (system_info_get_custom_bool(kPvrFeatureKey, &s_bPvrSupport) == 0) {
      s_bPvrSupportRead = true;
    } else {
      LOG_ERROR("com.velmora/featureconf/pvr.pvr_support value get failed\n");  // read again next call
    }
  }
  LOG_TRACE("PVR support: %d\n", s_bPvrSupport);
  return s_bPvrSupport;
}

int PvrRecording(bool /*unused*/) {
  if (!IsPvrSupport()) {
    LOG_ERROR("PVR is NOT Support\n");
    return 0;
  }
  return GetRecordChannelCount();
}

int GetRecordChannelCount() {
  uint64_t ids[kRecordingIdBytes / sizeof(uint64_t)] = {};
  int count = 0;
  const int ret = rec_get_recording_service_id_list(ids, kRecordingIdBytes, &count, 0);
  if (ret != 0) {
    LOG_ERROR("get recording service id list failed, nCount = %d, eResult = %d\n", count, ret);
    count = 0;  // a failed query counts as no recording running
  } else {
    LOG_INFO("get recording service id list success, nCount = %d, eResult = %d\n", count, ret);
  }
  LOG_TRACE("Current in record channel count is %d\n", count);
  return count;
}

int NumOfRecordableTuner() {
  int recordable = 0;
  const int ret = system_info_get_value_int(SYSTEM_INFO_KEY_RECORDABLE_TUNER_COUNT, &recordable);
  LOG_TRACE("nRet = %d, numOfRecord = [%d]\n", ret, recordable);
  const int tuners = m_TunerNumWithSingleSatelite();
  const int result = std::min(tuners, recordable);
  LOG_TRACE("NumOfRecordableTuner = [%d]\n", result);
  return result;
}

int m_TunerNumWithSingleSatelite() {
  int tuners = 0;
  const int ret = system_info_get_value_int(SYSTEM_INFO_KEY_TUNER_COUNT, &tuners);
  Navigator* navigator = nullptr;
  const bool opened = OpenMainNavigator(navigator) && navigator != nullptr;
  // Only a two-tuner set watching satellite over a single connection loses a
  // tuner: both would need the one satellite cable.
  if (opened && tuners == 2) {
    TvMode mode;
    if (navigator->GetTvMode(mode) == 1 && mode.antennaMode == ANTENNA_MODE_SATELLITE) {
      int connection = 0;
      if (vconf_get_bool(kSatConnectionKey, &connection) != 0) {
        LOG_ERROR("Can not get Antenna Connection Type\n");
      } else if (!connection) {
        LOG_TRACE("Connection = [%d] SatelliteAntConnectionType is Single\n", connection);
        tuners = 1;
      }
    }
  }
  LOG_TRACE("nRet = %d, m_TunerNumWithSingleSatelite = [%d]\n", ret, tuners);
  return tuners;
}

int StopPlayingMultimedia() {
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

// ---- Service data and text ----

bool GetServiceData(uint64_t serviceId, ServiceData* out) {
  if (serviceId == 0) {
    LOG_ERROR("serviceId = 0\n");
    return false;
  }
  if (out == nullptr) return false;
  ServiceStore* store = nullptr;
  // A null store with a success code is as useless as a failed open, and the
  // same line makes it findable in the log.
  if (ServiceHub::OpenServiceStore(&store) != 0 || store == nullptr) {
    LOG_ERROR("OpenServiceStore failed!\n");
    return false;
  }
  ServiceQuery query;
  for (int id : kServiceIdFetch) query.Fetch(id);
  query.Where(ATTR_SERVICE_ID, serviceId);
  if (store->FindService(query, out, 1) <= 0) {
    LOG_ERROR("pServData not found!\n");
    return false;
  }
  LOG_INFO("Get pServData success!\n");
  return true;
}

bool GetCurrentService(TvMode mode, ServiceData& out) {
  ServiceQuery query;
  for (int id : kCurrentServiceFetch) query.Fetch(id);
  Navigator* navigator = nullptr;
  if (!OpenMainNavigator(navigator)) {
    LOG_INFO(FAILED_OPEN_MSG);
    return false;
  }
  if (navigator == nullptr) {
    LOG_ERROR("Assertion failed.\n");
    return false;
  }
  const int ret = navigator->GetCurrentService(mode, query, out);
  if (ret == 1) {
    LOG_TRACE("Get current service info success [%d]\n", ret);
    return true;
  }
  LOG_ERROR("Get current service info failed [%d]\n", ret);
  return false;
}

namespace {

// A record carries a channel number when attribute 13 is there and not all ones.
bool HasNumber(ServiceData* service) {
  if (service == nullptr || service->GetAttributeTable() == nullptr) return false;
  const ServiceAttributeValue* major = service->GetAttributeTable()->GetAttribute(ATTR_MAJOR_NUMBER);
  return major != nullptr && major->GetStored32() != 0xFFFFFFFFu;
}

std::string NumberString(TvMode mode, ServiceData* service) {
  const ServiceAttributeTable* table = service->GetAttributeTable();
  const ServiceAttributeValue* value = table->GetAttribute(ATTR_MAJOR_NUMBER);
  const uint16_t major = value ? value->GetUint16() : 65535;
  value = table->GetAttribute(ATTR_MINOR_NUMBER);
  const uint16_t minor = value ? value->GetUint16() : 65535;
  value = table->GetAttribute(ATTR_NUMBER_KIND);
  const int kind = value ? value->GetInt32() : -1;
  return ChannelText::GetChannelNumberString(mode, kind, major, minor);
}

}  // namespace

std::string GetServiceNumberString(ServiceData* service) {
  if (!HasNumber(service)) {
    LOG_ERROR("Error parameter\n");
    return std::string();
  }
  return NumberString(GetTvMode(), service);
}

std::string GetServiceNumberString(TvMode mode, ServiceData* service) {
  if (!HasNumber(service)) {
    LOG_ERROR("Error parameter\n");
    return std::string();
  }
  return NumberString(mode, service);
}

std::string GetServiceName(ServiceData* service) {
  if (service == nullptr) {
    LOG_ERROR("Error parameter\n");
    return std::string();
  }
  uint64_t serviceId = UINT64_MAX;
  if (ServiceAttributeTable* table = service->GetAttributeTable()) {
    const ServiceAttributeValue* value = table->GetAttribute(ATTR_SERVICE_ID);
    if (value != nullptr) serviceId = *value->GetValuePointer();
  }
  std::u16string name;
  if (!ServiceNames::GetServiceName(serviceId, name, true)) {
    LOG_ERROR("Get service name error\n");
    return std::string();
  }
  return Twstring2String(name);
}

std::string Twstring2String(std::u16string text) {
  if (text.empty()) {
    LOG_INFO("empty name\n");
    return std::string();
  }
  const size_t n = text.size();
  std::vector<unsigned short> copy(n + 1, 0);
  std::memcpy(copy.data(), text.c_str(), (n + 1) * sizeof(unsigned short));
  // One byte more than the converter may use, so the logged text is always terminated.
  std::vector<char> utf8(4 * n + 1, 0);
  TransStrExceptLF(copy.data());
  // The length before removing line breaks: the zero padding converts to zero bytes.
  if (UnicodeToUtf8Buffer(utf8.data(), static_cast<int>(4 * n), copy.data(), static_cast<int>(n)) != 0) {
    LOG_INFO("convert success [%s]\n", utf8.data());
  } else {
    LOG_ERROR("convert string failed\n");
  }
  return std::string(utf8.data(), strnlen(utf8.data(), 4 * n));
}

void TransStrExceptLF(unsigned short* text) {
  if (text == nullptr) {
    LOG_ERROR("srv Is NUll\n");
    return;
  }
  // Middleware text keeps its bytes in big-endian order whatever the CPU, so the
  // line breaks are matched as byte pairs, not as numbers.
  size_t n = 0;
  while (text[n] != 0) ++n;
  std::vector<unsigned short> kept;
  kept.reserve(n + 1);
  for (size_t i = 0; i < n; ++i) {
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(&text[i]);
    if (bytes[0] == 0x00 && (bytes[1] == 0x0A || bytes[1] == 0x0D)) continue;
    kept.push_back(text[i]);
  }
  kept.resize(n + 1, 0);
  std::copy(kept.begin(), kept.end(), text);
}

std::string GetSingleLineText(const std::string& text) {
  // CR LF first, so that it becomes one space.
  static const char* const kBreaks[] = {"\r\n", "\n", "\r", "\t", "\v", "\f", "\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"};
  std::string line;
  line.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    size_t nMatched = 0;
    for (const char* pBreak : kBreaks) {
      const size_t n = strlen(pBreak);
      if (text.compare(i, n, pBreak) == 0) {
        nMatched = n;
        break;
      }
    }
    if (nMatched > 0) {
      line += ' ';
      i += nMatched;
    } else {
      line += text[i++];
    }
  }
  return line;
}

bool Unicode2Utf8(char* out, unsigned int outBytes, char* in, unsigned int inBytes) {
  // iconv would take a null input as a reset request and report success; neither
  // null buffer is a text to convert.
  if (out == nullptr || in == nullptr) {
    LOG_ERROR("Assertion failed.\n");
    return false;
  }
  iconv_t converter = iconv_open("UTF-8", "UTF-16BE");
  if (converter == reinterpret_cast<iconv_t>(-1)) {
    LOG_ERROR("Iconv open failed\n");
    return false;
  }
  size_t inLeft = inBytes;
  size_t outLeft = outBytes;
  const size_t ret = iconv(converter, &in, &inLeft, &out, &outLeft);
  if (ret == static_cast<size_t>(-1)) {
    LOG_ERROR("iconv failed: %d\n", static_cast<int>(ret));
    iconv_close(converter);
    return false;
  }
  iconv_close(converter);
  return true;
}

int GetGenlistItemIndex(Elm_Object_Item* item) {
  if (item == nullptr) {
    LOG_ERROR("item is NULL\n");
    return -1;
  }
  return elm_genlist_item_index_get(item) - 1;  // the toolkit counts from 1
}

// ---- KPI event logging ----

namespace {

struct KpiRow {
  const char* name;
  const char* code;
  const char* keys[3];  // the description's keys for a1, a2, a3; null where not needed
};

// By event value 0 to 8.
const KpiRow kKpiRows[] = {
    {"LAUNCHEPG", "EV001", {"chnum", nullptr, nullptr}},
    {"NAVIGATION", "EV006", {"sl_dbtn", nullptr, nullptr}},
    {"NUMBER_INPUT", "EV007", {"calltype", nullptr, nullptr}},
    {"PAGE_VIEW_POPUP", "EV008", {"listtype", "calllisttype", nullptr}},
    {"SELECT_BUTTON", "EV009", {"funcitem", nullptr, nullptr}},
    {"SELECTCURRENT", "EV012", {nullptr, nullptr, nullptr}},
    {"SELECTCH", "EV013", {nullptr, nullptr, nullptr}},
    {"TERMINATEEPG", "EV014", {"du", nullptr, nullptr}},
    {"SELECT_ANTENNA", "EV017", {"sl_antenna", "pre_antenna", "antennanum"}},
};

// "{k1=a1;k2=a2}" over the keys the row has; empty when a needed argument is null
// or the row needs none.
std::string Describe(const KpiRow& row, const char* const args[3]) {
  std::string desc;
  for (int i = 0; i < 3 && row.keys[i] != nullptr; ++i) {
    if (args[i] == nullptr) return std::string();
    desc += (i == 0 ? "{" : ";");
    desc += std::string(row.keys[i]) + "=" + args[i];
  }
  return desc.empty() ? desc : desc + "}";
}

}  // namespace

int KPILogging(KPI_EVENT event, const char* a1, const char* a2, const char* a3) {
  VirtualChannelsApi* sink = VirtualChannels::GetVirtualChannelsAPI();
  if (sink == nullptr) {
    LOG_ERROR("Assertion failed.\n");
    return 0;
  }
  std::string strEventName, strCategory, strDesc;
  int status = 1;
  const char* const args[3] = {a1, a2, a3};
  const int value = static_cast<int>(event);
  if (value >= KPI_LAUNCHEPG && value <= KPI_SELECT_ANTENNA) {
    const KpiRow& row = kKpiRows[value];
    strEventName = row.name;
    strCategory = row.code;
    strDesc = Describe(row, args);
  } else if (value == KPI_SL_FILTER || value == KPI_SL_OSD_FILTER) {
    const bool variantB = GetTvMode().serviceMode == 3;
    const bool osd = value == KPI_SL_OSD_FILTER;
    strEventName = std::string(osd ? "SL_OSD_FILTER_" : "SL_FILTER_") + (variantB ? "B" : "A");
    strCategory = osd ? (variantB ? "EV023" : "EV022") : (variantB ? "EV021" : "EV020");
    if (a1 != nullptr && a2 != nullptr && a3 != nullptr) {
      const bool detail = !variantB || sink->IsFilterDetailEnabled();
      strDesc = detail ? std::string("{sl_chfilter=") + a1 + ";pre_chfilter=" + a2 + ";filternum=" + a3 + "}"
                       : std::string("{filternum=") + a3 + "}";
    }
  } else {
    status = -1;  // unknown event: still sent, so the sink sees the misuse
  }
  LOG_TRACE("strEventName = %s, strCategory = %s, strDesc = %s\n", strEventName.c_str(), strCategory.c_str(),
            strDesc.c_str());
  return sink->LogKpiEvent(status, strEventName, strCategory, strDesc);
}

// ---- The application window and display settings ----

namespace {

// With auto-delete on, the toolkit may delete the window (closed, or at shutdown);
// forget it then rather than hand out a dead pointer.
void OnWindowDel(void* /*data*/, Evas* /*evas*/, Evas_Object* window, void* /*info*/) {
  if (s_pWindow == window) s_pWindow = nullptr;
}

}  // namespace

Evas_Object* GetWindow() {
  if (s_pWindow != nullptr) return s_pWindow;
  LOG_TRACE("create AlphaTranWin\n");
  s_pWindow = elm_win_add(nullptr, "Antenna Selection Wnd", ELM_WIN_DIALOG_BASIC);
  if (s_pWindow == nullptr) return nullptr;  // the next call tries again
  evas_object_event_callback_add(s_pWindow, EVAS_CALLBACK_DEL, OnWindowDel, nullptr);
  elm_win_autodel_set(s_pWindow, EINA_TRUE);
  elm_win_alpha_set(s_pWindow, EINA_TRUE);
  elm_win_indicator_mode_set(s_pWindow, ELM_WIN_INDICATOR_HIDE);
  elm_win_focus_highlight_enabled_set(s_pWindow, EINA_TRUE);
  evas_object_show(s_pWindow);
  return s_pWindow;
}

bool IsEnlarge() {
  int value = 0;
  if (vconf_get_int(kFocusZoomKey, &value) != 0) {
    LOG_ERROR("get enlarge failed\n");
    return false;
  }
  LOG_TRACE("is enlarge on: %d\n", value);
  return value > 0;
}

bool ReverseOSD() { return ui_orientation_get() != 0; }

void ResetCachesForTesting() {
  s_nServiceMode = SERVICE_MODE_NONE;
  s_bPvrSupportRead = false;
  s_bPvrSupport = false;
}

}  // namespace Util
