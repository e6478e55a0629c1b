// The large TVs of the benchmark, made on the fly from the sample TV's settings.
#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace bench {

// 52 satellite service modes of servicesPerMode services each (service ranges),
// 20 operator profiles, a few services on the two other antennas, and the TV
// tuned to a satellite mode in the middle of the list.
nlohmann::json LargeTv(const nlohmann::json& sample, int servicesPerMode);

}  // namespace bench
