#include "Desk.h"

#include <Ecore.h>
#include <Ecore_Evas.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>
#include <X11/extensions/XTest.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace tvtour {
namespace {

const double kStartSeconds = 15;

// Xlib reports errors through one process-wide handler: the last one is kept
// for the call that caused it (after XSync).
int s_lastError = 0;
char s_lastErrorText[128] = "";

int KeepError(Display* display, XErrorEvent* event) {
  s_lastError = event->error_code;
  XGetErrorText(display, event->error_code, s_lastErrorText, sizeof s_lastErrorText);
  return 0;
}

double NowSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

pid_t Spawn(const std::vector<std::string>& argv, const std::string& display, int keepFd) {
  const pid_t pid = fork();
  if (pid == 0) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);  // never outlives the tour, even when it is killed
    if (!display.empty()) setenv("DISPLAY", display.c_str(), 1);
    const int null = open("/dev/null", O_RDWR);
    if (null >= 0) {
      dup2(null, STDIN_FILENO);
      dup2(null, STDOUT_FILENO);
      dup2(null, STDERR_FILENO);
    }
    for (int fd = 3; fd < 1024; ++fd) {
      if (fd != keepFd) close(fd);
    }
    std::vector<char*> args;
    for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
    args.push_back(nullptr);
    execvp(args[0], args.data());
    _exit(127);
  }
  if (pid < 0) throw std::runtime_error("cannot fork: " + std::string(strerror(errno)));
  return pid;
}

void End(pid_t& pid) {
  if (pid <= 0) return;
  kill(pid, SIGTERM);
  int status = 0;
  const double deadline = NowSeconds() + 5;
  while (waitpid(pid, &status, WNOHANG) == 0) {
    if (NowSeconds() > deadline) {
      kill(pid, SIGKILL);
      waitpid(pid, &status, 0);
      break;
    }
    poll(nullptr, 0, 10);
  }
  pid = -1;
}

// Starts Xvfb on display and waits until it listens; "" when it ended instead.
std::string StartXvfb(const std::string& display, const std::string& size, pid_t* pid) {
  int fds[2];
  if (pipe(fds) != 0) throw std::runtime_error("cannot make a pipe for Xvfb");
  *pid =
      Spawn({"Xvfb", display, "-displayfd", std::to_string(fds[1]), "-screen", "0", size + "x24", "-nolisten", "tcp"},
            "", fds[1]);
  close(fds[1]);
  // It writes the display number once it accepts connections.
  std::string written;
  const double deadline = NowSeconds() + kStartSeconds;
  pollfd pfd{fds[0], POLLIN, 0};
  while (written.find('\n') == std::string::npos && NowSeconds() < deadline) {
    if (poll(&pfd, 1, 100) <= 0) continue;
    char buffer[32];
    const ssize_t n = read(fds[0], buffer, sizeof buffer);
    if (n <= 0) break;  // it ended
    written.append(buffer, static_cast<size_t>(n));
  }
  close(fds[0]);
  if (written.find('\n') != std::string::npos) return display;
  End(*pid);
  return "";
}

bool Usable(const char* name) {
  if (name == nullptr || *name == '\0') return false;
  Display* display = XOpenDisplay(name);
  if (display == nullptr) return false;
  XCloseDisplay(display);
  return true;
}

}  // namespace

Desk::Desk(bool ownDisplay) {
  const char* given = std::getenv("DISPLAY");
  if (!ownDisplay && Usable(given)) {
    m_name = given;
  } else {
    const char* screen = std::getenv("TVSIM_SCREEN");
    const std::string size = (screen != nullptr && *screen != '\0') ? screen : "1920x1080";
    // A free number from 100 up, as the other scripts pick theirs; a number
    // another starter takes at the same moment makes Xvfb end, then the next.
    for (int number = 100; number < 200 && m_name.empty(); ++number) {
      const std::string n = std::to_string(number);
      if (access(("/tmp/.X11-unix/X" + n).c_str(), F_OK) == 0 || access(("/tmp/.X" + n + "-lock").c_str(), F_OK) == 0) {
        continue;
      }
      m_name = StartXvfb(":" + n, size, &m_xvfb);
    }
    if (m_name.empty()) throw std::runtime_error("Xvfb did not start (is the package xvfb installed?)");
  }
  m_display = XOpenDisplay(m_name.c_str());
  if (m_display == nullptr) {
    End(m_xvfb);
    throw std::runtime_error("cannot open the X display " + m_name);
  }
  XSetErrorHandler(KeepError);
  int event, error, major, minor;
  if (!XTestQueryExtension(m_display, &event, &error, &major, &minor)) {
    XCloseDisplay(m_display);
    End(m_xvfb);
    throw std::runtime_error("the display " + m_name + " has no XTest extension");
  }
  m_netWmPid = XInternAtom(m_display, "_NET_WM_PID", False);
  XSelectInput(m_display, DefaultRootWindow(m_display), SubstructureNotifyMask | PropertyChangeMask);
  XSync(m_display, False);
  // Only the buffer canvas of the screenshots: no session or system bus.
  ecore_app_no_system_modules();
  ecore_evas_init();
}

Desk::~Desk() {
  StopWindowManager();
  if (m_display != nullptr) XCloseDisplay(m_display);
  End(m_xvfb);
  ecore_evas_shutdown();
}

void Desk::UseWindowManager(bool on) {
  if (!OwnDisplay() || on == WindowManagerRunning()) return;
  if (!on) {
    StopWindowManager();
    return;
  }
  // evilwm's default font is not in Debian's fonts; "fixed" always is.
  m_wm = Spawn({"evilwm", "-fn", "fixed"}, m_name, -1);
  // It manages the screen once it holds the root's redirect.
  const double deadline = NowSeconds() + kStartSeconds;
  while (NowSeconds() < deadline) {
    XWindowAttributes attributes;
    XGetWindowAttributes(m_display, DefaultRootWindow(m_display), &attributes);
    if (attributes.all_event_masks & SubstructureRedirectMask) {
      // A desktop manager places new windows at the pointer: put it mid-screen,
      // where a screen-sized window placed there would hang off the edges.
      XWarpPointer(m_display, None, DefaultRootWindow(m_display), 0, 0, 0, 0, attributes.width / 2,
                   attributes.height / 2);
      XSync(m_display, False);
      return;
    }
    int status = 0;
    if (waitpid(m_wm, &status, WNOHANG) == m_wm) break;
    pollfd pfd{Fd(), POLLIN, 0};
    poll(&pfd, 1, 20);  // evilwm's set-up shows as property changes on the root
    Pump();
  }
  StopWindowManager();
  throw std::runtime_error("evilwm did not start (is the package evilwm installed?)");
}

bool Desk::AppOnScreen(std::string* where) {
  if (m_app == 0) {
    *where = "no window";
    return false;
  }
  const Window root = DefaultRootWindow(m_display);
  XWindowAttributes screen, window;
  int x = 0, y = 0;
  Window child = 0;
  if (!XGetWindowAttributes(m_display, root, &screen) || !XGetWindowAttributes(m_display, m_app, &window) ||
      !XTranslateCoordinates(m_display, m_app, root, 0, 0, &x, &y, &child)) {
    *where = "the window cannot be read";
    return false;
  }
  *where = std::to_string(window.width) + "x" + std::to_string(window.height) + " at " + std::to_string(x) + "," +
           std::to_string(y) + " on a " + std::to_string(screen.width) + "x" + std::to_string(screen.height) +
           " screen";
  return x >= 0 && y >= 0 && x + window.width <= screen.width && y + window.height <= screen.height;
}

void Desk::StopWindowManager() {
  End(m_wm);
  if (m_display != nullptr) XSync(m_display, False);
}

void Desk::Follow(pid_t pid, const std::string& name) {
  m_pid = pid;
  m_appName = name;
  m_app = 0;
  m_appMapped = false;
  m_appGone = false;
  m_windows.clear();
}

void Desk::Track(Window window) {
  // Selected on the window itself, its events reach us also after a window
  // manager has put it into a frame.
  s_lastError = 0;
  XSelectInput(m_display, window, StructureNotifyMask | FocusChangeMask | PropertyChangeMask);
  XWindowAttributes attributes;
  const bool known = XGetWindowAttributes(m_display, window, &attributes) != 0 && s_lastError == 0;
  if (!known) return;  // gone already
  m_windows[window];
  // Mapped before we listened: its own MapNotify went by unseen.
  if (attributes.map_state == IsViewable) OnMapped(window);
}

bool Desk::OnMapped(Window window) {
  auto it = m_windows.find(window);
  if (it == m_windows.end()) return false;
  it->second.mapped = true;
  if (window == m_app) {
    m_appMapped = true;
    m_appGone = false;
    return true;
  }
  if (m_app != 0 || m_pid == 0 || !IsApp(window)) return false;
  m_app = window;
  m_appMapped = true;
  return true;
}

bool Desk::IsApp(Window window) {
  Atom type;
  int format;
  unsigned long count, after;
  unsigned char* data = nullptr;
  bool match = false;
  if (XGetWindowProperty(m_display, window, m_netWmPid, 0, 1, False, XA_CARDINAL, &type, &format, &count, &after,
                         &data) == Success &&
      data != nullptr && count == 1 && format == 32) {
    match = static_cast<pid_t>(*reinterpret_cast<unsigned long*>(data)) == m_pid;
  }
  if (data != nullptr) XFree(data);
  if (!match && !m_appName.empty()) {
    char* title = nullptr;
    if (XFetchName(m_display, window, &title) && title != nullptr) {
      match = m_appName == title;
      XFree(title);
    }
  }
  return match;
}

bool Desk::Pump() {
  bool concernsApp = false;
  while (XPending(m_display) > 0) {
    XEvent event;
    XNextEvent(m_display, &event);
    switch (event.type) {
      case CreateNotify:
        if (event.xcreatewindow.parent == DefaultRootWindow(m_display) && !event.xcreatewindow.override_redirect) {
          Track(event.xcreatewindow.window);
        }
        break;
      case MapNotify:
        concernsApp = OnMapped(event.xmap.window) || concernsApp;
        break;
      case PropertyNotify: {
        // The name or pid may come after the map.
        auto it = m_windows.find(event.xproperty.window);
        if (it != m_windows.end() && it->second.mapped) concernsApp = OnMapped(event.xproperty.window) || concernsApp;
        break;
      }
      case UnmapNotify:
        if (m_windows.count(event.xunmap.window) != 0 && event.xunmap.event == event.xunmap.window) {
          m_windows[event.xunmap.window].mapped = false;
          if (event.xunmap.window == m_app) {
            m_appMapped = false;
            m_appGone = true;
            concernsApp = true;
          }
        }
        break;
      case DestroyNotify:
        if (event.xdestroywindow.event == event.xdestroywindow.window) {
          m_windows.erase(event.xdestroywindow.window);
          if (event.xdestroywindow.window == m_app) {
            m_appMapped = false;
            m_appGone = true;
            concernsApp = true;
          }
        }
        break;
      case FocusIn:
      case FocusOut:
        if (event.xfocus.window == m_app) concernsApp = true;
        break;
      default:
        break;
    }
  }
  return concernsApp;
}

bool Desk::AppFocused() {
  if (!AppMapped()) return false;
  Window focus = 0;
  int revert = 0;
  XGetInputFocus(m_display, &focus, &revert);
  return focus == m_app;
}

bool Desk::Focus(Window window, std::string* error) {
  s_lastError = 0;
  XSetInputFocus(m_display, window, RevertToParent, CurrentTime);
  XSync(m_display, False);
  if (s_lastError != 0) {
    if (error != nullptr) *error = std::string("XSetInputFocus failed: ") + s_lastErrorText;
    return false;
  }
  return true;
}

void Desk::Key(const char* keysym) {
  const KeyCode code = XKeysymToKeycode(m_display, XStringToKeysym(keysym));
  XTestFakeKeyEvent(m_display, code, True, CurrentTime);
  XTestFakeKeyEvent(m_display, code, False, CurrentTime);
  XFlush(m_display);
}

bool Desk::Screenshot(const std::string& path, std::string* error) {
  const Window root = DefaultRootWindow(m_display);
  XWindowAttributes attributes;
  XGetWindowAttributes(m_display, root, &attributes);
  s_lastError = 0;
  XImage* image = XGetImage(m_display, root, 0, 0, static_cast<unsigned>(attributes.width),
                            static_cast<unsigned>(attributes.height), AllPlanes, ZPixmap);
  if (image == nullptr) {
    *error = std::string("XGetImage failed: ") + s_lastErrorText;
    return false;
  }
  const int width = image->width, height = image->height;
  std::vector<uint32_t> pixels(static_cast<size_t>(width) * static_cast<size_t>(height));
  auto shiftOf = [](unsigned long mask) {
    int shift = 0;
    while (mask != 0 && (mask & 1) == 0) {
      mask >>= 1;
      ++shift;
    }
    return shift;
  };
  const int rs = shiftOf(image->red_mask), gs = shiftOf(image->green_mask), bs = shiftOf(image->blue_mask);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const unsigned long p = XGetPixel(image, x, y);
      const uint32_t r = static_cast<uint32_t>((p & image->red_mask) >> rs) & 0xff;
      const uint32_t g = static_cast<uint32_t>((p & image->green_mask) >> gs) & 0xff;
      const uint32_t b = static_cast<uint32_t>((p & image->blue_mask) >> bs) & 0xff;
      pixels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)] =
          0xff000000u | (r << 16) | (g << 8) | b;
    }
  }
  XDestroyImage(image);

  // Evas saves the picture: an image object in a buffer canvas.
  Ecore_Evas* canvas = ecore_evas_buffer_new(1, 1);
  if (canvas == nullptr) {
    *error = "cannot make a buffer canvas for the screenshot";
    return false;
  }
  Evas_Object* picture = evas_object_image_add(ecore_evas_get(canvas));
  evas_object_image_colorspace_set(picture, EVAS_COLORSPACE_ARGB8888);
  evas_object_image_alpha_set(picture, EINA_FALSE);
  evas_object_image_size_set(picture, width, height);
  evas_object_image_data_copy_set(picture, pixels.data());
  const bool saved = evas_object_image_save(picture, path.c_str(), nullptr, "compress=6");
  ecore_evas_free(canvas);
  if (!saved) *error = "cannot save " + path;
  return saved;
}

}  // namespace tvtour
