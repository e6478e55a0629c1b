// Which tuning modes the antenna popup offers, in which order, on a simulated TV.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TempTv.h"
#include "Util.h"

using nlohmann::json;

namespace {

const char* const kPip = "db/menu/picture/pip/onoff";
const char* const kConnection = "db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType";

json Service(int id, int antenna, int service) {
  return {{"id", id}, {"antenna", antenna}, {"service", service}, {"major", id % 1000}, {"minor", 0},
          {"kind", 0}, {"name", "Service"}, {"navigation", {1}}};
}

json Profile(int id, int antenna, int service) {
  return {{"enabled", true}, {"profile_id", id}, {"operator_name", "Operator"}, {"operator_code", "OP"},
          {"antenna_modes", {2}}, {"tv_mode", {{"antenna", antenna}, {"service", service}}}, {"network_id", 1},
          {"satellite_id", 2}, {"visible", true}, {"priority", 0}, {"country", "X"}, {"language", "en"},
          {"logo_path", ""}, {"regional", false}, {"description", ""}};
}

// Country 1 gives the non-satellite antennas service mode 21; satellite is allowed.
json Tv(std::pair<int, int> tuned, json services, json profiles = json::array(), json extraSettings = json::object()) {
  json settings = {{"system_settings/57", 1},
                   {"com.velmora/featureconf/broadcasting.antenna_selection_util.service_mode_for_sa_atv", false},
                   {kPip, 0}, {kConnection, true}, {"db/mls/mls_focus", 0}, {"memory/mls/state", 0}};
  settings.update(extraSettings);
  return {{"tv_mode", {{"antenna", tuned.first}, {"service", tuned.second}}}, {"services", services},
          {"profiles", profiles}, {"settings", settings}};
}

std::string Text(const std::vector<TvMode>& list) {
  std::string text;
  for (const TvMode& mode : list)
    text += "(" + std::to_string(mode.antennaMode) + "," + std::to_string(mode.serviceMode) + ")";
  return text;
}

std::vector<TvMode> List() {
  std::vector<TvMode> list;
  Util::GetAntennaList(list);
  return list;
}

int CallCount(const tvtest::TempTv& tv, const std::string& op) {
  const json shown = tv.Show();  // the loop must not run over a destroyed temporary
  int count = 0;
  for (const json& call : shown["calls"]) count += call.value("op", "") == op;
  return count;
}

class UtilAntennaList : public ::testing::Test {
 protected:
  void SetUp() override { Util::ResetCachesForTesting(); }
};

TEST_F(UtilAntennaList, OffersModesWithServicesInCandidateOrderThenNewProfiles) {
  tvtest::TempTv tv;
  tv.Load(Tv({0, 21},
             {Service(201, 1, 21), Service(202, 0, 21), Service(203, 2, 52), Service(204, 2, 3), Service(205, 2, 5),
              Service(206, 0, 1), Service(207, 2, 30), Service(208, 2, 20), Service(209, 2, 19), Service(210, 2, 2)},
             {Profile(1, 2, 30), Profile(2, 2, 20), Profile(3, 0, 21), Profile(4, 2, 20), Profile(5, 2, 19),
              Profile(6, 1, 5)}));
  EXPECT_EQ("(0,21)(1,21)(2,3)(2,5)(2,30)(2,52)(2,20)(2,19)", Text(List()));
  // Two antennas, the 48 satellite service modes, and the three profiles not yet listed.
  EXPECT_EQ(53, CallCount(tv, "GetServiceCount"));
}

TEST_F(UtilAntennaList, ListsTheCurrentModeWithoutServicesUnlessItIsNeverOffered) {
  struct Row {
    const char* name;
    json scenario;
    const char* expected;
    bool satelliteWithheld;
  } rows[] = {
      {"antenna 1 current, nothing anywhere", Tv({1, 21}, json::array()), "(1,21)", false},
      {"satellite current in its place", Tv({2, 7}, {Service(1, 2, 9), Service(2, 2, 3)}), "(2,3)(2,7)(2,9)", false},
      {"satellite current but withheld", Tv({2, 7}, {Service(1, 0, 21), Service(2, 2, 3)}, json::array(),
                                            {{kPip, 1}, {kConnection, false}}),
       "(0,21)", true},
      {"2, 19, 20, 21 never tried", Tv({2, 19}, {Service(1, 2, 2), Service(2, 2, 19), Service(3, 2, 20),
                                                 Service(4, 2, 21)}),
       "", false},
      {"current profile mode without services", Tv({2, 20}, json::array(), {Profile(1, 2, 20)}), "", false},
      {"other service mode on antenna 0", Tv({0, 1}, {Service(1, 1, 21)}), "(1,21)", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Util::ResetCachesForTesting();
    tvtest::TempTv tv;
    tv.Load(row.scenario);
    EXPECT_EQ(row.expected, Text(List()));
    EXPECT_EQ(row.satelliteWithheld,
              tv.Logged("GetAntennaList", "din't support satellite Antenna mode", 0, 5));
  }
}

TEST_F(UtilAntennaList, SatelliteIsWithheldOnlyForPipOnASingleConnectionTunedToSatellite) {
  const json sat = {{"antenna", 2}, {"service", 5}};
  const json air = {{"antenna", 0}, {"service", 21}};
  struct Row {
    const char* name;
    json screen0, screen1;  // modes of the main screen and of screen 1
    json settings;          // keys absent here are missing on the TV
    json fault;
    bool supported;
    std::vector<std::pair<std::string, int>> lines;  // message and buffer (priority 5)
  } rows[] = {
      {"pip on, single, satellite", sat, air, {{kPip, 1}, {kConnection, false}}, nullptr, false,
       {{"default mode, nFocusSlotID:[-2], nMLSState[-1]", 0}, {"the current Screen ID: [0]", 0}}},
      {"pip value 2", sat, air, {{kPip, 2}, {kConnection, false}}, nullptr, true, {}},
      {"pip off", sat, air, {{kPip, 0}, {kConnection, false}}, nullptr, true, {}},
      {"two connections", sat, air, {{kPip, 1}, {kConnection, true}}, nullptr, true, {}},
      {"screen on air", air, sat, {{kPip, 1}, {kConnection, false}}, nullptr, true, {}},
      {"multi-screen focus on screen 1", air, sat,
       {{kPip, 1}, {kConnection, false}, {"db/mls/mls_focus", 2}, {"memory/mls/state", 1}}, nullptr, false,
       {{"mls mode, nFocusSlotID:[2], nMLSState[1]", 0}, {"the current Screen ID: [1]", 0}}},
      {"focus 2 without multi-screen", air, sat,
       {{kPip, 1}, {kConnection, false}, {"db/mls/mls_focus", 2}, {"memory/mls/state", 0}}, nullptr, true,
       {{"default mode, nFocusSlotID:[2], nMLSState[0]", 0}, {"the current Screen ID: [0]", 0}}},
      {"pip unreadable", sat, air, {{kConnection, false}}, nullptr, true,
       {{"vconf get fails db/menu/picture/pip/onoff", 2}}},
      {"connection unreadable", sat, air, {{kPip, 1}}, nullptr, true,
       {{std::string("vconf get fails ") + kConnection, 2}}},
      {"navigator open fails", sat, air, {{kPip, 1}, {kConnection, false}},
       {{"op", "OpenNavigator"}, {"result", -1}}, true, {{"Create Service Navigation failed", 2}}},
      {"null navigator", sat, air, {{kPip, 1}, {kConnection, false}}, {{"op", "OpenNavigator"}, {"null", true}},
       true, {{"Create Service Navigation failed", 2}}},
      {"mode unreadable", sat, air, {{kPip, 1}, {kConnection, false}}, {{"op", "GetTvMode"}, {"result", -4}}, true,
       {{"get current tv mode Failed!!! ret = [-4]", 2}}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    json screen1 = row.screen1;
    screen1["screen"] = 1;
    tv.Load({{"tv_mode", row.screen0}, {"screens", {screen1}}, {"settings", row.settings}});
    if (!row.fault.is_null()) tv.AddFault(row.fault);
    EXPECT_EQ(row.supported, Util::m_IsSupportSatelliteAntenna());
    for (const auto& [message, buffer] : row.lines)
      EXPECT_TRUE(tv.Logged("m_IsSupportSatelliteAntenna", message, buffer, 5)) << message;
  }
}

TEST_F(UtilAntennaList, ProfileServiceFailuresKeepTheBuiltInEntries) {
  struct Row {
    json fault;
    const char* line;
  } rows[] = {
      {{{"op", "ProfileServiceInstance"}, {"null", true}}, "CaProfileService::ProfileServiceInstance() failed"},
      {{{"op", "GetInstalledOperatorProfiles"}, {"result", 0}},
       "CaProfileService::GetInstalledOperatorProfiles() failed"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.line);
    tvtest::TempTv tv;
    tv.Load(Tv({0, 21}, {Service(1, 0, 21), Service(2, 2, 4), Service(3, 2, 20)}, {Profile(1, 2, 20)}));
    tv.AddFault(row.fault);
    EXPECT_EQ("(0,21)(2,4)", Text(List()));
    EXPECT_TRUE(tv.Logged("GetAntennaList", row.line, 2, 5));
  }
}

TEST_F(UtilAntennaList, NavigatorFailuresLeaveTheListAsItWas) {
  struct Row {
    const char* name;
    json fault;
    std::vector<std::pair<std::string, int>> lines;  // message and buffer
  } rows[] = {
      {"open fails", {{"op", "OpenNavigator"}, {"result", -1}},
       {{"ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &m_pNavigator) failed", 0}}},
      {"null navigator", {{"op", "OpenNavigator"}, {"null", true}},
       {{"ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &m_pNavigator) failed", 0}}},
      {"mode read gives 2", {{"op", "GetTvMode"}, {"result", 2}},
       {{"Navigator::GetTvMode failed.", 2}, {"Assertion failed.", 2}}},
      {"mode read fails", {{"op", "GetTvMode"}, {"result", 0}},
       {{"Navigator::GetTvMode failed.", 2}, {"Assertion failed.", 2}}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load(Tv({0, 21}, {Service(1, 0, 21), Service(2, 2, 4)}, {Profile(1, 2, 4)}));
    tv.AddFault(row.fault);
    std::vector<TvMode> list = {TvMode(ANTENNA_MODE_1, static_cast<ServiceMode>(7))};
    Util::GetAntennaList(list);
    EXPECT_EQ("(1,7)", Text(list));
    for (const auto& [message, buffer] : row.lines)
      EXPECT_TRUE(tv.Logged("GetAntennaList", message, buffer, buffer == 0 ? 4 : 5)) << message;
    EXPECT_EQ(0, CallCount(tv, "GetServiceCount"));
  }
}

TEST_F(UtilAntennaList, UsesTheCachedServiceModeAndFillsTheCache) {
  tvtest::TempTv tv;
  tv.Load(Tv({0, 21}, {Service(1, 0, 21), Service(2, 0, 1)}));
  EXPECT_EQ("(0,21)", Text(List()));
  tv.Set("system_settings/57", "3");  // would give service mode 1
  EXPECT_EQ(21, Util::GetServiceMode());
  EXPECT_EQ("(0,21)", Text(List()));
}

}  // namespace
