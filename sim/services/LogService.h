// The platform log service: one line per __dlog_print call, appended to the file
// named by TVSIM_LOG (also to stderr with TVSIM_LOG_STDERR=1):
//   2026-11-23T08:45:40.123Z 12345 system W antenna-selection: Util.cpp: GetTvMode(57) > message
// The message's trailing newline is dropped; other newlines are written as \n
// and backslashes as \\, so that each call is exactly one line. A message
// longer than kMaxLogMessageBytes is cut (so that one long name from the TV
// cannot write megabytes to the log) and ends with " [cut N bytes]".
#pragma once

#include <cstddef>
#include <string>

namespace tvsim {

constexpr size_t kMaxLogMessageBytes = 1024;

struct LogRecord {
  std::string time;
  long pid = 0;
  int buffer = 0;    // 0 main, 1 radio, 2 system, 3 apps
  int priority = 0;  // 2 V, 3 D, 4 I, 5 W, 6 E, 7 F
  std::string tag;
  std::string message;  // unescaped, without the trailing newline
};

std::string FormatLogLine(const LogRecord& record);
// Parses one line (without its newline); false when it is not a log line.
bool ParseLogLine(const std::string& line, LogRecord* record);

}  // namespace tvsim
