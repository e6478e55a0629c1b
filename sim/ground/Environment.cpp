#include "Environment.h"

#include <pwd.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace tvsim {

namespace {

std::string StateDir() {
  const char* state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && *state == '/') return std::string(state) + "/tvsim";
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home == '\0') {
    const passwd* entry = getpwuid(getuid());
    home = entry ? entry->pw_dir : "/tmp";
  }
  return std::string(home) + "/.local/state/tvsim";
}

std::string FromEnvironment(const char* name, const char* file) {
  const char* value = std::getenv(name);
  if (value != nullptr && *value != '\0') return value;
  return StateDir() + "/" + file;
}

}  // namespace

std::string DatabasePath() { return FromEnvironment("TVSIM_DB", "tv.db"); }

std::string LogPath() { return FromEnvironment("TVSIM_LOG", "tv.log"); }

std::string NowText() {
  using namespace std::chrono;
  const auto now = system_clock::now();
  const auto ms = duration_cast<milliseconds>(now.time_since_epoch()).count();
  const std::time_t seconds = static_cast<std::time_t>(ms / 1000);
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", utc.tm_year + 1900, utc.tm_mon + 1,
                utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec, static_cast<int>(ms % 1000));
  return text;
}

}  // namespace tvsim
