// The TV's state as JSON: what `tvctl show` prints.
#pragma once

#include <nlohmann/json.hpp>

#include "Store.h"

namespace tvsim {

// The state in the scenario format (loadable again), with "tv_mode" always
// present; faults carry their id and count of matching calls unless asScenario.
nlohmann::json ExportState(Store& store, bool asScenario);

}  // namespace tvsim
