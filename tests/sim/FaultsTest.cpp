// Fault injection hits every call, only the n-th or only one target, with each
// effect an operation can take; the call log records what happened.
#include <gtest/gtest.h>

#include "CaProfileService.h"
#include "ChannelText.h"
#include "Control.h"
#include "Errors.h"
#include "Recorder.h"
#include "ServiceHub.h"
#include "Settings.h"
#include "SimTestUtil.h"
#include "TempTv.h"
#include "VirtualChannels.h"

using nlohmann::json;

namespace {

Navigator* Main() {
  Navigator* navigator = nullptr;
  ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &navigator);
  return navigator;
}

int Count(int antenna, int service) {
  ServiceQuery query;
  NavigationQueries::GetNavigationCriteria(NAVIGATION_MODE_ALL, query, NAVIGATION_SORT_MODE_DEFAULT);
  int count = -1;
  const int result = Main()->GetServiceCount(query, count, TvMode(AntennaMode(antenna), ServiceMode(service)), 0);
  return result > 0 ? count : -1000 + result;
}

int ReadInt(const char* key) {
  int value = -99;
  const int result = vconf_get_int(key, &value);
  return result == 0 ? value : -1000 + result;
}

int Focus() { return ReadInt("db/mls/mls_focus"); }
int MlsState() { return ReadInt("memory/mls/state"); }

ServiceData Find(uint64_t id) {
  ServiceStore* store = nullptr;
  ServiceHub::OpenServiceStore(&store);
  ServiceQuery query;
  query.Where(ATTR_SERVICE_ID, id);
  ServiceData data;
  if (store) store->FindService(query, &data, 1);
  return data;
}

}  // namespace

TEST(Faults, HitEveryCallTheNthMatchingCallOrOneTarget) {
  struct Row { const char* name; json fault; std::function<std::vector<int>()> calls; std::vector<int> expected; };
  const Row rows[] = {
      {"only the second call", {{"op", "vconf_get_int"}, {"result", -5}, {"nth", 2}},
       [] { return std::vector<int>{Focus(), Focus(), Focus()}; }, {0, -1005, 0}},
      {"one key", {{"op", "vconf_get_int"}, {"result", -6}, {"target", "memory/mls/state"}},
       [] { return std::vector<int>{Focus(), MlsState()}; }, {0, -1006}},
      {"nth counts only the target's calls", {{"op", "vconf_get_int"}, {"result", -7}, {"nth", 2}, {"target", "memory/mls/state"}},
       [] { return std::vector<int>{MlsState(), Focus(), MlsState()}; }, {0, 0, -1007}},
      {"one mode", {{"op", "GetServiceCount"}, {"result", 0}, {"target", "2/5"}},
       [] { return std::vector<int>{Count(2, 3), Count(2, 5)}; }, {3, -1000}},
      {"system information by its key", {{"op", "system_info_get_value_int"}, {"result", -2}, {"target", "system_info/238"}},
       [] {
         int a = -1, b = -1;
         return std::vector<int>{system_info_get_value_int(SYSTEM_INFO_KEY_TUNER_COUNT, &a), a,
                                 system_info_get_value_int(SYSTEM_INFO_KEY_RECORDABLE_TUNER_COUNT, &b), b};
       },
       {0, 2, -2, -1}},
      {"one screen's navigator is null", {{"op", "OpenNavigator"}, {"null", true}, {"target", "1"}},
       [] {
         Navigator* zero = nullptr;
         Navigator* one = reinterpret_cast<Navigator*>(0x1);
         return std::vector<int>{ServiceHub::OpenNavigator(PROFILE_SCREEN, 0, &zero), zero != nullptr,
                                 ServiceHub::OpenNavigator(PROFILE_SCREEN, 1, &one), one != nullptr};
       },
       {0, 1, 0, 0}},
      {"the navigator opened for screen 0, not the main one", {{"op", "OpenNavigator"}, {"null", true}, {"target", "screen:0"}},
       [] {
         Navigator* main = nullptr;
         Navigator* screen = reinterpret_cast<Navigator*>(0x1);
         return std::vector<int>{ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &main), main != nullptr,
                                 ServiceHub::OpenNavigator(PROFILE_SCREEN, 0, &screen), screen != nullptr};
       },
       {0, 1, 0, 0}},
      {"the main navigator only", {{"op", "OpenNavigator"}, {"result", -4}, {"target", "main"}},
       [] {
         Navigator* navigator = nullptr;
         return std::vector<int>{ServiceHub::OpenNavigator(PROFILE_SCREEN, 0, &navigator),
                                 ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &navigator)};
       },
       {0, -4}},
      // Any positive result is a success to some callers and exactly 1 to others.
      {"a result with the real outputs", {{"op", "GetServiceCount"}, {"result", 7}, {"keep_outputs", true}},
       [] {
         ServiceQuery query;
         NavigationQueries::GetNavigationCriteria(NAVIGATION_MODE_ALL, query, NAVIGATION_SORT_MODE_DEFAULT);
         int count = -1;
         TvMode mode;
         const int result = Main()->GetServiceCount(query, count, TvMode(ANTENNA_MODE_SATELLITE, ServiceMode(3)), 0);
         Main()->GetTvMode(mode);
         return std::vector<int>{result, count, mode.antennaMode};
       },
       {7, 3, 0}},
      {"null profile service and KPI sink", {{"op", "ProfileServiceInstance"}, {"null", true}},
       [] {
         return std::vector<int>{CaProfileService::ProfileServiceInstance() != nullptr,
                                 VirtualChannels::GetVirtualChannelsAPI() != nullptr};
       },
       {0, 1}},
      {"one profile", {{"op", "GetInstalledOperatorProfiles"}, {"result", 0}, {"target", "302"}},
       [] {
         std::list<OperatorProfile> profiles;
         const bool ok = CaProfileService::ProfileServiceInstance()->GetInstalledOperatorProfiles(profiles, 0);
         return std::vector<int>{ok, static_cast<int>(profiles.size())};
       },
       {0, 0}},
      {"a record without table", {{"op", "FindService"}, {"no_table", true}, {"target", "7340035"}},
       [] {
         return std::vector<int>{Find(7340035).GetAttributeTable() != nullptr,
                                 Find(7340036).GetAttributeTable() != nullptr};
       },
       {0, 1}},
      {"a record without minor number", {{"op", "FindService"}, {"no_attribute", 14}},
       [] {
         ServiceData data = Find(7340035);
         return std::vector<int>{data.GetAttributeTable()->GetAttribute(ATTR_MINOR_NUMBER) != nullptr,
                                 data.GetAttributeTable()->GetAttribute(ATTR_MAJOR_NUMBER)->GetUint16()};
       },
       {0, 7}},
      {"a failing text conversion", {{"op", "UnicodeToUtf8Buffer"}, {"result", 0}},
       [] {
         const uint16_t text[] = {0x4100, 0x4200};  // "AB", big-endian
         char out[8] = "zzzzzzz";
         return std::vector<int>{UnicodeToUtf8Buffer(out, 8, text, 2), out[0]};
       },
       {0, 'z'}},
      {"a refused stop keeps the recording", {{"op", "rec_stop_recording"}, {"result", 3}},
       [] {
         uint64_t ids[2] = {0, 0};
         int count = 0;
         const int stopped = rec_stop_recording(7340034, 1, "org.norix.epg");
         rec_get_recording_service_id_list(ids, 16, &count, 0);
         return std::vector<int>{stopped, count};
       },
       {3, 1}},
      {"a string operation answers nothing", {{"op", "GetChannelTypeString"}, {"result", 0}, {"target", "1/21"}},
       [] {
         return std::vector<int>{
             static_cast<int>(ChannelText::GetChannelTypeString(TvMode(ANTENNA_MODE_0, ServiceMode(21)), CHANNEL_KIND_ANY).size()),
             static_cast<int>(ChannelText::GetChannelTypeString(TvMode(ANTENNA_MODE_1, ServiceMode(21)), CHANNEL_KIND_ANY).size())};
       },
       {3, 0}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.LoadFile("sample.json");
    tv.AddFault(row.fault);
    EXPECT_EQ(row.expected, row.calls());
  }
}

TEST(Faults, ATargetThatCannotMatchIsRefusedInScenariosAndTvctlAlike) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  struct Row { const char* op; json target; const char* problem; } refused[] = {
      {"GetServiceCount", "3/21", "no mode"}, {"GetServiceCount", "2/256", "no mode"},
      {"GetChannelTypeString", "-2/0", "no mode"}, {"GetCurrentService", "2", "no mode"},
      {"GetServiceCount", 25, "is text, not a number"}, {"OpenNavigator", "screen:16", "no screen 0..15"},
      {"GetTvMode", 16, "no screen 0..15"}, {"SetTvMode", "1/x", "no mode"}, {"OpenNavigator", 1.5, "no screen"},
      {"FindService", "18446744073709551616", "no service id"}, {"GetServiceName", 0, "no service id"},
      {"rec_stop_recording", "0x700002", "no service id"}, {"GetPresentProgram", " 7340034", "no service id"},
      {"GetInstalledOperatorProfiles", "helios", "no profile id"},
      {"GetInstalledOperatorProfiles", "2147483648", "no profile id"}, {"vconf_get_int", 18, "is text, not a number"},
      {"vconf_get_bool", "pip on", "no settings key"}, {"system_info_get_value_int", "system_info/x", "system_info/N"},
      {"system_settings_get_value_int", "system_info/57", "system_settings/N"}, {"LogKpiEvent", 17, "is text"},
      {"LogKpiEvent", "SELECT ANTENNA", "no event name"}, {"LogKpiEvent", "select_antenna", "no event name"}, {"vconf_get_int", "db/\xff", "no settings key"},
      {"GetTvMode", json::array({0}), "not array"},
  };
  const json before = tv.Show();
  for (const Row& row : refused) {
    SCOPED_TRACE(std::string(row.op) + " " + row.target.dump(-1, ' ', false, json::error_handler_t::replace));
    const json fault = {{"op", row.op}, {"result", -1}, {"target", row.target}};
    try {
      tvsim::Control(tv.DbPath()).Load({{"faults", {fault}}}, "faults.json");
      ADD_FAILURE() << "scenario accepted";
    } catch (const tvsim::ScenarioError& e) {
      EXPECT_EQ("/faults/0/target", e.Pointer());
      EXPECT_NE(std::string::npos, e.Problem().find(row.problem)) << e.Problem();
    }
    if (!row.target.is_string()) continue;
    std::string err;
    EXPECT_EQ(2, tv.Run(simtest::Tvctl() + " fault add " + row.op + " --result -1 --target '" +
                        row.target.get<std::string>() + "' 2>&1", &err));
    EXPECT_NE(std::string::npos, err.find(row.problem)) << err;
  }
  EXPECT_EQ(before, tv.Show());

  // Targets are kept the way the calls name them, so a leading zero still hits.
  tv.AddFault({{"op", "GetServiceCount"}, {"result", -9}, {"target", "02/005"}});
  EXPECT_EQ(-1009, Count(2, 5));
  ASSERT_EQ(0, tv.Run(simtest::Tvctl() + " fault add system_info_get_value_int --result -2 --target system_info/0238"));
  int value = 0;
  EXPECT_EQ(-2, system_info_get_value_int(SYSTEM_INFO_KEY_RECORDABLE_TUNER_COUNT, &value));
  EXPECT_EQ(json({"2/5", "system_info/238"}), json({tv.Show()["faults"][0]["target"], tv.Show()["faults"][1]["target"]}));
}

TEST(Faults, CountMatchingCallsAndCanBeClearedWhileRunning) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  tv.AddFault({{"op", "GetTvMode"}, {"result", -3}, {"nth", 3}});
  TvMode mode, untouched(ANTENNA_MODE_1, ServiceMode(9));
  EXPECT_EQ(1, Main()->GetTvMode(mode));
  EXPECT_EQ(1, Main()->GetTvMode(mode));
  EXPECT_EQ(-3, Main()->GetTvMode(untouched));
  EXPECT_EQ(TvMode(ANTENNA_MODE_1, ServiceMode(9)), untouched);
  EXPECT_EQ(1, Main()->GetTvMode(mode));
  const json faults = tv.Show()["faults"];
  ASSERT_EQ(1u, faults.size());
  EXPECT_EQ(4, faults[0]["calls"]);
  tv.AddFault({{"op", "GetTvMode"}, {"result", 0}});
  EXPECT_EQ(0, Main()->GetTvMode(mode));
  tv.ClearFaults();
  EXPECT_EQ(1, Main()->GetTvMode(mode));
}

TEST(CallLog, RecordsEveryPortCallWithArgumentsOutputsAndResult) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  tv.AddFault({{"op", "vconf_get_bool"}, {"result", -4}});
  Navigator* navigator = Main();
  TvMode mode;
  navigator->GetTvMode(mode);
  navigator->SetTvMode(TvMode(ANTENNA_MODE_1, ServiceMode(21)), "");
  int value = 0;
  vconf_get_int("db/menu/picture/pip/onoff", &value);
  vconf_get_bool("db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType", &value);
  rec_stop_recording(7340034, 1, "org.norix.epg");

  const json calls = tv.Show()["calls"];
  std::vector<std::string> ops;
  for (const json& call : calls) {
    ops.push_back(call["op"]);
    EXPECT_FALSE(call["time"].get<std::string>().empty());
    EXPECT_GT(call["pid"].get<int>(), 0);
  }
  EXPECT_EQ((std::vector<std::string>{"OpenNavigator", "GetTvMode", "SetTvMode", "vconf_get_int", "vconf_get_bool",
                                      "rec_stop_recording"}), ops);
  ASSERT_EQ(6u, calls.size());
  EXPECT_EQ(json({{"profile", 1}, {"index", 0}}), calls[0]["args"]);
  EXPECT_EQ(json({0, 1, -4}), json({calls[0]["result"], calls[1]["result"], calls[4]["result"]}));
  EXPECT_EQ(json({{"antenna", 0}, {"service", 21}}), calls[1]["out"]);
  EXPECT_EQ(json({1, 21}), json({calls[2]["args"]["antenna"], calls[2]["args"]["service"]}));
  EXPECT_EQ(json({"db/menu/picture/pip/onoff", 0}), json({calls[3]["args"]["key"], calls[3]["out"]["value"]}));
  EXPECT_TRUE(calls[4]["out"].contains("fault"));
  EXPECT_EQ(json({7340034u, "org.norix.epg"}), json({calls[5]["args"]["service_id"], calls[5]["args"]["caller"]}));
}
