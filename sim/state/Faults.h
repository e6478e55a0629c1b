// Fault injection: faults live in the database so that tvctl can set them for a
// running application. Each matching call counts, so "nth" hits exactly one call.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Store.h"

namespace tvsim {

struct Fault {
  int64_t id = 0;
  std::string op;
  std::optional<std::string> target;  // absent: every call of op
  std::optional<int64_t> nth;         // absent: every matching call
  // The effect: exactly one of these.
  std::optional<int64_t> result;
  bool keepOutputs = false;  // with result: the call runs as usual, then answers result
  bool null = false;
  bool noTable = false;
  std::optional<int64_t> noAttribute;
  int64_t calls = 0;  // matching calls seen since the fault was set
};

// Checks a fault object of the scenario format; throws ScenarioError naming pointer.
Fault ParseFault(const nlohmann::json& value, const std::string& pointer);
nlohmann::json FaultToJson(const Fault& fault);

int64_t InsertFault(Store& store, const Fault& fault);  // inside the caller's transaction
std::vector<Fault> ListFaults(Store& store);

// Counts this call against every fault of op that targets it and returns the
// first fault that fires, if any. targets are the call's targets in text form.
// Within one held read of the store (Store::HoldReadsForPass) the operations that
// have faults are read once (a start makes some 200 port calls, and faults are
// rare): a fault another process sets applies from the next pass.
std::optional<Fault> TakeFault(Store& store, const std::string& op, const std::vector<std::string>& targets);

}  // namespace tvsim
