// Helpers shared by the Util tests: a fresh TV from a scenario and an optional
// fault, compact services and profiles, and the lines several functions share.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TempTv.h"
#include "Util.h"

namespace utiltest {

using nlohmann::json;

inline const char kFailedOpen[] = "ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &m_pNavigator) failed";
inline const char kSaAtvKey[] =
    "com.velmora/featureconf/broadcasting.antenna_selection_util.service_mode_for_sa_atv";
inline const char kPvrKey[] = "com.velmora/featureconf/pvr.pvr_support";
inline const char kPip[] = "db/menu/picture/pip/onoff";
inline const char kConnection[] = "db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType";

inline TvMode Mode(int antenna, int service) { return TvMode(AntennaMode(antenna), ServiceMode(service)); }

// A service in navigation list 1; `extra` overrides any member.
inline json Service(int id, int antenna = 0, int service = 1, const json& extra = json::object()) {
  json s = {{"id", id}, {"antenna", antenna}, {"service", service}, {"major", id % 1000}, {"minor", 0},
            {"kind", 0}, {"name", "Service"}, {"navigation", {1}}};
  s.update(extra);
  return s;
}

inline json Profile(int id, int antenna, int service) {
  return {{"enabled", true}, {"profile_id", id}, {"operator_name", "Operator"}, {"operator_code", "OP"},
          {"antenna_modes", {2}}, {"tv_mode", {{"antenna", antenna}, {"service", service}}}, {"network_id", 1},
          {"satellite_id", 2}, {"visible", true}, {"priority", 0}, {"country", "X"}, {"language", "en"},
          {"logo_path", ""}, {"regional", false}, {"description", ""}};
}

// A fresh TV holding `scenario`, with `fault` (when not null) armed.
inline std::unique_ptr<tvtest::TempTv> Tv(const json& scenario, const json& fault = nullptr) {
  auto tv = std::make_unique<tvtest::TempTv>();
  tv->Load(scenario);
  if (!fault.is_null()) tv->AddFault(fault);
  return tv;
}

// Every test starts with nothing cached from an earlier TV.
class Fresh : public ::testing::Test {
 protected:
  void SetUp() override { Util::ResetCachesForTesting(); }
};

}  // namespace utiltest
