// The whole popup flow (launch, list, pick, question, stop, switch, end) with
// every port operation it calls failing in every way the simulated TV can
// fail it: no crash, no hang, the failure's own log line, and a tuning change
// only where the flow still defines one.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "AppFramework.h"
#include "PopupDriver.h"
#include "TempTv.h"
#include "UiDriver.h"

// The shell's callbacks are file-local to src/main.cpp: compile it into this
// test, with its main() renamed, to drive the lifecycle step by step.
#define main AntennaSelectionMain
#include "../../src/main.cpp"
#undef main

using nlohmann::json;

namespace {

const char* const kFailedOpen = "ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &m_pNavigator) failed";
const char* const kPickCable = "{sl_antenna=Cable;pre_antenna=Air;antennanum=6}";
const char* const kNoCurrentName = "{sl_antenna=Cable;pre_antenna=;antennanum=6}";
const char* const kPvrKey = "com.velmora/featureconf/pvr.pvr_support";

enum Tv { kSample, kQuestion, kTwo };

// kSample: the sample TV, whose recording leaves a spare tuner: a pick switches
// at once. kQuestion: the recording holds the only recordable tuner while a
// playback runs: a pick asks first, agreeing stops both, the recorder reports at once.
// kTwo: two recordings while a playback runs: a pick asks which recording to
// stop, the first is chosen, playback and that recording stop, the recorder reports.
json Scenario(Tv kind) {
  if (kind == kSample) return tvtest::SampleTv();
  if (kind == kTwo) {
    return tvtest::SampleTv({{"recordings", {7340034, 8388610}},
                             {"playback", {{"playing", 1}}},
                             {"recorder", {{"stop_report", {{"delay_ms", 0}}}}}});
  }
  return tvtest::SampleTv({{"settings", {{"system_info/238", 1}}},
                           {"playback", {{"playing", 1}}},
                           {"recorder", {{"stop_report", {{"delay_ms", 0}}}}}});
}

// What a run shows: the question came ("asked"), the one tuning change
// ("tuned", absent: none), the pick's KPI description ("kpi", absent: no
// event), the recorder requests in order, and whether the application ended.
json Baseline(Tv kind) {
  json o = {{"asked", false},       {"chose", false},
            {"tuned", {1, 21}},      {"kpi", kPickCable},
            {"requests", json::array()}, {"exited", true}};
  if (kind == kQuestion) o.merge_patch({{"asked", true}, {"requests", {"stop_playing", "stop_recording"}}});
  if (kind == kTwo) o.merge_patch({{"chose", true}, {"requests", {"stop_playing", "stop_recording"}}});
  return o;
}

// Changes of a row's outcome from its TV's baseline (merge patches).
const json kNoList = {{"tuned", nullptr}, {"kpi", nullptr}};  // only Close: Return closes
const json kNoSwitch = {{"tuned", nullptr}};
const json kNoKpi = {{"kpi", nullptr}};
const json kAtOnce = {{"asked", false}, {"requests", json::array()}};  // no question, nothing stopped
// The recorder would not list its recordings: the stop request names no recording.
const json kStopsNothing = {{"tuned", nullptr}, {"requests", {"stop_playing", "stop_recording"}}};
// No service mode for antennas 0 and 1: the list holds the satellite modes
// only, none of them current, and Down lands on the first.
const json kNoServiceMode = {{"tuned", {2, 3}}, {"kpi", "{sl_antenna=Satellite 19.2°E;pre_antenna=Air;antennanum=4}"}};

// The focus has settled: on the current row, on the list when no row is the
// current mode, or on the close button of an empty list.
bool Settled(const tvtest::TempTv& tv) {
  Evas_Object* popup = tvtest::ShownList();
  if (!popup) return false;
  Evas_Object* list = tvtest::GenlistOf(popup);
  if (elm_genlist_items_count(list) == 0) {
    return elm_object_focused_object_get(Util::GetWindow()) == elm_object_part_content_get(popup, "button1");
  }
  for (const std::string& message : tv.AppMessages()) {
    if (message.rfind("current Antenna item ", 0) == 0) return elm_object_focused_item_get(list) != nullptr;
  }
  return elm_object_focus_get(list);
}

// Launches the application on `tv`, picks the row below the focused one,
// agrees to any question, and ends it; returns what the TV saw. `pickFault`
// is armed once the list is on screen.
json RunFlow(tvtest::TempTv& tv, const json& pickFault = nullptr) {
  s_bAppControlDone = false;
  tvsim::ResetExitRequests();
  Util::ResetCachesForTesting();
  app_create(nullptr);
  Evas_Object* window = Util::GetWindow();
  tvtest::ShowOnScreen(window);
  tvtest::FocusWindow(window);
  app_control(nullptr, nullptr);
  app_resume(nullptr);
  EXPECT_TRUE(tvtest::PumpUntil([&] { return Settled(tv); }, 3.0)) << "the list never took the focus";
  if (!pickFault.is_null()) tv.AddFault(pickFault);
  tvtest::PressKey(window, "Down");
  tvtest::PressKey(window, "Return");
  json got = {{"asked", tvtest::ShownBox() != nullptr}, {"chose", tvtest::ShownStopList() != nullptr}, {"requests", json::array()}};
  if (got["chose"]) {
    // The first item (stop the first recording) takes the focus.
    EXPECT_TRUE(tvtest::PumpUntil([] { return tvtest::ShownStopList() && elm_object_focused_item_get(tvtest::ShownStopList()); }, 3.0));
    tvtest::PressKey(window, "Return");
  }
  if (got["asked"]) {
    tvtest::PressKey(window, "Left");
    tvtest::PressKey(window, "Return");
  }
  got["exited"] = tvtest::PumpUntil([] { return tvsim::ExitRequests() >= 1; }, 3.0);
  app_terminate(nullptr);
  EXPECT_EQ(nullptr, tvtest::ShownList());

  const json shown = tv.Show();
  const json& changes = shown["tuning_changes"];
  EXPECT_LE(changes.size(), 1u);
  if (!changes.empty()) got["tuned"] = {changes[0]["antenna"], changes[0]["service"]};
  const json& kpi = shown["kpi_events"];
  EXPECT_LE(kpi.size(), 1u);
  if (!kpi.empty()) got["kpi"] = kpi[0]["desc"];
  for (const json& request : shown["recorder_requests"]) got["requests"].push_back(request["op"]);
  return got;
}

struct Line {
  const char* function;
  std::string message;
  int buffer, priority;
};

enum Armed { kLaunch, kPick };  // the fault is armed before the launch, or once the list shows

struct Row {
  const char* name;
  Tv tv;
  Armed armed;
  json fault;
  json change;              // merged into the baseline; null: the baseline
  std::vector<Line> lines;  // lines this failure logs
};

const Line kRefused = {"StopReportWillNotCome", "the stop request failed, leaving without change", 2, 5};
const Line kClosed = {"m_ButtonClickCB", "Cancel button clicked", 0, 5};
const Line kNoServData = {"m_GetButtonItemText", "ServData can not get .", 2, 5};

const std::vector<Row>& Rows() {
  static const std::vector<Row> rows = {
      // Launch: the list.
      {"OpenNavigator fails", kSample, kLaunch, {{"op", "OpenNavigator"}, {"result", -1}}, kNoList,
       {{"GetAntennaList", kFailedOpen, 0, 4}, kClosed}},
      {"OpenNavigator hands out null", kSample, kLaunch, {{"op", "OpenNavigator"}, {"null", true}}, kNoList,
       {{"GetAntennaList", kFailedOpen, 0, 4}, kClosed}},
      {"GetTvMode fails", kSample, kLaunch, {{"op", "GetTvMode"}, {"result", 0}}, kNoList,
       {{"GetAntennaList", "Navigator::GetTvMode failed.", 2, 5}, {"GetAntennaList", "Assertion failed.", 2, 5}}},
      // Not exactly 1: the list gives up, while the plain mode read takes it as success.
      {"GetTvMode answers 2", kSample, kLaunch, {{"op", "GetTvMode"}, {"result", 2}}, kNoList,
       {{"GetAntennaList", "Navigator::GetTvMode failed.", 2, 5}}},
      {"GetTvMode fails on the screen navigator", kSample, kLaunch,
       {{"op", "GetTvMode"}, {"result", -4}, {"nth", 2}}, nullptr,
       {{"m_IsSupportSatelliteAntenna", "get current tv mode Failed!!! ret = [-4]", 2, 5}}},
      {"system_settings_get_value_int fails", kSample, kLaunch,
       {{"op", "system_settings_get_value_int"}, {"result", -1}},
       kNoServiceMode,
       {{"GetCountry", "Get Country failed.", 2, 5}, {"GetServiceMode", "get region or country failed", 2, 5}}},
      {"GetNavigationCriteria fails", kSample, kLaunch, {{"op", "GetNavigationCriteria"}, {"result", -1}}, nullptr, {}},
      // Only the current mode is offered, without services: Down leaves its row for Close.
      {"GetServiceCount fails", kSample, kLaunch, {{"op", "GetServiceCount"}, {"result", 0}}, kNoList,
       {{"m_AddAntennaListItem", "Antenna list size = 1", 0, 5}, kClosed}},
      {"GetServiceCount fails for Cable", kSample, kLaunch,
       {{"op", "GetServiceCount"}, {"result", -1}, {"target", "1/21"}},
       {{"tuned", {2, 3}}, {"kpi", "{sl_antenna=Satellite 19.2°E;pre_antenna=Air;antennanum=5}"}},
       {{"m_AddAntennaListItem", "Antenna list size = 5", 0, 5}}},
      {"vconf_get_int fails", kSample, kLaunch, {{"op", "vconf_get_int"}, {"result", -1}}, nullptr,
       {{"IsEnlarge", "get enlarge failed", 2, 5},
        {"m_IsSupportSatelliteAntenna", "default mode, nFocusSlotID:[-2], nMLSState[-1]", 0, 5},
        {"m_IsSupportSatelliteAntenna", "vconf get fails db/menu/picture/pip/onoff", 2, 5}}},
      {"vconf_get_bool fails", kSample, kLaunch, {{"op", "vconf_get_bool"}, {"result", -1}}, nullptr,
       {{"m_IsSupportSatelliteAntenna",
         "vconf get fails db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType", 2, 5}}},
      {"ProfileServiceInstance hands out null", kSample, kLaunch,
       {{"op", "ProfileServiceInstance"}, {"null", true}},
       nullptr,  // the operators' modes are listed as satellite modes anyway
       {{"GetAntennaList", "CaProfileService::ProfileServiceInstance() failed", 2, 5}}},
      {"GetInstalledOperatorProfiles fails", kSample, kLaunch,
       {{"op", "GetInstalledOperatorProfiles"}, {"result", 0}},
       nullptr,  // the operators' modes are listed as satellite modes anyway
       {{"GetAntennaList", "CaProfileService::GetInstalledOperatorProfiles() failed", 2, 5}}},
      {"GetChannelTypeString answers nothing", kSample, kLaunch, {{"op", "GetChannelTypeString"}, {"result", 0}},
       {{"kpi", "{sl_antenna=;pre_antenna=;antennanum=6}"}},
       {{"m_AddAntennaListItem", "add Antenna list item, ", 0, 5}}},
      // The pick, with the fault armed once the list is on screen.
      {"OpenNavigator fails at the pick", kSample, kPick, {{"op", "OpenNavigator"}, {"result", -1}},
       {{"kpi", kNoCurrentName}, {"tuned", nullptr}},
       {{"GetTvMode", kFailedOpen, 0, 4}, {"SetTvMode", kFailedOpen, 0, 4}}},
      {"GetTvMode fails at the pick", kSample, kPick, {{"op", "GetTvMode"}, {"result", -1}}, {{"kpi", kNoCurrentName}},
       {{"GetTvMode", "Get Current TV Mode failed.", 2, 5}}},
      {"GetVirtualChannelsAPI hands out null", kSample, kLaunch, {{"op", "GetVirtualChannelsAPI"}, {"null", true}},
       kNoKpi, {{"KPILogging", "Assertion failed.", 2, 5}}},
      {"LogKpiEvent fails", kSample, kLaunch,
       {{"op", "LogKpiEvent"}, {"result", -5}, {"target", "SELECT_ANTENNA"}}, kNoKpi,
       {{"KPILogging", std::string("strEventName = SELECT_ANTENNA, strCategory = EV017, strDesc = ") + kPickCable,
         0, 5}}},
      {"system_info_get_custom_bool fails for the recording feature", kQuestion, kLaunch,
       {{"op", "system_info_get_custom_bool"}, {"result", -1}, {"target", kPvrKey}}, kAtOnce,
       {{"IsPvrSupport", std::string(kPvrKey) + " value get failed", 2, 5},
        {"PvrRecording", "PVR is NOT Support", 2, 5}}},
      {"system_info_get_custom_bool fails", kSample, kLaunch, {{"op", "system_info_get_custom_bool"}, {"result", -1}},
       kNoServiceMode,
       {{"GetServiceMode", "get region or country failed", 2, 5}, {"PvrRecording", "PVR is NOT Support", 2, 5}}},
      // No tuner count: no spare tuner either, so the sample's recording is in the way.
      {"system_info_get_value_int fails", kSample, kLaunch, {{"op", "system_info_get_value_int"}, {"result", -1}},
       {{"asked", true}, {"requests", {"stop_recording"}}},
       {{"NumOfRecordableTuner", "nRet = -1, numOfRecord = [0]", 0, 5},
        {"m_TunerNumWithSingleSatelite", "nRet = -1, m_TunerNumWithSingleSatelite = [0]", 0, 5}}},
      {"rec_get_recording_service_id_list fails", kQuestion, kLaunch,
       {{"op", "rec_get_recording_service_id_list"}, {"result", -7}}, kAtOnce,
       {{"GetRecordChannelCount", "get recording service id list failed, nCount = 0, eResult = -7", 2, 5}}},
      {"SetTvMode fails", kSample, kLaunch, {{"op", "SetTvMode"}, {"result", 0}}, kNoSwitch, {}},
      // The question answered: stop and switch.
      {"rec_get_recording_service_id_list fails for the stop", kQuestion, kLaunch,
       {{"op", "rec_get_recording_service_id_list"}, {"result", -7}, {"nth", 2}},
       {{"tuned", nullptr}, {"requests", json::array()}},
       {{"StopCurrentRecording", "get recording service id list failed, nCount = 0, eResult = -7", 2, 5}, kRefused}},
      {"rec_is_playing_multimedia fails", kQuestion, kLaunch, {{"op", "rec_is_playing_multimedia"}, {"result", -1}},
       {{"requests", {"stop_recording"}}},
       {{"StopPlayingMultimedia", "rec_is_playing_multimedia is failed!", 2, 5}}},
      {"rec_stop_playing_sync fails", kQuestion, kLaunch, {{"op", "rec_stop_playing_sync"}, {"result", -1}},
       {{"requests", {"stop_recording"}}},
       {{"StopCurrentRecording", "stop recording success , servic id = 0x700002", 0, 5}}},
      {"rec_stop_recording refused", kQuestion, kLaunch, {{"op", "rec_stop_recording"}, {"result", -3}},
       {{"tuned", nullptr}, {"requests", {"stop_playing"}}},
       {{"StopCurrentRecording", "stop recording failed , servic id = 0x700002", 2, 5}, kRefused}},
      // The stop was accepted, so the switch waits for a report that cannot reach it.
      {"rec_register_to_other_apps_cb fails", kQuestion, kLaunch,
       {{"op", "rec_register_to_other_apps_cb"}, {"result", -1}}, {{"tuned", nullptr}, {"exited", false}},
       {{"StopCurrentRecording", "stop recording success , servic id = 0x700002", 0, 5}}},
      // Start and end of the shell.
      {"rec_service_init fails", kSample, kLaunch, {{"op", "rec_service_init"}, {"result", 0}}, nullptr,
       {{"app_create", "rec_service_init faild!!!!!!!!!!!!!!!!!!!", 2, 5}}},
      {"vconf_notify_key_changed fails", kSample, kLaunch, {{"op", "vconf_notify_key_changed"}, {"result", -1}},
       nullptr, {{"app_create", "end app_create", 2, 5}}},
      {"rec_unregister_to_other_apps_cb fails", kQuestion, kLaunch,
       {{"op", "rec_unregister_to_other_apps_cb"}, {"result", -1}}, nullptr,
       {{"app_terminate", "end app_terminate", 2, 5}}},
      {"rec_service_destroy fails", kSample, kLaunch, {{"op", "rec_service_destroy"}, {"result", -1}}, nullptr,
       {{"app_terminate", "end app_terminate", 2, 5}}},
      {"vconf_ignore_key_changed fails", kSample, kLaunch, {{"op", "vconf_ignore_key_changed"}, {"result", -1}},
       nullptr, {{"app_terminate", "end app_terminate", 2, 5}}},
      // Two recordings: the stop-recording popup's texts lose what the TV
      // cannot tell, and the chosen recording still stops before the switch.
      {"OpenServiceStore fails", kTwo, kLaunch, {{"op", "OpenServiceStore"}, {"result", -1}}, nullptr,
       {{"GetServiceData", "OpenServiceStore failed!", 2, 5}, kNoServData}},
      {"FindService fails", kTwo, kLaunch, {{"op", "FindService"}, {"result", -1}, {"target", "8388610"}}, nullptr,
       {{"GetServiceData", "pServData not found!", 2, 5}, kNoServData}},
      {"FindService without attribute table", kTwo, kLaunch, {{"op", "FindService"}, {"no_table", true}}, nullptr,
       {{"GetServiceNumberString", "Error parameter", 2, 5}}},
      {"GetCurrentService fails", kTwo, kLaunch, {{"op", "GetCurrentService"}, {"result", -1}}, nullptr,
       {{"m_CreateServIdList", "GetCurrentService for changing tvmode ret 0", 0, 5}}},
      {"GetCurrentService without attribute table", kTwo, kLaunch, {{"op", "GetCurrentService"}, {"no_table", true}},
       nullptr, {{"m_CreateServIdList", "GetCurrentService for changing tvmode ret 1", 0, 5}}},
      {"GetServiceName fails", kTwo, kLaunch, {{"op", "GetServiceName"}, {"result", 0}}, nullptr,
       {{"GetServiceName", "Get service name error", 2, 5}}},
      {"UnicodeToUtf8Buffer fails", kTwo, kLaunch, {{"op", "UnicodeToUtf8Buffer"}, {"result", 0}}, nullptr,
       {{"Twstring2String", "convert string failed", 2, 5}}},
      {"GetChannelNumberString answers nothing", kTwo, kLaunch, {{"op", "GetChannelNumberString"}, {"result", 0}},
       nullptr, {}},
      {"GetPresentProgram fails", kTwo, kLaunch, {{"op", "GetPresentProgram"}, {"result", 0}}, nullptr,
       {{"m_GetButtonItemText", "ProgData can not get .", 2, 5}}},
      {"CombineStrings fails", kTwo, kLaunch, {{"op", "CombineStrings"}, {"result", -1}}, nullptr, {}},
      {"rec_get_recording_service_id_list fails for the stop popup", kTwo, kLaunch,
       {{"op", "rec_get_recording_service_id_list"}, {"result", -7}, {"nth", 2}}, kStopsNothing,
       {{"m_CreateServIdList", "get recording service id list failed, nCount = 0, eResult = -7", 2, 5}, kRefused}},
      {"rec_stop_recording refused in the stop popup", kTwo, kLaunch, {{"op", "rec_stop_recording"}, {"result", -3}},
       {{"tuned", nullptr}, {"requests", {"stop_playing"}}},
       {{"m_ItemSelectCb", "stop recording failed , servic id = 0x700002", 2, 5}, kRefused}},
  };
  return rows;
}

class PopupFaultMatrix : public ::testing::Test {
 protected:
  void TearDown() override {
    AntennaSelectionPopup::DestroyInstance();
    tvtest::SetTimeScale("1");
  }
};

TEST_F(PopupFaultMatrix, BaselinesSwitchAtOnceOrAfterTheQuestion) {
  for (Tv kind : {kSample, kQuestion, kTwo}) {
    SCOPED_TRACE(kind);
    tvtest::TempTv tv;
    tv.Load(Scenario(kind));
    EXPECT_EQ(Baseline(kind), RunFlow(tv));
  }
}

TEST_F(PopupFaultMatrix, EveryFailureOfEveryOperationEndsAsTheFlowDefines) {
  for (const Row& row : Rows()) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load(Scenario(row.tv));
    if (row.armed == kLaunch) tv.AddFault(row.fault);
    const json got = RunFlow(tv, row.armed == kPick ? row.fault : json());
    json expected = Baseline(row.tv);
    if (!row.change.is_null()) expected.merge_patch(row.change);
    EXPECT_EQ(expected, got);
    for (const Line& line : row.lines) {
      EXPECT_TRUE(tv.Logged(line.function, line.message, line.buffer, line.priority))
          << line.function << ": " << line.message;
    }
    EXPECT_TRUE(tv.OnlyFaultFired()) << "the fault never fired";
  }
}

// The matrix covers what the flow really calls: a new port call without a row
// fails here, and so does a row for an operation the flow no longer calls.
TEST_F(PopupFaultMatrix, CoversEveryOperationTheFlowCalls) {
  std::set<std::string> called;
  for (Tv kind : {kSample, kQuestion, kTwo}) {
    tvtest::TempTv tv;
    tv.Load(Scenario(kind));
    RunFlow(tv);
    const json shown = tv.Show();  // not a temporary: the loop reads into it
    for (const json& call : shown["calls"]) called.insert(call["op"].get<std::string>());
  }
  std::set<std::string> covered;
  for (const Row& row : Rows()) covered.insert(row.fault["op"].get<std::string>());
  for (const std::string& op : called) EXPECT_TRUE(covered.count(op)) << op << " has no row";
  for (const std::string& op : covered) EXPECT_TRUE(called.count(op)) << op << " is not on the flow";
}

}  // namespace
