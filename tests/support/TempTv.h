// A fresh simulated TV for one test: its own SQLite file and log file in a
// temporary folder, used by the in-process platform (the port functions) and
// by tvctl when started with TVSIM_DB/TVSIM_LOG from this object.
#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace tvtest {

struct LogLine {
  int buffer = 0;       // 0 main, 2 system
  int priority = 0;     // 4 info, 5 warning
  std::string tag;      // "antenna-selection" for the application's lines
  std::string message;  // "Util.cpp: GetTvMode(57) > Get Current TV Mode failed." (no trailing newline)
};

class TempTv {
 public:
  TempTv();  // an empty TV: no services, mode (-1, -1), default settings
  ~TempTv();
  TempTv(const TempTv&) = delete;
  TempTv& operator=(const TempTv&) = delete;

  // Replaces the whole state with a scenario (the JSON of docs/scenarios.md);
  // a refused scenario fails the test.
  void Load(const nlohmann::json& scenario);
  // A file of scenarios/ by its name, e.g. "sample.json".
  void LoadFile(const std::string& name);

  // tvctl's verbs, in process.
  void Set(const std::string& key, const std::string& value);
  void Tune(int antenna, int service, int screen = 0);
  void AddFault(const nlohmann::json& fault);  // the fault object of docs/scenarios.md
  void ClearFaults();
  nlohmann::json Show() const;                 // what `tvctl show` prints
  int CallCount(const std::string& op) const;  // calls of op in Show()'s call log
  // True when exactly one fault is set and it has hit a call: a fault that
  // never fired proves nothing about its failure.
  bool OnlyFaultFired() const;

  // Runs a command line (e.g. tvctl) with this TV's TVSIM_DB and TVSIM_LOG; returns the exit status.
  int Run(const std::string& commandLine, std::string* output = nullptr) const;

  // The log lines written since this TV was made (all tags).
  std::vector<LogLine> Logs() const;
  // Messages of the application's own lines, prefix "file: function(line) > " removed.
  std::vector<std::string> AppMessages() const;
  // True when some application line from `function` has exactly this message
  // (after the prefix, without trailing newline), buffer and priority.
  bool Logged(const std::string& function, const std::string& message, int buffer, int priority) const;
  void ClearLogs();

  const std::string& DbPath() const { return m_db; }
  const std::string& LogPath() const { return m_log; }
  const std::string& Dir() const { return m_dir; }

 private:
  std::string m_dir, m_db, m_log;
};

}  // namespace tvtest
