// Tuning mode, service counts, the country's service mode and antenna names,
// read from a simulated TV.
#include "UtilTestUtil.h"

namespace {

using namespace utiltest;
using UtilTvMode = Fresh;

TEST_F(UtilTvMode, ReadsTheCurrentModeOrGivesTheDefaultWithTheFailureLine) {
  const char* const kReadFailed = "Get Current TV Mode failed.";
  struct Row { const char* name; json fault; TvMode expected; const char* message; int buffer, priority; } rows[] = {
      {"tuned", nullptr, Mode(1, 21), nullptr, 0, 0},
      {"open fails", {{"op", "OpenNavigator"}, {"result", -1}}, TvMode(), kFailedOpen, 0, 4},
      {"null navigator", {{"op", "OpenNavigator"}, {"null", true}}, TvMode(), kFailedOpen, 0, 4},
      {"read fails", {{"op", "GetTvMode"}, {"result", 0}}, TvMode(), kReadFailed, 2, 5},
      {"read negative", {{"op", "GetTvMode"}, {"result", -3}}, TvMode(), kReadFailed, 2, 5},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    auto tv = Tv({{"tv_mode", {{"antenna", 1}, {"service", 21}}}}, row.fault);
    EXPECT_EQ(row.expected, Util::GetTvMode());
    if (row.message) {
      EXPECT_TRUE(tv->Logged("GetTvMode", row.message, row.buffer, row.priority));
    }
    else EXPECT_TRUE(tv->AppMessages().empty());
  }
}

TEST_F(UtilTvMode, ChangeAntennaSwitchesTheMainScreenAndLogsOnlySuccess) {
  struct Row { const char* name; json fault; bool switched, failedOpenLogged; } rows[] = {
      {"ok", nullptr, true, false},
      {"refused", {{"op", "SetTvMode"}, {"result", 0}}, false, false},
      {"open fails", {{"op", "OpenNavigator"}, {"result", 3}}, false, true},
      {"null navigator", {{"op", "OpenNavigator"}, {"null", true}}, false, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    auto tv = Tv({{"tv_mode", {{"antenna", 0}, {"service", 1}}}}, row.fault);
    Util::ChangeAntenna(Mode(2, 5));
    const json shown = tv->Show();
    const json& changes = shown["tuning_changes"];
    ASSERT_EQ(row.switched ? 1u : 0u, changes.size());
    if (row.switched) {
      EXPECT_EQ(json({0, 2, 5}), json({changes[0]["screen"], changes[0]["antenna"], changes[0]["service"]}));
    }
    EXPECT_EQ(row.switched ? json({{"antenna", 2}, {"service", 5}}) : json({{"antenna", 0}, {"service", 1}}),
              shown["tv_mode"]);
    EXPECT_EQ(row.switched, tv->Logged("SetTvMode", "Set TV mode Sucess!", 0, 5));
    EXPECT_EQ(row.failedOpenLogged, tv->Logged("SetTvMode", kFailedOpen, 0, 4));
  }
}

TEST_F(UtilTvMode, ExistChannelCountsTheServicesOfTheNavigationList) {
  const std::string counted = "] in the Tvmode [antenna: 0, serviceMode: 1]";
  struct Row { const char* name; json services, fault; int count; bool failedOpenLogged; } rows[] = {
      {"two services", {Service(101), Service(102), Service(103, 1)}, nullptr, 2, false},
      {"services elsewhere only", {Service(103, 1), Service(104, 0, 2)}, nullptr, 0, false},
      {"not in the full navigation list", {Service(101, 0, 1, {{"navigation", {2}}})}, nullptr, 0, false},
      {"count fails", {Service(101)}, {{"op", "GetServiceCount"}, {"result", 0}}, -1, false},
      {"open fails", {Service(101)}, {{"op", "OpenNavigator"}, {"result", -1}}, -1, true},
      {"null navigator", {Service(101)}, {{"op", "OpenNavigator"}, {"null", true}}, -1, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    auto tv = Tv({{"services", row.services}}, row.fault);
    EXPECT_EQ(row.count > 0, Util::ExistChannelByTvMode(Mode(0, 1)));
    if (row.count >= 0) {
      EXPECT_TRUE(tv->Logged("ExistChannelByTvMode", "service count: [" + std::to_string(row.count) + counted, 0, 5));
    } else if (!row.failedOpenLogged) {
      EXPECT_TRUE(tv->AppMessages().empty());
    }
    EXPECT_EQ(row.failedOpenLogged, tv->Logged("ExistChannelByTvMode", kFailedOpen, 0, 4));
  }
}

TEST_F(UtilTvMode, ServiceModeFollowsTheCountryTableTheFeatureKeyAndFailures) {
  struct Row { std::string name; json settings; int expected; bool countryFailed, regionFailed; };
  std::vector<Row> rows = {
      {"feature on, country 1", {{"system_settings/57", 1}, {kSaAtvKey, true}}, 2, false, false},
      {"feature on, country 5", {{"system_settings/57", 5}, {kSaAtvKey, true}}, 2, false, false},
      {"feature on, country -1", {{"system_settings/57", -1}, {kSaAtvKey, true}}, -1, false, true},
      {"feature on, no country", {{kSaAtvKey, true}}, -1, true, true},
      {"no feature key", {{"system_settings/57", 2}}, -1, false, true},
  };
  const std::pair<int, int> countries[] = {
      {0, 0},  {2, 0},  {1, 21}, {36, 21}, {63, 21}, {75, 21}, {34, 2},  {64, 2},  {65, 2},  {67, 2},
      {69, 2}, {70, 2}, {74, 2}, {80, 2},  {85, 2},  {3, 1},   {33, 1},  {35, 1},  {66, 1},  {68, 1},
      {76, 1}, {79, 1}, {84, 1}, {86, 1},  {500, 1}, {-5, 1},  {-2, 1}};
  for (const auto& [country, expected] : countries) {
    rows.push_back({"country " + std::to_string(country), {{"system_settings/57", country}, {kSaAtvKey, false}},
                    expected, false, false});
  }
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Util::ResetCachesForTesting();
    auto tv = Tv({{"settings", row.settings}});
    EXPECT_EQ(row.expected, Util::GetServiceMode());
    EXPECT_EQ(row.countryFailed, tv->Logged("GetCountry", "Get Country failed.", 2, 5));
    EXPECT_EQ(row.regionFailed, tv->Logged("GetServiceMode", "get region or country failed", 2, 5));
  }
}

TEST_F(UtilTvMode, ServiceModeIsCachedOnlyAfterASuccessfulComputation) {
  auto tv = Tv({{"settings", {{"system_settings/57", -1}, {kSaAtvKey, false}}}});
  EXPECT_EQ(-1, Util::GetServiceMode());
  tv->Set("system_settings/57", "2");
  EXPECT_EQ(0, Util::GetServiceMode()) << "a failed computation must not be cached";
  tv->Set("system_settings/57", "3");
  tv->Set(kSaAtvKey, "true");
  tv->ClearLogs();
  EXPECT_EQ(0, Util::GetServiceMode()) << "a computed mode is kept for the process";
  EXPECT_TRUE(tv->AppMessages().empty());
  Util::ResetCachesForTesting();
  EXPECT_EQ(2, Util::GetServiceMode());
}

TEST_F(UtilTvMode, CountryAndRegionKindReadsReportFailure) {
  auto tv = Tv({{"settings", {{"system_settings/57", 36}, {"system_info/285", 7}}}});
  int country = -1;
  EXPECT_TRUE(Util::GetCountry(country));
  EXPECT_EQ(36, country);
  EXPECT_EQ(7, Util::GetRegionKind());
  EXPECT_TRUE(tv->Logged("GetRegionKind", "nRigionKind(7)", 0, 5));
  tv->AddFault({{"op", "system_settings_get_value_int"}, {"result", -1}});
  tv->AddFault({{"op", "system_info_get_value_int"}, {"result", -1}});
  country = 99;
  EXPECT_FALSE(Util::GetCountry(country));
  EXPECT_EQ(99, country);
  EXPECT_TRUE(tv->Logged("GetCountry", "Get Country failed.", 2, 5));
  EXPECT_EQ(0, Util::GetRegionKind());
  EXPECT_TRUE(tv->Logged("GetRegionKind", "nRigionKind(0)", 0, 5));
}

TEST_F(UtilTvMode, AntennaNamesComeFromTheMiddleware) {
  auto tv = Tv({{"antenna_names",
                 {{{"antenna", 0}, {"name", "Air"}}, {{"antenna", 2}, {"service", 5}, {"name", "Satellite 19.2E"}}}}});
  TvMode air = Mode(0, 21), satellite = Mode(2, 5);
  ServiceData unrelated;
  EXPECT_EQ("Air", Util::GetAntennaNameByMode(air));
  EXPECT_EQ("Satellite 19.2E", Util::GetAntennaName(unrelated, satellite));
  EXPECT_TRUE(tv->Logged("GetAntennaNameByMode", "antenna type 5 2", 0, 5)) << "service mode first";
}

}  // namespace
