// The installed conditional-access operator profiles, kept as the scenario's
// JSON objects in load order.
#include "CaProfileService.h"
#include "PortCall.h"
#include "TextCodec.h"

namespace {

using nlohmann::json;
using tvsim::PortContext;

OperatorProfile FromJson(const json& p) {
  OperatorProfile profile;
  profile.bEnabled = p.at("enabled").get<bool>() ? 1 : 0;
  profile.nProfileId = p.at("profile_id").get<int32_t>();
  tvsim::Utf8ToUtf16BigEndian(p.at("operator_name").get<std::string>(), &profile.strOperatorName);
  profile.strOperatorCode = p.at("operator_code").get<std::string>();
  for (const auto& antenna : p.at("antenna_modes")) {
    profile.setAntennaModes.insert(static_cast<AntennaMode>(antenna.get<int32_t>()));
  }
  profile.tvMode = TvMode(static_cast<AntennaMode>(p.at("tv_mode").at("antenna").get<int32_t>()),
                          static_cast<ServiceMode>(p.at("tv_mode").at("service").get<int32_t>()));
  profile.nNetworkId = p.at("network_id").get<int32_t>();
  profile.nSatelliteId = p.at("satellite_id").get<int32_t>();
  profile.bVisible = p.at("visible").get<bool>() ? 1 : 0;
  profile.nPriority = p.at("priority").get<int32_t>();
  profile.strCountry = p.at("country").get<std::string>();
  profile.strLanguage = p.at("language").get<std::string>();
  profile.strLogoPath = p.at("logo_path").get<std::string>();
  profile.bRegional = p.at("regional").get<bool>() ? 1 : 0;
  profile.strDescription = p.at("description").get<std::string>();
  return profile;
}

std::vector<json> InstalledProfiles(tvsim::Store& store) {
  std::vector<json> profiles;
  for (auto s = store.Prepare("SELECT data FROM profiles ORDER BY position"); s.Step();) {
    profiles.push_back(json::parse(s.Text(0)));
  }
  return profiles;
}

class DatabaseProfileService : public CaProfileService {
 public:
  bool GetInstalledOperatorProfiles(std::list<OperatorProfile>& profiles, int reserved) override {
    std::vector<std::string> targets;
    std::vector<json> installed;
    try {
      // A fault may target one profile: the call's targets are the installed profiles' ids.
      if (tvsim::Store* store = tvsim::PlatformStore()) installed = InstalledProfiles(*store);
      for (const json& p : installed) targets.push_back(std::to_string(p.at("profile_id").get<int32_t>()));
    } catch (const std::exception& e) {
      tvsim::ReportPortError("GetInstalledOperatorProfiles", e.what());
      return false;
    }
    return tvsim::RunPort<bool>("GetInstalledOperatorProfiles", {{"reserved", reserved}}, targets, false,
                                [&](PortContext& c) {
                                  std::list<OperatorProfile> filled;
                                  json ids = json::array();
                                  for (const json& p : installed) {
                                    filled.push_back(FromJson(p));
                                    ids.push_back(p.at("profile_id"));
                                  }
                                  c.out["profile_ids"] = ids;
                                  profiles.splice(profiles.end(), filled);
                                  return true;
                                });
  }
};

}  // namespace

CaProfileService* CaProfileService::ProfileServiceInstance() {
  return tvsim::RunPort<CaProfileService*>("ProfileServiceInstance", json::object(), {}, nullptr,
                                           [&](PortContext& c) -> CaProfileService* {
                                             static auto* service = new DatabaseProfileService();
                                             return (c.fault && c.fault->null) ? nullptr : service;
                                           });
}
