// The X side of a tour: the display (its own Xvfb when there is none), the
// window manager when a tour asks for one, the application's window as X sees
// it, keys through XTest and screenshots of the whole screen.
#pragma once

#include <X11/Xlib.h>
#include <sys/types.h>

#include <map>
#include <string>

namespace tvtour {

class Desk {
 public:
  // With ownDisplay, or when DISPLAY names no display, starts Xvfb on a free
  // display number. Throws std::runtime_error when there is no display to use.
  explicit Desk(bool ownDisplay);
  ~Desk();
  Desk(const Desk&) = delete;
  Desk& operator=(const Desk&) = delete;

  const std::string& DisplayName() const { return m_name; }
  bool OwnDisplay() const { return m_xvfb > 0; }
  int Fd() const { return ConnectionNumber(m_display); }

  // Starts or stops evilwm on an own display (on a shared one the display's own
  // arrangement stays); throws when it does not start.
  void UseWindowManager(bool on);
  bool WindowManagerRunning() const { return m_wm > 0; }

  // Handles the pending X events. Returns true when one concerned the program's window.
  bool Pump();

  // The window of the program with this pid (or this name), once mapped.
  void Follow(pid_t pid, const std::string& name);
  Window AppWindow() const { return m_app; }
  bool AppMapped() const { return m_app != 0 && m_appMapped; }
  bool AppGone() const { return m_appGone; }
  bool AppFocused();
  // Whether the program's window lies wholly on the screen; where it is, in *where.
  bool AppOnScreen(std::string* where);

  // Gives the window the input focus; the X error, if any, in *error.
  bool Focus(Window window, std::string* error);
  void Key(const char* keysym);
  // The whole screen as PNG; false with *error when it cannot be taken or saved.
  bool Screenshot(const std::string& path, std::string* error);

 private:
  struct Tracked {
    bool mapped = false;
  };
  void Track(Window window);
  bool OnMapped(Window window);  // true when it is the program's window
  bool IsApp(Window window);
  void StopWindowManager();

  std::string m_name;
  Display* m_display = nullptr;
  pid_t m_xvfb = -1;
  pid_t m_wm = -1;
  std::map<Window, Tracked> m_windows;
  pid_t m_pid = 0;
  std::string m_appName;
  Window m_app = 0;
  bool m_appMapped = false;
  bool m_appGone = false;
  Atom m_netWmPid = None;
};

}  // namespace tvtour
