// Channel numbers as the middleware formats them: a scenario's number format
// for the kind, with {major} and {minor} replaced. A number is at most five
// digits, shorter than either placeholder, so the text never outgrows its format.
// Input: kind (4 bytes), major (2), minor (2), antenna (1), service mode (1),
// then the format.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include <nlohmann/json.hpp>

#include "ChannelText.h"
#include "Control.h"
#include "Errors.h"
#include "FuzzEnv.h"

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

tvsim::Control* s_control = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  fuzzenv::Prepare(true);
  s_control = new tvsim::Control(std::getenv("TVSIM_DB"));
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 10) return 0;
  int32_t kind;
  uint16_t major, minor;
  std::memcpy(&kind, data, 4);
  std::memcpy(&major, data + 4, 2);
  std::memcpy(&minor, data + 6, 2);
  const TvMode mode(static_cast<AntennaMode>(data[8] % 4 - 1), static_cast<ServiceMode>(data[9]));
  const std::string format(reinterpret_cast<const char*>(data + 10), size - 10);

  bool hasFormat = true;
  try {
    s_control->Load({{"number_formats", {{std::to_string(kind), format}}}}, "fuzz");
  } catch (const tvsim::ScenarioError&) {
    hasFormat = false;  // not UTF-8: refused, so the kind has no format
    s_control->Reset();
  }
  const std::string text = ChannelText::GetChannelNumberString(mode, kind, major, minor);
  if (!hasFormat) {
    const std::string expected =
        std::to_string(major) + (minor == 0xFFFF ? std::string() : "-" + std::to_string(minor));
    Require(text == expected);
  } else {
    Require(text.size() <= format.size());
    if (format.find('{') == std::string::npos) Require(text == format);
  }
  return 0;
}
