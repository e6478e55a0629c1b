#include "Scale.h"

namespace bench {

namespace {

const int kSatelliteModes = 52;
const int kProfiles = 20;
const int kSatellite = 2;
const int kTunedMode = 30;

nlohmann::json Profile(int n, int serviceMode) {
  return {{"enabled", true},
          {"profile_id", 1000 + n},
          {"operator_name", "Operator " + std::to_string(n)},
          {"operator_code", "OP" + std::to_string(n)},
          {"antenna_modes", {kSatellite}},
          {"tv_mode", {{"antenna", kSatellite}, {"service", serviceMode}}},
          {"network_id", 2000 + n},
          {"satellite_id", n},
          {"visible", true},
          {"priority", n},
          {"country", "DEU"},
          {"language", "deu"},
          {"logo_path", "/opt/logos/operator" + std::to_string(n) + ".png"},
          {"regional", false},
          {"description", "Operator package " + std::to_string(n)}};
}

}  // namespace

nlohmann::json LargeTv(const nlohmann::json& sample, int servicesPerMode) {
  nlohmann::json tv;
  tv["tv_mode"] = {{"antenna", kSatellite}, {"service", kTunedMode}};
  tv["number_formats"] = sample.at("number_formats");
  tv["settings"] = sample.at("settings");
  nlohmann::json names = {{{"antenna", 0}, {"name", "Air"}}, {{"antenna", 1}, {"name", "Cable"}}};
  nlohmann::json ranges = nlohmann::json::array();
  int64_t firstId = 1;
  for (int antenna = 0; antenna <= 1; ++antenna) {
    ranges.push_back({{"antenna", antenna}, {"service", 21}, {"first_id", firstId}, {"count", 100},
                      {"name", "Terrestrial {n}"}});
    firstId += 100;
  }
  for (int mode = 1; mode <= kSatelliteModes; ++mode) {
    names.push_back({{"antenna", kSatellite}, {"service", mode}, {"name", "Satellite " + std::to_string(mode)}});
    ranges.push_back({{"antenna", kSatellite}, {"service", mode}, {"first_id", firstId}, {"count", servicesPerMode},
                      {"name", "Sat " + std::to_string(mode) + "-{n}"}, {"programme", "Programme {n}"}});
    firstId += servicesPerMode;
  }
  tv["antenna_names"] = names;
  tv["service_ranges"] = ranges;
  // The first four are modes only a profile can offer; the others repeat listed ones.
  nlohmann::json profiles = nlohmann::json::array();
  const int own[] = {2, 19, 20, 21};
  for (int n = 0; n < kProfiles; ++n) profiles.push_back(Profile(n, n < 4 ? own[n] : 2 * n + 1));
  tv["profiles"] = profiles;
  return tv;
}

}  // namespace bench
