// One measured run of a program under X: exec, the frames its probe reports,
// keys sent through XTest, and its resource use from wait4.
#pragma once

#include <X11/Xlib.h>

#include <string>
#include <vector>

namespace bench {

struct Program {
  std::string label;
  std::vector<std::string> argv;                             // argv[0] is the path
  std::vector<std::pair<std::string, std::string>> env;      // added to the runner's own
  int rows = 0;                                              // rows in its list
  int focusRow = 0;                                          // the row focused at start (1-based)
};

struct RunResult {
  bool ok = false;
  std::string error;
  double firstDrawnMs = -1;  // exec to the first frame drawn at all
  double firstFocusMs = -1;  // exec to the first frame showing the focused row
  double settledMs = -1;     // exec to the last frame before 300 ms without one
  std::vector<double> keyMs;  // each key press to the frame showing the moved focus
  int keysLost = 0;
  double maxRssMiB = 0;
  double cpuSeconds = 0;
};

// Holds the X connection: gives each newly mapped window the input focus (as a
// window manager would) and sends keys.
class Desk {
 public:
  Desk();
  ~Desk();
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  void Pump();  // handles pending X events
  void Key(const char* keysym);

 private:
  Display* m_display;
};

RunResult RunOnce(Desk& desk, const Program& program, int keys, const std::string& probePath);

double MonotonicMs();

}  // namespace bench
