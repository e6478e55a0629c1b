// Reading a scenario file before anything is checked: only a regular file of
// at most kMaxScenarioBytes, parsed as strict JSON. What plain parsing lets
// through is refused with the file, the JSON pointer and the place in the text:
// a member given twice (the parser would keep the last one silently), a NUL
// inside a string, a number too big for any number type, arrays and objects
// nested deeper than kMaxScenarioDepth.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>

namespace tvsim {

constexpr int64_t kMaxScenarioBytes = 32 * 1024 * 1024;
// A scenario nests five deep; this many levels are refused before they are built.
constexpr size_t kMaxScenarioDepth = 64;

// Throws ScenarioError naming path (and the pointer where one applies).
nlohmann::json ReadScenarioFile(const std::string& path);

// The same checks on text already read; source names it in errors.
nlohmann::json ParseScenarioText(const std::string& text, const std::string& source);

}  // namespace tvsim
