#include "TimeScale.h"

#include <cstdio>
#include <cstdlib>

namespace tvsim {
namespace {

double ReadScale() {
  const char* text = std::getenv("TVSIM_TIME_SCALE");
  if (text == nullptr || *text == '\0') return 1.0;
  char* end = nullptr;
  const double value = std::strtod(text, &end);
  // Not above kMaxTimeScale: a scaled time-out must stay a time-out (1e308 or
  // inf made 30 s infinite, and such a timer fires at once).
  if (end != text && *end == '\0' && value > 0.0 && value <= kMaxTimeScale) return value;
  std::fprintf(stderr, "tvsim: TVSIM_TIME_SCALE=%s is not a number above 0 and at most %g; using 1\n", text,
               kMaxTimeScale);
  return 1.0;
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
