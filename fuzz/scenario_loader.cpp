// Any bytes as a scenario file: refused with a ScenarioError that leaves the
// database exactly as it was, or loaded whole; a loaded TV exported as a
// scenario loads again to the same state. Any other exception or crash is a
// finding.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include <nlohmann/json.hpp>

#include "Control.h"
#include "Errors.h"
#include "FuzzEnv.h"
#include "Scenario.h"
#include "ScenarioLoader.h"

namespace {

// Ranges past this many services are checked but not written: a 5,000,000
// service range is valid and would take the fuzzer minutes per input.
constexpr int64_t kMaxWrittenServices = 5000;

void Require(bool condition) {
  if (!condition) std::abort();
}

tvsim::Control* s_control = nullptr;
std::string s_file;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  const std::string& dir = fuzzenv::Prepare(true);
  s_control = new tvsim::Control(std::getenv("TVSIM_DB"));
  s_file = dir + "/scenario.json";
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::ofstream(s_file, std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(data), size);

  tvsim::Scenario scenario;
  try {
    scenario = tvsim::ParseScenario(tvsim::ReadScenarioFile(s_file));
  } catch (const tvsim::ScenarioError&) {
    const std::string before = s_control->Show(true).dump();
    try {
      s_control->LoadFile(s_file);
      std::abort();  // checked as refused, loaded all the same
    } catch (const tvsim::ScenarioError&) {
    }
    Require(s_control->Show(true).dump() == before);
    return 0;
  }
  int64_t services = static_cast<int64_t>(scenario.services.size());
  for (const auto& range : scenario.ranges) services += range.count;
  if (services > kMaxWrittenServices) return 0;

  s_control->LoadFile(s_file);
  const nlohmann::json exported = s_control->Show(true);
  s_control->Load(exported, "exported");
  Require(s_control->Show(true) == exported);
  return 0;
}
