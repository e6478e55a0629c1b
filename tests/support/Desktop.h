// The built program as a viewer meets it: on an X display of the test's own
// (Xvfb on a free display number), started as a child process, keys sent
// through XTest (xdotool), signals sent by pid.
#pragma once

#include <sys/types.h>

#include <functional>
#include <map>
#include <string>

namespace tvtest {

class TempTv;

// An Xvfb server on a display number it picks itself (-displayfd); stopped with
// the object.
class Xvfb {
 public:
  Xvfb();
  ~Xvfb();
  Xvfb(const Xvfb&) = delete;
  Xvfb& operator=(const Xvfb&) = delete;

  bool Running() const { return m_pid > 0 && !m_display.empty(); }
  const std::string& Display() const { return m_display; }  // ":N"

 private:
  pid_t m_pid = -1;
  std::string m_display;
};

// A display name that no X server serves now (no socket, no lock file).
std::string UnservedDisplay();

// A program started with the TV's TVSIM_DB and TVSIM_LOG and the environment
// changes given (an empty value unsets the variable), its stderr into errorFile;
// killed if still running when the object goes.
class Child {
 public:
  Child(const TempTv& tv, const std::string& program, const std::map<std::string, std::string>& environment,
        const std::string& errorFile = "/dev/null");
  ~Child();
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  pid_t Pid() const { return m_pid; }
  // Waits for the end (up to timeoutSeconds); its exit status, 128 + signal, or -1 while it runs on.
  int Wait(double timeoutSeconds);
  bool Signal(int signal) const;

 private:
  pid_t m_pid = -1;
  int m_pidfd = -1;
  int m_status = -1;
};

// The built program, TV_BINARY_DIR/antenna-selection.
std::string ProgramPath();

// Runs xdotool with the arguments on the display; true on exit status 0.
bool Xdotool(const std::string& display, const std::string& arguments, std::string* output = nullptr);
// Waits (up to 20 s) for the application's window on the display, gives it the
// input focus as a window manager would, and returns its id ("" when none came).
std::string FocusAppWindow(const std::string& display);

// Polls pred every 20 ms until it holds or timeoutSeconds have passed (for
// state kept in files, which sends no event).
bool WaitFor(const std::function<bool()>& pred, double timeoutSeconds = 20.0);

}  // namespace tvtest
