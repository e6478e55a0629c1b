#include "TempTv.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>

#include "Control.h"
#include "Errors.h"
#include "LogService.h"
#include "Platform.h"

namespace tvtest {

namespace {

const char kAppTag[] = "antenna-selection";

// "Util.cpp: GetTvMode(57) > text": file, function, line, then the message.
const std::regex& PrefixPattern() {
  static const std::regex pattern(R"(^([^:]*): ([^(]*)\((\d+)\) > )");
  return pattern;
}

std::string Quote(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

}  // namespace

TempTv::TempTv() {
  const char* tmp = std::getenv("TMPDIR");
  std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/tvsim-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make a temporary folder");
  m_dir = pattern;
  m_db = m_dir + "/tv.db";
  m_log = m_dir + "/tv.log";
  setenv("TVSIM_DB", m_db.c_str(), 1);
  setenv("TVSIM_LOG", m_log.c_str(), 1);
  tvsim::ReopenPlatform();
  tvsim::Control(m_db).Reset();
}

TempTv::~TempTv() {
  tvsim::ReopenPlatform();
  std::error_code ignored;
  std::filesystem::remove_all(m_dir, ignored);
}

void TempTv::Load(const nlohmann::json& scenario) {
  try {
    tvsim::Control(m_db).Load(scenario, "scenario");
  } catch (const std::exception& e) {
    ADD_FAILURE() << "scenario refused: " << e.what();
  }
}

void TempTv::LoadFile(const std::string& name) {
  const std::string path = std::string(TV_SOURCE_DIR) + "/scenarios/" + name;
  try {
    tvsim::Control(m_db).LoadFile(path);
  } catch (const std::exception& e) {
    ADD_FAILURE() << "scenario refused: " << e.what();
  }
}

void TempTv::Set(const std::string& key, const std::string& value) { tvsim::Control(m_db).Set(key, value); }

void TempTv::Tune(int antenna, int service, int screen) { tvsim::Control(m_db).Tune(antenna, service, screen); }

void TempTv::AddFault(const nlohmann::json& fault) { tvsim::Control(m_db).AddFault(fault); }

void TempTv::ClearFaults() { tvsim::Control(m_db).ClearFaults(); }

nlohmann::json TempTv::Show() const { return tvsim::Control(m_db).Show(); }

int TempTv::CallCount(const std::string& op) const {
  const nlohmann::json shown = Show();
  int count = 0;
  for (const nlohmann::json& call : shown["calls"]) count += call.value("op", "") == op;
  return count;
}

bool TempTv::OnlyFaultFired() const {
  const nlohmann::json faults = Show()["faults"];
  return faults.size() == 1 && faults[0].value("calls", 0) > 0;
}

// Runs through sh with this TV's variables; only standard output is captured
// (add 2>&1 to the command line for both).
int TempTv::Run(const std::string& commandLine, std::string* output) const {
  const std::string command = "TVSIM_DB=" + Quote(m_db) + " TVSIM_LOG=" + Quote(m_log) + " " + commandLine;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return -1;
  std::string text;
  char buffer[4096];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) text.append(buffer, n);
  const int status = pclose(pipe);
  if (output) *output = text;
  return (status != -1 && WIFEXITED(status)) ? WEXITSTATUS(status) : -1;
}

std::vector<LogLine> TempTv::Logs() const {
  std::vector<LogLine> lines;
  std::ifstream in(m_log);
  std::string text;
  while (std::getline(in, text)) {
    tvsim::LogRecord record;
    if (!tvsim::ParseLogLine(text, &record)) continue;
    lines.push_back(LogLine{record.buffer, record.priority, record.tag, record.message});
  }
  return lines;
}

std::vector<std::string> TempTv::AppMessages() const {
  std::vector<std::string> messages;
  for (const LogLine& line : Logs()) {
    if (line.tag != kAppTag) continue;
    std::smatch match;
    messages.push_back(std::regex_search(line.message, match, PrefixPattern()) ? match.suffix().str()
                                                                                : line.message);
  }
  return messages;
}

bool TempTv::Logged(const std::string& function, const std::string& message, int buffer, int priority) const {
  for (const LogLine& line : Logs()) {
    if (line.tag != kAppTag || line.buffer != buffer || line.priority != priority) continue;
    std::smatch match;
    if (std::regex_search(line.message, match, PrefixPattern()) && match[2] == function &&
        match.suffix().str() == message) {
      return true;
    }
  }
  return false;
}

void TempTv::ClearLogs() { std::ofstream(m_log, std::ios::trunc); }

}  // namespace tvtest
