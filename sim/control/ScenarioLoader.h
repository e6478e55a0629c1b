// Loads a scenario into the database: all or nothing. The scenario is checked in
// full first, then written in one transaction that replaces the TV's state,
// faults and records; a refused scenario leaves the database as it was.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

#include "ScenarioFile.h"
#include "Store.h"

namespace tvsim {

// source names the scenario in error messages (a file name).
void LoadScenario(Store& store, const nlohmann::json& document, const std::string& source);
// Reads (ReadScenarioFile) and loads a JSON file; a file that cannot be read or is not JSON is refused as well.
void LoadScenarioFile(Store& store, const std::string& path);

// Empties the TV: no state, no faults, no records.
void ClearTv(Store& store);  // inside the caller's transaction

}  // namespace tvsim
