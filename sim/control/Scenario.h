// A scenario checked in full before anything is written: the whole state of a
// simulated TV as docs/scenarios.md describes it.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Faults.h"
#include "RecorderConfig.h"
#include "ServiceTable.h"
#include "SettingsTable.h"
#include "TvMode.h"

namespace tvsim {

struct AntennaName {
  int antenna = 0;
  std::optional<int> service;  // absent: every service mode of the antenna
  std::string name;
};

// Many services of one mode from one line: ids first_id.., majors first_major..
struct ServiceRange {
  int antenna = 0;
  int service = 0;
  uint64_t firstId = 0;
  int64_t count = 0;
  int64_t firstMajor = 1;
  std::optional<int64_t> minor;
  std::optional<int64_t> kind;
  std::string name = "Service {n}";  // {n}: 1-based position in the range, {major}: its number
  int64_t navigation = 2;            // navigation mode 1
  std::optional<std::string> programme;

  ServiceRow Row(int64_t index) const;
};

// A channel-number format for one tuning mode (or every service mode of an
// antenna) and number kind; it wins over the kind's general format.
struct ModeNumberFormat {
  int antenna = 0;
  std::optional<int> service;
  int64_t kind = 0;
  std::string format;
};

struct Scenario {
  TvMode tvMode;
  bool hasTvMode = false;
  std::vector<std::pair<int, TvMode>> screens;
  std::vector<AntennaName> antennaNames;
  std::map<int64_t, std::string> numberFormats;
  std::vector<ModeNumberFormat> modeNumberFormats;
  std::vector<ServiceRow> services;
  std::vector<ServiceRange> ranges;
  std::vector<nlohmann::json> profiles;
  std::vector<std::pair<std::string, SettingValue>> settings;
  std::vector<uint64_t> recordings;
  int64_t playing = 0;
  StopReport stopReport;
  std::vector<Fault> faults;
};

// Checks everything; throws ScenarioError naming the JSON pointer and the problem
// (its file left empty for the caller to fill in).
Scenario ParseScenario(const nlohmann::json& document);

// Navigation modes as a mask (bit n for mode n) and back.
nlohmann::json NavigationModes(int64_t mask);

}  // namespace tvsim
