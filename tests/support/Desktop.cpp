#include "Desktop.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "TempTv.h"

extern char** environ;

namespace tvtest {

namespace {

// Waits for a child given by its pidfd; its wait status, or -1 on time-out.
int Reap(pid_t pid, int pidfd, double timeoutSeconds) {
  pollfd ready = {pidfd, POLLIN, 0};
  if (poll(&ready, 1, static_cast<int>(timeoutSeconds * 1000)) != 1) return -1;
  int status = 0;
  return waitpid(pid, &status, 0) == pid ? status : -1;
}

pid_t Spawn(const std::vector<std::string>& argv, const std::vector<std::string>& env, posix_spawn_file_actions_t* io) {
  std::vector<char*> args, vars;
  for (const std::string& a : argv) args.push_back(const_cast<char*>(a.c_str()));
  for (const std::string& v : env) vars.push_back(const_cast<char*>(v.c_str()));
  args.push_back(nullptr);
  vars.push_back(nullptr);
  pid_t pid = -1;
  return posix_spawnp(&pid, args[0], io, nullptr, args.data(), vars.data()) == 0 ? pid : -1;
}

}  // namespace

Xvfb::Xvfb() {
  int pipeFds[2];
  if (pipe(pipeFds) != 0) return;
  posix_spawn_file_actions_t io;
  posix_spawn_file_actions_init(&io);
  posix_spawn_file_actions_addopen(&io, 2, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addclose(&io, pipeFds[0]);
  std::vector<std::string> env;
  for (char** e = environ; *e; ++e) env.push_back(*e);
  // Xvfb picks a free display number itself and writes it to the pipe once it listens.
  m_pid = Spawn({"Xvfb", "-displayfd", std::to_string(pipeFds[1]), "-screen", "0", "1920x1080x24", "-nolisten", "tcp"},
                env, &io);
  posix_spawn_file_actions_destroy(&io);
  close(pipeFds[1]);
  std::string number;
  pollfd readable = {pipeFds[0], POLLIN, 0};
  char c;
  while (m_pid > 0 && poll(&readable, 1, 20000) == 1 && read(pipeFds[0], &c, 1) == 1 && c != '\n') number += c;
  close(pipeFds[0]);
  if (!number.empty()) m_display = ":" + number;
}

Xvfb::~Xvfb() {
  if (m_pid <= 0) return;
  kill(m_pid, SIGTERM);
  int status;
  waitpid(m_pid, &status, 0);
}

std::string UnservedDisplay() {
  for (int n = 1000 + getpid() % 5000;; ++n) {
    const std::string number = std::to_string(n);
    if (access(("/tmp/.X11-unix/X" + number).c_str(), F_OK) != 0 && access(("/tmp/.X" + number + "-lock").c_str(), F_OK) != 0) {
      return ":" + number;
    }
  }
}

Child::Child(const TempTv& tv, const std::string& program, const std::map<std::string, std::string>& environment,
             const std::string& errorFile) {
  std::map<std::string, std::string> vars = environment;
  vars["TVSIM_DB"] = tv.DbPath();
  vars["TVSIM_LOG"] = tv.LogPath();
  std::vector<std::string> env;
  for (char** e = environ; *e; ++e) {
    const std::string entry = *e;
    if (vars.count(entry.substr(0, entry.find('='))) == 0) env.push_back(entry);
  }
  for (const auto& [name, value] : vars) {
    if (!value.empty()) env.push_back(name + "=" + value);
  }
  posix_spawn_file_actions_t io;
  posix_spawn_file_actions_init(&io);
  // EFL's complaints (a failed window, missing session services) are not the test's output.
  posix_spawn_file_actions_addopen(&io, 2, errorFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  m_pid = Spawn({program}, env, &io);
  posix_spawn_file_actions_destroy(&io);
  // A descriptor of the process: its end can be waited for with poll (bookworm's glibc
  // header for these calls lacks C linkage, hence syscall).
  if (m_pid > 0) m_pidfd = static_cast<int>(syscall(SYS_pidfd_open, m_pid, 0));
}

Child::~Child() {
  if (m_pid > 0 && m_status < 0) {
    kill(m_pid, SIGKILL);
    Reap(m_pid, m_pidfd, 10);
  }
  if (m_pidfd >= 0) close(m_pidfd);
}

int Child::Wait(double timeoutSeconds) {
  if (m_status < 0 && m_pidfd >= 0) {
    const int status = Reap(m_pid, m_pidfd, timeoutSeconds);
    if (status != -1) m_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  return m_status;
}

bool Child::Signal(int signal) const {
  return m_status < 0 && m_pidfd >= 0 && syscall(SYS_pidfd_send_signal, m_pidfd, signal, nullptr, 0) == 0;
}

std::string ProgramPath() { return std::string(TV_BINARY_DIR) + "/antenna-selection"; }

bool Xdotool(const std::string& display, const std::string& arguments, std::string* output) {
  FILE* pipe = popen(("DISPLAY=" + display + " timeout 20 xdotool " + arguments + " 2>/dev/null").c_str(), "r");
  if (pipe == nullptr) return false;
  std::string text;
  char buffer[256];
  size_t n;
  while ((n = fread(buffer, 1, sizeof buffer, pipe)) > 0) text.append(buffer, n);
  const int status = pclose(pipe);
  if (output) *output = text;
  return status == 0;
}

std::string FocusAppWindow(const std::string& display) {
  std::string found;
  if (!Xdotool(display, "search --sync --onlyvisible --name 'Antenna Selection Wnd'", &found)) return "";
  const std::string window = found.substr(0, found.find('\n'));
  return Xdotool(display, "windowfocus --sync " + window) ? window : "";
}

bool WaitFor(const std::function<bool()>& pred, double timeoutSeconds) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::duration<double>(timeoutSeconds);
  while (!pred()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return true;
}

}  // namespace tvtest
