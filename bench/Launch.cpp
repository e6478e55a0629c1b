#include "Launch.h"

#include <X11/extensions/XTest.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace bench {
namespace {

const double kSettleMs = 300;    // no frame for this long: the screen has settled
const double kKeyQuietMs = 120;  // between keys: let the moved focus finish drawing
const double kStartLimitMs = 30000;
const double kKeyLimitMs = 2000;
const double kExitLimitMs = 5000;

struct Frame {
  double t;
  int row;
  bool shown;
};

// Reads the probe file as it grows; only whole lines count.
class ProbeReader {
 public:
  explicit ProbeReader(std::string path) : m_path(std::move(path)) {}

  // New frames since the last call.
  std::vector<Frame> Poll() {
    std::vector<Frame> frames;
    std::ifstream in(m_path, std::ios::binary);
    if (!in) return frames;
    in.seekg(static_cast<std::streamoff>(m_offset));
    std::string chunk((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    size_t start = 0;
    for (size_t end; (end = chunk.find('\n', start)) != std::string::npos; start = end + 1) {
      std::istringstream line(chunk.substr(start, end - start));
      std::string kind;
      long long ns = 0;
      line >> kind >> ns;
      if (kind != "frame") continue;
      Frame frame{static_cast<double>(ns) / 1e6, 0, false};
      int shown = 0;
      line >> frame.row >> shown;
      frame.shown = shown != 0;
      frames.push_back(frame);
    }
    m_offset += start;
    return frames;
  }

 private:
  std::string m_path;
  size_t m_offset = 0;
};

void Nap() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

}  // namespace

double MonotonicMs() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

Desk::Desk() : m_display(XOpenDisplay(nullptr)) {
  if (m_display == nullptr) throw std::runtime_error("cannot open the X display (DISPLAY unset?)");
  XSelectInput(m_display, DefaultRootWindow(m_display), SubstructureNotifyMask);
  XFlush(m_display);
}

Desk::~Desk() { XCloseDisplay(m_display); }

void Desk::Pump() {
  while (XPending(m_display) > 0) {
    XEvent event;
    XNextEvent(m_display, &event);
    if (event.type == MapNotify && !event.xmap.override_redirect) {
      XSetInputFocus(m_display, event.xmap.window, RevertToPointerRoot, CurrentTime);
    }
  }
  XFlush(m_display);
}

void Desk::Key(const char* keysym) {
  const KeyCode code = XKeysymToKeycode(m_display, XStringToKeysym(keysym));
  XTestFakeKeyEvent(m_display, code, True, CurrentTime);
  XTestFakeKeyEvent(m_display, code, False, CurrentTime);
  XFlush(m_display);
}

RunResult RunOnce(Desk& desk, const Program& program, int keys, const std::string& probePath) {
  RunResult result;
  unlink(probePath.c_str());
  ProbeReader probe(probePath);
  desk.Pump();

  const double t0 = MonotonicMs();
  const pid_t pid = fork();
  if (pid == 0) {
    for (const auto& [name, value] : program.env) setenv(name.c_str(), value.c_str(), 1);
    setenv("TVSIM_FRAME_PROBE", probePath.c_str(), 1);
    // Their chatter goes to a file beside the probe's, not into the runner's output.
    const int log = open((probePath + ".stderr").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (log >= 0) {
      dup2(log, STDOUT_FILENO);
      dup2(log, STDERR_FILENO);
    }
    std::vector<char*> argv;
    for (const std::string& arg : program.argv) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
  if (pid < 0) {
    result.error = "fork failed";
    return result;
  }

  int status = 0;
  rusage usage{};
  bool ended = false;  // before it was asked to
  std::vector<Frame> frames;
  auto pump = [&] {
    desk.Pump();
    for (const Frame& f : probe.Poll()) frames.push_back(f);
  };
  // Start: the first frame at all, then the first that shows the focused row.
  int row = 0;
  while (result.firstFocusMs < 0 && MonotonicMs() - t0 < kStartLimitMs) {
    if (wait4(pid, &status, WNOHANG, &usage) == pid) {
      ended = true;
      break;
    }
    pump();
    for (const Frame& f : frames) {
      if (result.firstDrawnMs < 0) result.firstDrawnMs = f.t - t0;
      if (f.shown && result.firstFocusMs < 0) {
        result.firstFocusMs = f.t - t0;
        row = f.row;
      }
    }
    Nap();
  }
  auto quietFor = [&](double quietMs, double limitMs) {
    const double start = MonotonicMs();
    while (MonotonicMs() - start < limitMs) {
      pump();
      const double last = frames.empty() ? t0 : frames.back().t;
      if (MonotonicMs() - last >= quietMs) return;
      Nap();
    }
  };
  if (result.firstFocusMs >= 0) {
    quietFor(kSettleMs, 5000);
    result.settledMs = frames.back().t - t0;
    for (int i = 0; i < keys; ++i) {
      // Down and Up in turn, starting away from the list's end.
      const bool down = (row < program.rows) == (i % 2 == 0);
      const size_t seen = frames.size();
      const double sent = MonotonicMs();
      desk.Key(down ? "Down" : "Up");
      double moved = -1;
      while (moved < 0 && MonotonicMs() - sent < kKeyLimitMs) {
        pump();
        for (size_t j = seen; j < frames.size() && moved < 0; ++j) {
          if (frames[j].row != row && frames[j].row != 0) {
            moved = frames[j].t - sent;
            row = frames[j].row;
          }
        }
        Nap();
      }
      if (moved < 0) {
        ++result.keysLost;
      } else {
        result.keyMs.push_back(moved);
      }
      quietFor(kKeyQuietMs, 1000);
    }
  } else {
    result.error = ended ? "ended before showing the focused row" : "no frame showed the focused row";
  }

  if (!ended) desk.Key("Escape");
  const double asked = MonotonicMs();
  pid_t done = ended ? pid : 0;
  while (done == 0 && (done = wait4(pid, &status, WNOHANG, &usage)) == 0 && MonotonicMs() - asked < kExitLimitMs) {
    desk.Pump();
    Nap();
  }
  if (done == 0) {
    kill(pid, SIGKILL);
    wait4(pid, &status, 0, &usage);
    if (result.error.empty()) result.error = "did not end after Escape";
  }
  result.maxRssMiB = static_cast<double>(usage.ru_maxrss) / 1024.0;
  result.cpuSeconds = static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
                      static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
  result.ok = result.error.empty() && result.keysLost == 0;
  if (result.keysLost > 0 && result.error.empty()) result.error = std::to_string(result.keysLost) + " key(s) lost";
  return result;
}

}  // namespace bench
