// Tuning mode, service counts, the country's service mode and antenna names,
// read from a simulated TV.
#include <gtest/gtest.h>

#include "TempTv.h"
#include "Util.h"

using nlohmann::json;

namespace {

const char* const kFailedOpen = "ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &m_pNavigator) failed";
const char* const kSaAtvKey = "com.velmora/featureconf/broadcasting.antenna_selection_util.service_mode_for_sa_atv";

json Service(int id, int antenna, int service, json navigation = {1}) {
  return {{"id", id}, {"antenna", antenna}, {"service", service}, {"major", id % 1000}, {"minor", 0},
          {"kind", 0}, {"name", "Service"}, {"navigation", navigation}};
}

class UtilTvMode : public ::testing::Test {
 protected:
  void SetUp() override { Util::ResetCachesForTesting(); }
};

TEST_F(UtilTvMode, ReadsTheCurrentModeOrGivesTheDefaultWithTheFailureLine) {
  struct Row {
    const char* name;
    json fault;
    TvMode expected;
    const char* message;  // expected line of GetTvMode, or null
    int buffer, priority;
  } rows[] = {
      {"tuned", nullptr, TvMode(ANTENNA_MODE_1, static_cast<ServiceMode>(21)), nullptr, 0, 0},
      {"open fails", {{"op", "OpenNavigator"}, {"result", -1}}, TvMode(), kFailedOpen, 0, 4},
      {"null navigator", {{"op", "OpenNavigator"}, {"null", true}}, TvMode(), kFailedOpen, 0, 4},
      {"read fails", {{"op", "GetTvMode"}, {"result", 0}}, TvMode(), "Get Current TV Mode failed.", 2, 5},
      {"read negative", {{"op", "GetTvMode"}, {"result", -3}}, TvMode(), "Get Current TV Mode failed.", 2, 5},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load({{"tv_mode", {{"antenna", 1}, {"service", 21}}}});
    if (!row.fault.is_null()) tv.AddFault(row.fault);
    const TvMode mode = Util::GetTvMode();
    EXPECT_EQ(row.expected.antennaMode, mode.antennaMode);
    EXPECT_EQ(row.expected.serviceMode, mode.serviceMode);
    if (row.message) {
      EXPECT_TRUE(tv.Logged("GetTvMode", row.message, row.buffer, row.priority));
    } else {
      EXPECT_TRUE(tv.AppMessages().empty());
    }
  }
}

TEST_F(UtilTvMode, ChangeAntennaSwitchesTheMainScreenAndLogsOnlySuccess) {
  struct Row {
    const char* name;
    json fault;
    bool switched;
    bool failedOpenLogged;
  } rows[] = {
      {"ok", nullptr, true, false},
      {"refused", {{"op", "SetTvMode"}, {"result", 0}}, false, false},
      {"open fails", {{"op", "OpenNavigator"}, {"result", 3}}, false, true},
      {"null navigator", {{"op", "OpenNavigator"}, {"null", true}}, false, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load({{"tv_mode", {{"antenna", 0}, {"service", 1}}}});
    if (!row.fault.is_null()) tv.AddFault(row.fault);
    Util::ChangeAntenna(TvMode(ANTENNA_MODE_SATELLITE, static_cast<ServiceMode>(5)));
    const json changes = tv.Show()["tuning_changes"];
    if (row.switched) {
      ASSERT_EQ(1u, changes.size());
      EXPECT_EQ(2, changes[0]["antenna"]);
      EXPECT_EQ(5, changes[0]["service"]);
      EXPECT_EQ(0, changes[0]["screen"]);
      EXPECT_EQ(json({{"antenna", 2}, {"service", 5}}), tv.Show()["tv_mode"]);
    } else {
      EXPECT_TRUE(changes.empty());
    }
    EXPECT_EQ(row.switched, tv.Logged("SetTvMode", "Set TV mode Sucess!", 0, 5));
    EXPECT_EQ(row.failedOpenLogged, tv.Logged("SetTvMode", kFailedOpen, 0, 4));
  }
}

TEST_F(UtilTvMode, ExistChannelCountsTheServicesOfTheNavigationList) {
  const TvMode air(ANTENNA_MODE_0, static_cast<ServiceMode>(1));
  struct Row {
    const char* name;
    json services;
    json fault;
    bool exists;
    const char* countLine;  // null when no count line may be written
    bool failedOpenLogged;
  } rows[] = {
      {"two services", {Service(101, 0, 1), Service(102, 0, 1), Service(103, 1, 1)}, nullptr, true,
       "service count: [2] in the Tvmode [antenna: 0, serviceMode: 1]", false},
      {"services elsewhere only", {Service(103, 1, 1), Service(104, 0, 2)}, nullptr, false,
       "service count: [0] in the Tvmode [antenna: 0, serviceMode: 1]", false},
      {"not in the full navigation list", {Service(101, 0, 1, {2})}, nullptr, false,
       "service count: [0] in the Tvmode [antenna: 0, serviceMode: 1]", false},
      {"count fails", {Service(101, 0, 1)}, {{"op", "GetServiceCount"}, {"result", 0}}, false, nullptr, false},
      {"open fails", {Service(101, 0, 1)}, {{"op", "OpenNavigator"}, {"result", -1}}, false, nullptr, true},
      {"null navigator", {Service(101, 0, 1)}, {{"op", "OpenNavigator"}, {"null", true}}, false, nullptr, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load({{"services", row.services}});
    if (!row.fault.is_null()) tv.AddFault(row.fault);
    EXPECT_EQ(row.exists, Util::ExistChannelByTvMode(air));
    if (row.countLine) {
      EXPECT_TRUE(tv.Logged("ExistChannelByTvMode", row.countLine, 0, 5));
    }
    EXPECT_EQ(row.failedOpenLogged, tv.Logged("ExistChannelByTvMode", kFailedOpen, 0, 4));
    if (!row.countLine && !row.failedOpenLogged) {
      EXPECT_TRUE(tv.AppMessages().empty());
    }
  }
}

TEST_F(UtilTvMode, ServiceModeFollowsTheCountryTable) {
  struct Row {
    int country;
    int expected;
  } rows[] = {{0, 0},   {2, 0},   {1, 21},  {36, 21}, {63, 21}, {75, 21}, {34, 2},  {64, 2},  {65, 2},
              {67, 2},  {69, 2},  {70, 2},  {74, 2},  {80, 2},  {85, 2},  {3, 1},   {33, 1},  {35, 1},
              {66, 1},  {68, 1},  {76, 1},  {79, 1},  {84, 1},  {86, 1},  {500, 1}, {-5, 1},  {-2, 1}};
  for (const Row& row : rows) {
    SCOPED_TRACE("country " + std::to_string(row.country));
    Util::ResetCachesForTesting();
    tvtest::TempTv tv;
    tv.Load({{"settings", {{"system_settings/57", row.country}, {kSaAtvKey, false}}}});
    EXPECT_EQ(row.expected, Util::GetServiceMode());
  }
}

TEST_F(UtilTvMode, ServiceModeFeatureKeyAndUnknownCountry) {
  struct Row {
    const char* name;
    json settings;
    int expected;
    bool countryFailedLogged;
    bool regionFailedLogged;
  } rows[] = {
      {"feature on, country 1", {{"system_settings/57", 1}, {kSaAtvKey, true}}, 2, false, false},
      {"feature on, country 5", {{"system_settings/57", 5}, {kSaAtvKey, true}}, 2, false, false},
      {"feature on, country -1", {{"system_settings/57", -1}, {kSaAtvKey, true}}, -1, false, true},
      {"feature on, no country", {{kSaAtvKey, true}}, -1, true, true},
      {"no feature key", {{"system_settings/57", 2}}, -1, false, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Util::ResetCachesForTesting();
    tvtest::TempTv tv;
    tv.Load({{"settings", row.settings}});
    EXPECT_EQ(row.expected, Util::GetServiceMode());
    EXPECT_EQ(row.countryFailedLogged, tv.Logged("GetCountry", "Get Country failed.", 2, 5));
    EXPECT_EQ(row.regionFailedLogged, tv.Logged("GetServiceMode", "get region or country failed", 2, 5));
  }
}

TEST_F(UtilTvMode, ServiceModeIsCachedOnlyAfterASuccessfulComputation) {
  tvtest::TempTv tv;
  tv.Load({{"settings", {{"system_settings/57", -1}, {kSaAtvKey, false}}}});
  EXPECT_EQ(-1, Util::GetServiceMode());
  tv.Set("system_settings/57", "2");
  EXPECT_EQ(0, Util::GetServiceMode()) << "a failed computation must not be cached";
  tv.Set("system_settings/57", "3");
  tv.Set(kSaAtvKey, "true");
  tv.ClearLogs();
  EXPECT_EQ(0, Util::GetServiceMode()) << "a computed mode is kept for the process";
  EXPECT_TRUE(tv.AppMessages().empty());
  Util::ResetCachesForTesting();
  EXPECT_EQ(2, Util::GetServiceMode());
}

TEST_F(UtilTvMode, CountryAndRegionKindReadsReportFailure) {
  tvtest::TempTv tv;
  tv.Load({{"settings", {{"system_settings/57", 36}, {"system_info/285", 7}}}});
  int country = -1;
  EXPECT_TRUE(Util::GetCountry(country));
  EXPECT_EQ(36, country);
  EXPECT_EQ(7, Util::GetRegionKind());
  EXPECT_TRUE(tv.Logged("GetRegionKind", "nRigionKind(7)", 0, 5));

  tv.AddFault({{"op", "system_settings_get_value_int"}, {"result", -1}});
  tv.AddFault({{"op", "system_info_get_value_int"}, {"result", -1}});
  tv.ClearLogs();
  country = 99;
  EXPECT_FALSE(Util::GetCountry(country));
  EXPECT_EQ(99, country);
  EXPECT_TRUE(tv.Logged("GetCountry", "Get Country failed.", 2, 5));
  EXPECT_EQ(0, Util::GetRegionKind());
  EXPECT_TRUE(tv.Logged("GetRegionKind", "nRigionKind(0)", 0, 5));
}

TEST_F(UtilTvMode, AntennaNamesComeFromTheMiddleware) {
  tvtest::TempTv tv;
  tv.Load({{"antenna_names",
            {{{"antenna", 0}, {"name", "Air"}}, {{"antenna", 2}, {"service", 5}, {"name", "Satellite 19.2E"}}}}});
  TvMode air(ANTENNA_MODE_0, static_cast<ServiceMode>(21));
  TvMode satellite(ANTENNA_MODE_SATELLITE, static_cast<ServiceMode>(5));
  ServiceData unrelated;
  EXPECT_EQ("Air", Util::GetAntennaNameByMode(air));
  EXPECT_EQ("Satellite 19.2E", Util::GetAntennaNameByMode(satellite));
  EXPECT_EQ("Satellite 19.2E", Util::GetAntennaName(unrelated, satellite));
  EXPECT_TRUE(tv.Logged("GetAntennaNameByMode", "antenna type 5 2", 0, 5)) << "service mode first";
}

}  // namespace
