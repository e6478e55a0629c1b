// Which tuning modes the antenna popup offers, in which order, on a simulated TV.
#include "UtilTestUtil.h"

namespace {

using namespace utiltest;
using UtilAntennaList = Fresh;
using Lines = std::vector<std::pair<std::string, int>>;  // message and buffer

// Country 1 gives the non-satellite antennas service mode 21; satellite is allowed.
json Scenario(std::pair<int, int> tuned, json services, json profiles = json::array(), json extra = json::object()) {
  json settings = {{"system_settings/57", 1}, {kSaAtvKey, false}, {kPip, 0}, {kConnection, true},
                   {"db/mls/mls_focus", 0}, {"memory/mls/state", 0}};
  settings.update(extra);
  return {{"tv_mode", {{"antenna", tuned.first}, {"service", tuned.second}}}, {"services", services},
          {"profiles", profiles}, {"settings", settings}};
}

std::string Text(const std::vector<TvMode>& list) {
  std::string text;
  for (const TvMode& m : list) text += "(" + std::to_string(m.antennaMode) + "," + std::to_string(m.serviceMode) + ")";
  return text;
}

std::string List(std::vector<TvMode> list = {}) {
  Util::GetAntennaList(list);
  return Text(list);
}

TEST_F(UtilAntennaList, OffersModesWithServicesInCandidateOrderThenNewProfiles) {
  auto tv = Tv(Scenario({0, 21},
                        {Service(201, 1, 21), Service(202, 0, 21), Service(203, 2, 52), Service(204, 2, 3),
                         Service(205, 2, 5), Service(206, 0, 1), Service(207, 2, 30), Service(208, 2, 20),
                         Service(209, 2, 19), Service(210, 2, 2)},
                        {Profile(1, 2, 30), Profile(2, 2, 20), Profile(3, 0, 21), Profile(4, 2, 20), Profile(5, 2, 19),
                         Profile(6, 1, 5)}));
  EXPECT_EQ("(0,21)(1,21)(2,3)(2,5)(2,30)(2,52)(2,20)(2,19)", List());
  // Two antennas, the 48 satellite service modes, and the three profiles not yet listed.
  EXPECT_EQ(53, tv->CallCount("GetServiceCount"));
}

TEST_F(UtilAntennaList, ListsTheCurrentModeWithoutServicesUnlessItIsNeverOffered) {
  const json withheld = {{kPip, 1}, {kConnection, false}};
  struct Row { const char* name; json scenario; const char* expected; bool satelliteWithheld; } rows[] = {
      {"antenna 1 current, nothing anywhere", Scenario({1, 21}, json::array()), "(1,21)", false},
      {"satellite current in its place", Scenario({2, 7}, {Service(1, 2, 9), Service(2, 2, 3)}), "(2,3)(2,7)(2,9)",
       false},
      {"satellite current but withheld",
       Scenario({2, 7}, {Service(1, 0, 21), Service(2, 2, 3)}, json::array(), withheld), "(0,21)", true},
      {"2, 19, 20, 21 never tried",
       Scenario({2, 19}, {Service(1, 2, 2), Service(2, 2, 19), Service(3, 2, 20), Service(4, 2, 21)}), "", false},
      {"current profile mode without services", Scenario({2, 20}, json::array(), {Profile(1, 2, 20)}), "", false},
      {"other service mode on antenna 0", Scenario({0, 1}, {Service(1, 1, 21)}), "(1,21)", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Util::ResetCachesForTesting();
    auto tv = Tv(row.scenario);
    EXPECT_EQ(row.expected, List());
    EXPECT_EQ(row.satelliteWithheld, tv->Logged("GetAntennaList", "din't support satellite Antenna mode", 0, 5));
  }
}

TEST_F(UtilAntennaList, SatelliteIsWithheldOnlyForPipOnASingleConnectionTunedToSatellite) {
  const json sat = {{"antenna", 2}, {"service", 5}}, air = {{"antenna", 0}, {"service", 21}};
  const json single = {{kPip, 1}, {kConnection, false}};
  auto with = [&](json extra) { json s = single; s.update(extra); return s; };
  // Settings keys absent from a row are missing on the TV.
  struct Row { const char* name; json screen0, screen1, settings, fault; bool supported; Lines lines; } rows[] = {
      {"pip on, single, satellite", sat, air, single, nullptr, false,
       {{"default mode, nFocusSlotID:[-2], nMLSState[-1]", 0}, {"the current Screen ID: [0]", 0}}},
      {"pip value 2", sat, air, with({{kPip, 2}}), nullptr, true, {}},
      {"pip off", sat, air, with({{kPip, 0}}), nullptr, true, {}},
      {"two connections", sat, air, with({{kConnection, true}}), nullptr, true, {}},
      {"screen on air", air, sat, single, nullptr, true, {}},
      {"multi-screen focus on screen 1", air, sat, with({{"db/mls/mls_focus", 2}, {"memory/mls/state", 1}}), nullptr,
       false, {{"mls mode, nFocusSlotID:[2], nMLSState[1]", 0}, {"the current Screen ID: [1]", 0}}},
      {"focus 2 without multi-screen", air, sat, with({{"db/mls/mls_focus", 2}, {"memory/mls/state", 0}}), nullptr,
       true, {{"default mode, nFocusSlotID:[2], nMLSState[0]", 0}, {"the current Screen ID: [0]", 0}}},
      {"pip unreadable", sat, air, {{kConnection, false}}, nullptr, true,
       {{"vconf get fails db/menu/picture/pip/onoff", 2}}},
      {"connection unreadable", sat, air, {{kPip, 1}}, nullptr, true,
       {{std::string("vconf get fails ") + kConnection, 2}}},
      {"navigator open fails", sat, air, single, {{"op", "OpenNavigator"}, {"result", -1}}, true,
       {{"Create Service Navigation failed", 2}}},
      {"null navigator", sat, air, single, {{"op", "OpenNavigator"}, {"null", true}}, true,
       {{"Create Service Navigation failed", 2}}},
      {"mode unreadable", sat, air, single, {{"op", "GetTvMode"}, {"result", -4}}, true,
       {{"get current tv mode Failed!!! ret = [-4]", 2}}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    json screen1 = row.screen1;
    screen1["screen"] = 1;
    auto tv = Tv({{"tv_mode", row.screen0}, {"screens", {screen1}}, {"settings", row.settings}}, row.fault);
    EXPECT_EQ(row.supported, Util::m_IsSupportSatelliteAntenna());
    for (const auto& [message, buffer] : row.lines)
      EXPECT_TRUE(tv->Logged("m_IsSupportSatelliteAntenna", message, buffer, 5)) << message;
  }
}

TEST_F(UtilAntennaList, FailuresKeepWhatIsListedAndNavigatorFailuresListNothing) {
  const char* const kModeFailed = "Navigator::GetTvMode failed.";
  // before: what the caller's list holds; a profile failure keeps the built-in entries.
  struct Row { const char* name; json fault; std::string before, expected; Lines lines; } rows[] = {
      {"no profile service", {{"op", "ProfileServiceInstance"}, {"null", true}}, "", "(0,21)(2,4)",
       {{"CaProfileService::ProfileServiceInstance() failed", 2}}},
      {"profiles unreadable", {{"op", "GetInstalledOperatorProfiles"}, {"result", 0}}, "", "(0,21)(2,4)",
       {{"CaProfileService::GetInstalledOperatorProfiles() failed", 2}}},
      {"open fails", {{"op", "OpenNavigator"}, {"result", -1}}, "(1,7)", "(1,7)", {{kFailedOpen, 0}}},
      {"null navigator", {{"op", "OpenNavigator"}, {"null", true}}, "(1,7)", "(1,7)", {{kFailedOpen, 0}}},
      {"mode read gives 2", {{"op", "GetTvMode"}, {"result", 2}}, "(1,7)", "(1,7)",
       {{kModeFailed, 2}, {"Assertion failed.", 2}}},
      {"mode read fails", {{"op", "GetTvMode"}, {"result", 0}}, "(1,7)", "(1,7)",
       {{kModeFailed, 2}, {"Assertion failed.", 2}}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    auto tv = Tv(Scenario({0, 21}, {Service(1, 0, 21), Service(2, 2, 4), Service(3, 2, 20)}, {Profile(1, 2, 20)}),
                 row.fault);
    EXPECT_EQ(row.expected, List(row.before.empty() ? std::vector<TvMode>{} : std::vector<TvMode>{Mode(1, 7)}));
    for (const auto& [message, buffer] : row.lines)
      EXPECT_TRUE(tv->Logged("GetAntennaList", message, buffer, buffer == 0 ? 4 : 5)) << message;
    if (!row.before.empty()) {
      EXPECT_EQ(0, tv->CallCount("GetServiceCount"));
    }
  }
}

TEST_F(UtilAntennaList, UsesTheCachedServiceModeAndFillsTheCache) {
  auto tv = Tv(Scenario({0, 21}, {Service(1, 0, 21), Service(2, 0, 1)}));
  EXPECT_EQ("(0,21)", List());
  tv->Set("system_settings/57", "3");  // would give service mode 1
  EXPECT_EQ(21, Util::GetServiceMode());
  EXPECT_EQ("(0,21)", List());
}

}  // namespace
