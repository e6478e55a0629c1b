// The application under tour: one process started with its own TV, what its
// frame probe says it drew, what it logged, and how it ended.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

#include "LogService.h"

namespace tvtour {

double NowMs();  // CLOCK_MONOTONIC, the frame probe's clock

struct Frame {
  double ms = 0;  // when it was drawn
  int row = 0;    // focused row, 1-based, 0 none
  bool shown = false;
  std::string text;  // the focused row's text or the focused button's label
};

class Program {
 public:
  Program() = default;
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  // Starts path with env added to ours; its output goes to folder/app.output.
  // Throws std::runtime_error when it cannot be started.
  void Start(const std::string& path, const std::vector<std::pair<std::string, std::string>>& env,
             const std::string& folder, const std::string& probePath, const std::string& logPath);

  pid_t Pid() const { return m_pid; }
  int Fd() const { return m_pidfd; }  // readable once it ended
  // Reads what came since the last call: frames, keys, log lines, the end.
  void Update();

  bool Running() const { return m_pid > 0 && !m_ended; }
  bool Ended() const { return m_ended; }
  double EndedMs() const { return m_endedMs; }
  // The exit status, or minus the signal that ended it.
  int ExitStatus() const { return m_status; }
  std::string HowEnded() const;

  const std::vector<Frame>& Frames() const { return m_frames; }
  const std::vector<tvsim::LogRecord>& Log() const { return m_log; }
  const std::vector<std::string>& KeysSeen() const { return m_keys; }

  void Signal(int number);
  // Ends it if it still runs: SIGTERM, then SIGKILL after a while.
  void Stop();

 private:
  // Whole lines appended to a file since the last read.
  struct Tail {
    std::string path;
    size_t offset = 0;
    std::string partial;
    std::vector<std::string> Read();
  };

  pid_t m_pid = -1;
  int m_pidfd = -1;
  bool m_ended = false;
  double m_endedMs = 0;
  int m_status = 0;
  Tail m_probe, m_logFile;
  std::vector<Frame> m_frames;
  std::vector<std::string> m_keys;
  std::vector<tvsim::LogRecord> m_log;
};

}  // namespace tvtour
