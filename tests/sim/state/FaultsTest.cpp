// Fault injection hits every call, only the n-th or only one target, with each
// effect an operation can take; the call log records what happened.
#include <gtest/gtest.h>

#include "Control.h"
#include "Errors.h"
#include "ServiceHub.h"
#include "Settings.h"
#include "SimTestUtil.h"
#include "TempTv.h"

using nlohmann::json;

namespace {

Navigator* Main() {
  Navigator* navigator = nullptr;
  ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &navigator);
  return navigator;
}

// Opens two navigators, the first into a null pointer and the second into a
// non-null one, so that each shows whether the call wrote it:
// {result, opened, result, opened}.
std::vector<int> OpenTwo(ProfileKind first, int firstIndex, ProfileKind second, int secondIndex) {
  Navigator* a = nullptr;
  Navigator* b = reinterpret_cast<Navigator*>(0x1);
  return {ServiceHub::OpenNavigator(first, firstIndex, &a), a != nullptr,
          ServiceHub::OpenNavigator(second, secondIndex, &b), b != nullptr};
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
       [] { return OpenTwo(PROFILE_SCREEN, 0, PROFILE_SCREEN, 1); },
       {0, 1, 0, 0}},
      {"the navigator opened for screen 0, not the main one", {{"op", "OpenNavigator"}, {"null", true}, {"target", "screen:0"}},
       [] { return OpenTwo(PROFILE_MAIN, 0, PROFILE_SCREEN, 0); },
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
