#include "TimeScale.h"

#include <cstdlib>

namespace tvsim {
namespace {

double ReadScale() {
  const char* text = std::getenv("TVSIM_TIME_SCALE");
  if (text == nullptr || *text == '\0') return 1.0;
  char* end = nullptr;
  const double value = std::strtod(text, &end);
  return (end != text && *end == '\0' && value > 0.0) ? value : 1.0;
}

// Negative until the variable was read; the main loop thread is the only reader.
double s_scale = -1.0;

}  // namespace

double TimeScale() {
  if (s_scale < 0.0) s_scale = ReadScale();
  return s_scale;
}

double Scaled(double seconds) { return seconds * TimeScale(); }

void ReloadTimeScaleForTesting() { s_scale = ReadScale(); }

}  // namespace tvsim
