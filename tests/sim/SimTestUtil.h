// Helpers shared by the simulator's own tests.
#pragma once

#include <Ecore.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <functional>
#include <string>

namespace simtest {

// Runs the Ecore main loop until pred() holds or timeout_s passes; no sleeping.
inline bool PumpUntil(const std::function<bool()>& pred, double timeout_s) {
  const double deadline = ecore_time_get() + timeout_s;
  while (!pred()) {
    if (ecore_time_get() > deadline) return false;
    ecore_main_loop_iterate();
  }
  return true;
}

inline nlohmann::json ReadScenario(const std::string& name) {
  std::ifstream in(std::string(TV_SOURCE_DIR) + "/scenarios/" + name);
  return nlohmann::json::parse(in);
}

inline std::string Tvctl() { return std::string(TV_BINARY_DIR) + "/tools/tvctl"; }

// The calls of op in `tvctl show`'s call log.
inline nlohmann::json CallsOf(const nlohmann::json& shown, const std::string& op) {
  nlohmann::json calls = nlohmann::json::array();
  for (const auto& call : shown.at("calls")) {
    if (call.at("op") == op) calls.push_back(call);
  }
  return calls;
}

}  // namespace simtest
