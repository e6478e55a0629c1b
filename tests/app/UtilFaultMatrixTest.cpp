// Every port operation the utilities call, failed in every way the simulated
// TV can fail it, under the utilities' whole read path on the sample TV: no
// crash and no exception, the neutral results, the failure's own log line,
// and no tuning change other than the one ChangeAntenna was asked for.
#include <functional>
#include <set>

#include "UtilTestUtil.h"

namespace {

using namespace utiltest;

constexpr uint64_t kRecordedId = 7340034;  // Riverside News, recorded on the sample TV
const TvMode kTuned(ANTENNA_MODE_0, static_cast<ServiceMode>(21));
const TvMode kTarget(ANTENNA_MODE_1, static_cast<ServiceMode>(21));

using Modes = std::vector<std::pair<int, int>>;

// What the read path yields; the sample TV's values unless a row changes them.
struct Outcome {
  Modes list = {{0, 21}, {1, 21}, {2, 3}, {2, 5}, {2, 7}, {2, 30}};
  std::set<int> countNavigation = {1};  // navigation modes the service counts asked for
  int recordings = 1;
  int recordable = 1;
  bool found = true;
  std::string number = "4-1";
  int numberKind = 1;  // the kind the number text was asked for; 0 when it was not asked
  std::string name = "Riverside News";
  bool current = true;
  uint64_t currentId = 7340033;  // 0: the record carries no id
  std::string previousName = "Air";
  int kpiResult = 0;
  bool kpiRecorded = true;
  bool tunes = true;
};

struct Line { const char* function; std::string message; int buffer, priority; };

struct Row {
  const char* name;
  json fault;
  std::function<void(Outcome&)> change;  // null: the results stay the sample's
  std::vector<Line> lines;               // lines this failure logs
};

Outcome RunReadPath(const tvtest::TempTv& tv) {
  Outcome got;
  std::vector<TvMode> list;
  Util::GetAntennaList(list);
  got.list.clear();
  for (const TvMode& mode : list) got.list.emplace_back(mode.antennaMode, mode.serviceMode);
  got.recordings = Util::PvrRecording(true);
  got.recordable = Util::NumOfRecordableTuner();

  ServiceData recorded;
  got.found = Util::GetServiceData(kRecordedId, &recorded);
  got.number = Util::GetServiceNumberString(&recorded);
  got.name = Util::GetServiceName(&recorded);

  ServiceData current;
  got.current = Util::GetCurrentService(kTuned, current);
  got.currentId = 0;
  if (const ServiceAttributeTable* table = current.GetAttributeTable()) {
    if (const ServiceAttributeValue* id = table->GetAttribute(ATTR_SERVICE_ID)) got.currentId = *id->GetValuePointer();
  }

  // As the popup reports a pick: the new antenna, the one in use, the list's size.
  TvMode now = Util::GetTvMode();
  got.previousName = Util::GetAntennaNameByMode(now);
  got.kpiResult = Util::KPILogging(Util::KPI_SELECT_ANTENNA, "Cable", got.previousName.c_str(),
                                   std::to_string(got.list.size()).c_str());

  const json shown = tv.Show();
  EXPECT_TRUE(shown["tuning_changes"].empty()) << "only ChangeAntenna may tune";
  got.countNavigation.clear();
  got.numberKind = 0;
  for (const json& call : shown["calls"]) {
    if (call["op"] == "GetServiceCount") got.countNavigation.insert(call["args"]["navigation"].get<int>());
    if (call["op"] == "GetChannelNumberString") got.numberKind = call["args"]["kind"].get<int>();
  }
  got.kpiRecorded = !shown["kpi_events"].empty();
  if (got.kpiRecorded) {
    EXPECT_EQ("{sl_antenna=Cable;pre_antenna=" + got.previousName + ";antennanum=" +
                  std::to_string(got.list.size()) + "}",
              shown["kpi_events"][0]["desc"]);
  }

  Util::ChangeAntenna(kTarget);
  const json changes = tv.Show()["tuning_changes"];
  got.tunes = !changes.empty();
  if (got.tunes) {
    EXPECT_EQ(1u, changes.size());
    EXPECT_EQ(1, changes[0]["antenna"]);
    EXPECT_EQ(21, changes[0]["service"]);
  }
  EXPECT_EQ(got.tunes, tv.Logged("SetTvMode", "Set TV mode Sucess!", 0, 5));
  return got;
}

void ExpectSame(const Outcome& expected, const Outcome& got) {
  EXPECT_EQ(expected.list, got.list);
  EXPECT_EQ(expected.countNavigation, got.countNavigation);
  EXPECT_EQ(expected.recordings, got.recordings);
  EXPECT_EQ(expected.recordable, got.recordable);
  EXPECT_EQ(expected.found, got.found);
  EXPECT_EQ(expected.number, got.number);
  EXPECT_EQ(expected.numberKind, got.numberKind);
  EXPECT_EQ(expected.name, got.name);
  EXPECT_EQ(expected.current, got.current);
  EXPECT_EQ(expected.currentId, got.currentId);
  EXPECT_EQ(expected.previousName, got.previousName);
  EXPECT_EQ(expected.kpiResult, got.kpiResult);
  EXPECT_EQ(expected.kpiRecorded, got.kpiRecorded);
  EXPECT_EQ(expected.tunes, got.tunes);
}

// Results of the read path with every navigator gone.
void NoNavigator(Outcome& o) {
  o.list.clear();
  o.countNavigation.clear();
  o.current = false;
  o.currentId = 0;
  o.previousName = "";
  o.tunes = false;
}

// The mode read fails: no list, and the antenna in use has no name.
void NoMode(Outcome& o) {
  o.list.clear();
  o.countNavigation.clear();
  o.previousName = "";
}

// The service record is missing, so neither of its texts can be made.
void NoRecord(Outcome& o) {
  o.found = false;
  o.number = "";
  o.numberKind = 0;
  o.name = "";
}

// No service mode for antennas 0 and 1: only the satellite modes are offered.
void NoServiceMode(Outcome& o) { o.list = {{2, 3}, {2, 5}, {2, 7}, {2, 30}}; }

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = {
      {"OpenNavigator fails", {{"op", "OpenNavigator"}, {"result", -1}}, NoNavigator,
       {{"GetAntennaList", kFailedOpen, 0, 4}, {"GetCurrentService", kFailedOpen, 0, 4},
        {"GetTvMode", kFailedOpen, 0, 4}, {"SetTvMode", kFailedOpen, 0, 4}}},
      {"OpenNavigator hands out null", {{"op", "OpenNavigator"}, {"null", true}}, NoNavigator,
       {{"GetAntennaList", kFailedOpen, 0, 4}, {"GetCurrentService", "Assertion failed.", 2, 5},
        {"GetTvMode", kFailedOpen, 0, 4}}},
      {"OpenServiceStore fails", {{"op", "OpenServiceStore"}, {"result", -1}}, NoRecord,
       {{"GetServiceData", "OpenServiceStore failed!", 2, 5}, {"GetServiceNumberString", "Error parameter", 2, 5},
        {"GetServiceName", "Get service name error", 2, 5}}},
      {"OpenServiceStore hands out null", {{"op", "OpenServiceStore"}, {"null", true}}, NoRecord,
       {{"GetServiceData", "OpenServiceStore failed!", 2, 5}}},
      {"GetTvMode fails", {{"op", "GetTvMode"}, {"result", 0}}, NoMode,
       {{"GetAntennaList", "Navigator::GetTvMode failed.", 2, 5}, {"GetAntennaList", "Assertion failed.", 2, 5},
        {"GetTvMode", "Get Current TV Mode failed.", 2, 5}}},
      {"GetTvMode fails negative", {{"op", "GetTvMode"}, {"result", -3}}, NoMode,
       {{"GetTvMode", "Get Current TV Mode failed.", 2, 5}}},
      // Not exactly 1: the list gives up, the plain mode read takes it as success.
      {"GetTvMode answers 2", {{"op", "GetTvMode"}, {"result", 2}}, NoMode,
       {{"GetAntennaList", "Navigator::GetTvMode failed.", 2, 5}}},
      {"GetTvMode fails on the screen navigator only", {{"op", "GetTvMode"}, {"result", 0}, {"nth", 2}}, nullptr,
       {{"m_IsSupportSatelliteAntenna", "get current tv mode Failed!!! ret = [0]", 2, 5}}},
      {"SetTvMode fails", {{"op", "SetTvMode"}, {"result", 0}}, [](Outcome& o) { o.tunes = false; }, {}},
      {"SetTvMode fails for the target mode", {{"op", "SetTvMode"}, {"result", -1}, {"target", "1/21"}},
       [](Outcome& o) { o.tunes = false; }, {}},
      {"GetCurrentService fails", {{"op", "GetCurrentService"}, {"result", 0}},
       [](Outcome& o) { o.current = false, o.currentId = 0; },
       {{"GetCurrentService", "Get current service info failed [0]", 2, 5}}},
      {"GetCurrentService answers 2", {{"op", "GetCurrentService"}, {"result", 2}, {"target", "0/21"}},
       [](Outcome& o) { o.current = false, o.currentId = 0; },
       {{"GetCurrentService", "Get current service info failed [2]", 2, 5}}},
      {"GetCurrentService without table", {{"op", "GetCurrentService"}, {"no_table", true}},
       [](Outcome& o) { o.currentId = 0; }, {{"GetCurrentService", "Get current service info success [1]", 0, 5}}},
      {"GetCurrentService without service id", {{"op", "GetCurrentService"}, {"no_attribute", 12}},
       [](Outcome& o) { o.currentId = 0; }, {}},
      {"GetServiceCount fails", {{"op", "GetServiceCount"}, {"result", 0}},
       [](Outcome& o) { o.list = {{0, 21}}; }, {}},  // the current mode is offered without services
      {"GetServiceCount fails for one satellite mode", {{"op", "GetServiceCount"}, {"result", -1}, {"target", "2/5"}},
       [](Outcome& o) { o.list = {{0, 21}, {1, 21}, {2, 3}, {2, 7}, {2, 30}}; }, {}},
      {"FindService fails", {{"op", "FindService"}, {"result", 0}}, NoRecord,
       {{"GetServiceData", "pServData not found!", 2, 5}, {"GetServiceNumberString", "Error parameter", 2, 5},
        {"GetServiceName", "Get service name error", 2, 5}}},
      {"FindService without table", {{"op", "FindService"}, {"no_table", true}},
       [](Outcome& o) { NoRecord(o), o.found = true; },
       {{"GetServiceData", "Get pServData success!", 0, 4}, {"GetServiceNumberString", "Error parameter", 2, 5}}},
      {"FindService without service id", {{"op", "FindService"}, {"no_attribute", 12}},
       [](Outcome& o) { o.name = ""; }, {{"GetServiceName", "Get service name error", 2, 5}}},
      {"FindService without major number", {{"op", "FindService"}, {"no_attribute", 13}},
       [](Outcome& o) { o.number = "", o.numberKind = 0; }, {{"GetServiceNumberString", "Error parameter", 2, 5}}},
      {"FindService without minor number", {{"op", "FindService"}, {"no_attribute", 14}},
       [](Outcome& o) { o.number = "4-65535"; }, {}},
      {"FindService without number kind", {{"op", "FindService"}, {"no_attribute", 1}},
       [](Outcome& o) { o.numberKind = -1; }, {}},
      // The criteria stay unfilled and the counts are asked without a navigation mode.
      {"GetNavigationCriteria fails", {{"op", "GetNavigationCriteria"}, {"result", -1}},
       [](Outcome& o) { o.countNavigation = {-1}; }, {}},
      {"GetServiceName fails", {{"op", "GetServiceName"}, {"result", 0}}, [](Outcome& o) { o.name = ""; },
       {{"GetServiceName", "Get service name error", 2, 5}}},
      {"GetChannelTypeString answers nothing", {{"op", "GetChannelTypeString"}, {"result", 0}},
       [](Outcome& o) { o.previousName = ""; }, {}},
      {"GetChannelNumberString answers nothing", {{"op", "GetChannelNumberString"}, {"result", 0}},
       [](Outcome& o) { o.number = ""; }, {}},
      {"UnicodeToUtf8Buffer fails", {{"op", "UnicodeToUtf8Buffer"}, {"result", 0}}, [](Outcome& o) { o.name = ""; },
       {{"Twstring2String", "convert string failed", 2, 5}}},
      {"ProfileServiceInstance hands out null", {{"op", "ProfileServiceInstance"}, {"null", true}}, nullptr,
       {{"GetAntennaList", "CaProfileService::ProfileServiceInstance() failed", 2, 5}}},
      {"GetInstalledOperatorProfiles fails", {{"op", "GetInstalledOperatorProfiles"}, {"result", 0}}, nullptr,
       {{"GetAntennaList", "CaProfileService::GetInstalledOperatorProfiles() failed", 2, 5}}},
      {"GetVirtualChannelsAPI hands out null", {{"op", "GetVirtualChannelsAPI"}, {"null", true}},
       [](Outcome& o) { o.kpiRecorded = false; }, {{"KPILogging", "Assertion failed.", 2, 5}}},
      {"LogKpiEvent fails", {{"op", "LogKpiEvent"}, {"result", -5}, {"target", "SELECT_ANTENNA"}},
       [](Outcome& o) { o.kpiResult = -5, o.kpiRecorded = false; }, {}},
      {"rec_get_recording_service_id_list fails", {{"op", "rec_get_recording_service_id_list"}, {"result", -7}},
       [](Outcome& o) { o.recordings = 0; },
       {{"GetRecordChannelCount", "get recording service id list failed, nCount = 0, eResult = -7", 2, 5}}},
      {"vconf_get_int fails", {{"op", "vconf_get_int"}, {"result", -1}}, nullptr,
       {{"m_IsSupportSatelliteAntenna", "default mode, nFocusSlotID:[-2], nMLSState[-1]", 0, 5},
        {"m_IsSupportSatelliteAntenna", std::string("vconf get fails ") + kPip, 2, 5}}},
      {"vconf_get_int fails for the focus slot", {{"op", "vconf_get_int"}, {"result", -1}, {"target", "db/mls/mls_focus"}},
       nullptr, {{"m_IsSupportSatelliteAntenna", "default mode, nFocusSlotID:[-2], nMLSState[0]", 0, 5}}},
      {"vconf_get_int fails for picture-in-picture", {{"op", "vconf_get_int"}, {"result", -1}, {"target", kPip}},
       nullptr, {{"m_IsSupportSatelliteAntenna", std::string("vconf get fails ") + kPip, 2, 5}}},
      {"vconf_get_bool fails", {{"op", "vconf_get_bool"}, {"result", -1}}, nullptr,
       {{"m_IsSupportSatelliteAntenna",
         "vconf get fails db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType", 2, 5}}},
      {"system_info_get_value_int fails", {{"op", "system_info_get_value_int"}, {"result", -1}},
       [](Outcome& o) { o.recordable = 0; },
       {{"NumOfRecordableTuner", "nRet = -1, numOfRecord = [0]", 0, 5},
        {"m_TunerNumWithSingleSatelite", "nRet = -1, m_TunerNumWithSingleSatelite = [0]", 0, 5}}},
      {"system_info_get_value_int fails for the tuner count",
       {{"op", "system_info_get_value_int"}, {"result", -1}, {"target", "system_info/18"}},
       [](Outcome& o) { o.recordable = 0; },
       {{"m_TunerNumWithSingleSatelite", "nRet = -1, m_TunerNumWithSingleSatelite = [0]", 0, 5}}},
      {"system_info_get_custom_bool fails",
       {{"op", "system_info_get_custom_bool"}, {"result", -1}},
       [](Outcome& o) { NoServiceMode(o), o.recordings = 0; },
       {{"GetServiceMode", "get region or country failed", 2, 5},
        {"IsPvrSupport", std::string(kPvrKey) + " value get failed", 2, 5},
        {"PvrRecording", "PVR is NOT Support", 2, 5}}},
      {"system_info_get_custom_bool fails for the service mode key",
       {{"op", "system_info_get_custom_bool"}, {"result", -1}, {"target", kSaAtvKey}}, NoServiceMode,
       {{"GetServiceMode", "get region or country failed", 2, 5}}},
      {"system_settings_get_value_int fails", {{"op", "system_settings_get_value_int"}, {"result", -1}},
       NoServiceMode,
       {{"GetCountry", "Get Country failed.", 2, 5}, {"GetServiceMode", "get region or country failed", 2, 5}}},
  };
  return rows;
}

// The sample TV, with one recordable tuner so that a failed tuner count shows.
void LoadSample(tvtest::TempTv& tv) {
  tv.LoadFile("sample.json");
  tv.Set("system_info/238", "1");
}

using UtilFaultMatrix = Fresh;

TEST_F(UtilFaultMatrix, EveryFailureOfEveryOperationEndsNeutrallyWithItsLine) {
  for (const Row& row : Rows()) {
    SCOPED_TRACE(row.name);
    ASSERT_TRUE(row.change || !row.lines.empty()) << "a row must expect something";
    Util::ResetCachesForTesting();
    tvtest::TempTv tv;
    LoadSample(tv);
    tv.AddFault(row.fault);
    Outcome got;
    EXPECT_NO_THROW(got = RunReadPath(tv));
    Outcome expected;
    if (row.change) row.change(expected);
    ExpectSame(expected, got);
    for (const Line& line : row.lines) {
      EXPECT_TRUE(tv.Logged(line.function, line.message, line.buffer, line.priority))
          << line.function << ": " << line.message;
    }
    EXPECT_TRUE(tv.OnlyFaultFired()) << "the fault never fired";
  }
}

// Without faults the read path gives the sample's results, and the matrix covers
// what it really calls: a new port call in the utilities without a row fails here.
TEST_F(UtilFaultMatrix, CoversEveryOperationTheReadPathCalls) {
  tvtest::TempTv tv;
  LoadSample(tv);
  Outcome got;
  EXPECT_NO_THROW(got = RunReadPath(tv));
  ExpectSame(Outcome(), got);
  std::set<std::string> called;
  const json shown = tv.Show();  // the loop must not run over a destroyed temporary
  for (const json& call : shown["calls"]) called.insert(call["op"].get<std::string>());
  std::set<std::string> covered;
  for (const Row& row : Rows()) covered.insert(row.fault["op"].get<std::string>());
  for (const std::string& op : called) EXPECT_TRUE(covered.count(op)) << op << " has no row";
  for (const std::string& op : covered) EXPECT_TRUE(called.count(op)) << op << " is not on the read path";
}

}  // namespace
