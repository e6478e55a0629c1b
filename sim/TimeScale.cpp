#include "TimeScale.h"

#include <cstdlib>

namespace tvsim {

double TimeScale() {
  static const double scale = [] {
    const char* text = std::getenv("TVSIM_TIME_SCALE");
    if (text == nullptr || *text == '\0') return 1.0;
    char* end = nullptr;
    const double value = std::strtod(text, &end);
    return (end != text && *end == '\0' && value > 0.0) ? value : 1.0;
  }();
  return scale;
}

double Scaled(double seconds) { return seconds * TimeScale(); }

}  // namespace tvsim
