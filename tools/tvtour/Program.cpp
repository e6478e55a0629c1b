#include "Program.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace tvtour {

double NowMs() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

Program::~Program() { Stop(); }

void Program::Start(const std::string& path, const std::vector<std::pair<std::string, std::string>>& env,
                    const std::string& folder, const std::string& probePath, const std::string& logPath) {
  if (access(path.c_str(), X_OK) != 0) throw std::runtime_error("cannot run " + path + ": " + strerror(errno));
  m_probe = Tail();
  m_probe.path = probePath;
  m_logFile = Tail();
  m_logFile.path = logPath;
  const std::string output = folder + "/app.output";
  const pid_t pid = fork();
  if (pid == 0) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    for (const auto& [name, value] : env) setenv(name.c_str(), value.c_str(), 1);
    // A test environment's buffer engine would draw nothing on the display.
    unsetenv("ELM_ENGINE");
    const int out = open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (out >= 0) {
      dup2(out, STDOUT_FILENO);
      dup2(out, STDERR_FILENO);
    }
    execl(path.c_str(), path.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  if (pid < 0) throw std::runtime_error("cannot fork: " + std::string(strerror(errno)));
  m_pid = pid;
  m_pidfd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
}

std::vector<std::string> Program::Tail::Read() {
  std::vector<std::string> lines;
  std::ifstream in(path, std::ios::binary);
  if (!in) return lines;
  in.seekg(static_cast<std::streamoff>(offset));
  std::string chunk((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  offset += chunk.size();
  partial += chunk;
  size_t start = 0;
  for (size_t end; (end = partial.find('\n', start)) != std::string::npos; start = end + 1) {
    lines.push_back(partial.substr(start, end - start));
  }
  partial.erase(0, start);
  return lines;
}

void Program::Update() {
  for (const std::string& line : m_probe.Read()) {
    std::istringstream in(line);
    std::string kind;
    long long ns = 0;
    in >> kind >> ns;
    if (kind == "frame") {
      Frame frame;
      frame.ms = static_cast<double>(ns) / 1e6;
      int shown = 0;
      in >> frame.row >> shown;
      frame.shown = shown != 0;
      // The text is the rest of the line after one space.
      std::string rest;
      std::getline(in, rest);
      frame.text = rest.empty() ? rest : rest.substr(1);
      m_frames.push_back(frame);
    } else if (kind == "key") {
      std::string name;
      in >> name;
      m_keys.push_back(name);
    }
  }
  for (const std::string& line : m_logFile.Read()) {
    tvsim::LogRecord record;
    if (tvsim::ParseLogLine(line, &record)) m_log.push_back(record);
  }
  if (m_pid > 0 && !m_ended) {
    int status = 0;
    if (waitpid(m_pid, &status, WNOHANG) == m_pid) {
      m_ended = true;
      m_endedMs = NowMs();
      m_status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
      // Lines written just before the end.
      Update();
    }
  }
}

std::string Program::HowEnded() const {
  if (!m_ended) return m_pid > 0 ? "still running" : "not started";
  if (m_status >= 0) return "ended with status " + std::to_string(m_status);
  return std::string("killed by signal ") + strsignal(-m_status);
}

void Program::Signal(int number) {
  if (Running()) kill(m_pid, number);
}

void Program::Stop() {
  if (Running()) {
    kill(m_pid, SIGTERM);
    const double deadline = NowMs() + 5000;
    while (!m_ended && NowMs() < deadline) {
      pollfd pfd{m_pidfd, POLLIN, 0};
      if (m_pidfd >= 0) {
        poll(&pfd, 1, 100);
      } else {
        poll(nullptr, 0, 10);
      }
      Update();
    }
    if (!m_ended) {
      kill(m_pid, SIGKILL);
      int status = 0;
      waitpid(m_pid, &status, 0);
      m_ended = true;
      m_endedMs = NowMs();
      m_status = -SIGKILL;
    }
  }
  if (m_pidfd >= 0) close(m_pidfd);
  m_pidfd = -1;
}

}  // namespace tvtour
