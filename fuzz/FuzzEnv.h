// Where a fuzzer's simulated TV lives: a temporary folder of its own, removed
// at exit, and a log that goes nowhere (each port call would append a line).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace fuzzenv {

// Makes the folder once and points TVSIM_DB and TVSIM_LOG at it (the log at
// /dev/null). withDatabase false points TVSIM_DB at a path that cannot be
// opened, so pure conversions run without a database as well.
const std::string& Prepare(bool withDatabase);

// Splits data at zero bytes into at most max pieces; the last one takes the rest.
std::vector<std::string> Split(const uint8_t* data, size_t size, size_t max);

// True when text is well-formed UTF-8 (no overlongs, surrogates or values past U+10FFFF).
bool ValidUtf8(const std::string& text);

}  // namespace fuzzenv
