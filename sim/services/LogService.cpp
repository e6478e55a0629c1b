#include "LogService.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <sstream>
#include <vector>

#include "Environment.h"
#include "Log.h"

namespace tvsim {

namespace {

const char* const kBuffers[] = {"main", "radio", "system", "apps"};
const char kPriorities[] = "??VDIWEF";

std::string BufferName(int buffer) {
  return (buffer >= 0 && buffer < 4) ? kBuffers[buffer] : std::to_string(buffer);
}

char PriorityLetter(int priority) { return (priority >= 2 && priority <= 7) ? kPriorities[priority] : '?'; }

std::string Escape(const std::string& message) {
  std::string text = message;
  if (!text.empty() && text.back() == '\n') text.pop_back();
  if (text.size() > kMaxLogMessageBytes) {
    // Never inside a UTF-8 character: back up over its continuation bytes.
    size_t cut = kMaxLogMessageBytes;
    while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
    const size_t dropped = text.size() - cut;
    text.erase(cut);
    text += " [cut " + std::to_string(dropped) + " bytes]";
  }
  std::string escaped;
  escaped.reserve(text.size());
  for (char c : text) {
    if (c == '\\') {
      escaped += "\\\\";
    } else if (c == '\n') {
      escaped += "\\n";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string Unescape(const std::string& text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == 'n' || text[i + 1] == '\\')) {
      plain += text[i + 1] == 'n' ? '\n' : '\\';
      ++i;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

void MakeParents(const std::string& path) {
  for (size_t pos = path.find('/', 1); pos != std::string::npos; pos = path.find('/', pos + 1)) {
    mkdir(path.substr(0, pos).c_str(), 0755);
  }
}

// The open log file; reopened when TVSIM_LOG names another file.
struct LogFile {
  std::mutex mutex;
  std::string path;
  int fd = -1;
};

LogFile& File() {
  static auto* file = new LogFile();
  return *file;
}

void WriteLine(const std::string& line) {
  LogFile& file = File();
  std::lock_guard<std::mutex> lock(file.mutex);
  const std::string path = LogPath();
  if (path != file.path || file.fd < 0) {
    if (file.fd >= 0) close(file.fd);
    MakeParents(path);
    file.fd = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    file.path = path;
  }
  if (file.fd >= 0) {
    // One write per line: with O_APPEND, lines of several processes never interleave.
    ssize_t rc;
    do {
      rc = write(file.fd, line.data(), line.size());
    } while (rc < 0 && errno == EINTR);
  }
  const char* toStderr = std::getenv("TVSIM_LOG_STDERR");
  if (toStderr != nullptr && std::strcmp(toStderr, "1") == 0) {
    fwrite(line.data(), 1, line.size(), stderr);
  }
}

}  // namespace

std::string FormatLogLine(const LogRecord& record) {
  std::string line = record.time + " " + std::to_string(record.pid) + " " + BufferName(record.buffer) + " " +
                     PriorityLetter(record.priority) + " " + record.tag + ": " + Escape(record.message);
  return line;
}

bool ParseLogLine(const std::string& line, LogRecord* record) {
  std::istringstream in(line);
  std::string time, pid, buffer, priority;
  if (!(in >> time >> pid >> buffer >> priority) || priority.size() != 1) return false;
  std::string rest;
  std::getline(in, rest);
  if (rest.empty() || rest[0] != ' ') return false;
  rest.erase(0, 1);
  const size_t colon = rest.find(": ");
  if (colon == std::string::npos) return false;
  LogRecord parsed;
  parsed.time = time;
  parsed.pid = std::strtol(pid.c_str(), nullptr, 10);
  parsed.buffer = -1;
  for (int i = 0; i < 4; ++i) {
    if (buffer == kBuffers[i]) parsed.buffer = i;
  }
  if (parsed.buffer < 0) parsed.buffer = std::atoi(buffer.c_str());
  parsed.priority = 0;
  for (int p = 2; p <= 7; ++p) {
    if (kPriorities[p] == priority[0]) parsed.priority = p;
  }
  parsed.tag = rest.substr(0, colon);
  parsed.message = Unescape(rest.substr(colon + 2));
  *record = parsed;
  return true;
}

}  // namespace tvsim

extern "C" int __dlog_print(log_id_t log_id, int prio, const char* tag, const char* fmt, ...) {
  if (fmt == nullptr) return -1;
  va_list args;
  va_start(args, fmt);
  va_list copy;
  va_copy(copy, args);
  const int size = std::vsnprintf(nullptr, 0, fmt, copy);
  va_end(copy);
  if (size < 0) {
    va_end(args);
    return -1;
  }
  std::vector<char> message(static_cast<size_t>(size) + 1);
  std::vsnprintf(message.data(), message.size(), fmt, args);
  va_end(args);

  tvsim::LogRecord record;
  record.time = tvsim::NowText();
  record.pid = static_cast<long>(getpid());
  record.buffer = static_cast<int>(log_id);
  record.priority = prio;
  record.tag = tag ? tag : "";
  record.message.assign(message.data(), static_cast<size_t>(size));
  const std::string line = tvsim::FormatLogLine(record) + "\n";
  tvsim::WriteLine(line);
  return static_cast<int>(line.size());
}
