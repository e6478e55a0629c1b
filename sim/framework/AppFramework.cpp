// The native application framework on Ecore/Elementary: one ui_app_main run
// starts the toolkit, calls the lifecycle callbacks in the platform's order and
// turns window, signal, settings and second-start events into them.
#include "AppFramework.h"

#include <Ecore_X.h>
#include <Elementary.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "App.h"
#include "CallLog.h"
#include "Environment.h"
#include "Log.h"
#include "FrameProbe.h"
#include "Keys.h"
#include "PortCall.h"
#include "Language.h"
#include "SettingsWatch.h"
#include "SingleInstance.h"
#include "Toolkit.h"

// The launch request: the application never reads it, so it carries nothing.
struct app_control_s {
  int unused;
};
struct app_event_info {
  app_event_type_e type;
};
struct app_event_handler {
  app_event_type_e type;
  app_event_cb callback;
  void* data;
};

namespace {

const int kErrorNone = 0;
const int kErrorCreateFailed = 1;  // the create callback returned false
const int kErrorToolkit = 2;       // elm_init failed
const int kErrorNoWindow = 3;      // no window can be made: no display, or none after the launch request
const char* const kLogTag = "tvsim";
const int kErrorInvalidParameter = -22;

std::vector<std::unique_ptr<app_event_handler>> s_handlers;
int s_exitRequests = 0;

// One ui_app_main run.
class Framework {
 public:
  Framework(const ui_app_lifecycle_callback_s& callbacks, void* data)
      : m_callbacks(callbacks), m_pData(data), m_instance(tvsim::DatabasePath(), [this] { DeliverLaunch(); }) {}

  int Run(int argc, char** argv);
  void RequestExit();

 private:
  enum class State { kStarting, kRunning, kPaused, kEnding };
  struct Window {
    Evas_Object* object;
    bool focusLost;
  };

  void DeliverLaunch();
  bool DisplayOpens();
  void EndWithoutWindow(const std::string& why);
  void StartWatching();
  void StopWatching();
  void ScanWindows();
  void Track(Evas_Object* window);
  void Forget(Evas_Object* window);
  static bool IsLive(Ecore_Evas* canvas, Evas_Object* window);
  void ScheduleUpdate();
  bool InForeground() const;
  Window* Find(Evas_Object* window);

  static void OnLaunchJob(void* data);
  static void OnUpdateJob(void* data);
  static Eina_Bool OnIdle(void* data);
  static Eina_Bool OnSignalExit(void* data, int type, void* event);
  void OnLanguageChanged();
  static void OnFocusIn(void* data, Evas_Object* window, void* event);
  static void OnFocusOut(void* data, Evas_Object* window, void* event);
  static void OnWindowState(void* data, Evas_Object* window, void* event);
  static void OnVisibility(void* data, Evas* evas, Evas_Object* window, void* event);
  static void OnWindowDel(void* data, Evas* evas, Evas_Object* window, void* event);
  static Eina_Bool OnMapped(void* data, int type, void* event);

  ui_app_lifecycle_callback_s m_callbacks;
  void* m_pData;
  tvsim::SingleInstance m_instance;
  State m_state = State::kStarting;
  bool m_bExitRequested = false;
  bool m_bLaunched = false;
  bool m_bInLoop = false;
  std::vector<Window> m_windows;
  std::unique_ptr<tvsim::RemoteKeyFilter> m_keyFilter;
  Ecore_Event_Handler* m_signalHandler = nullptr;
  Ecore_Event_Handler* m_mapHandler = nullptr;
  Ecore_Event_Handler* m_hangupHandler = nullptr;
  int m_result = kErrorNone;
  bool m_bDisplayHeld = false;  // this run holds a reference to Ecore's X connection
  Ecore_Idle_Enterer* m_idle = nullptr;
  Ecore_Job* m_launchJob = nullptr;
  Ecore_Job* m_updateJob = nullptr;
  int m_languageWatch = 0;
};

Framework* s_running = nullptr;

int Framework::Run(int argc, char** argv) {
  switch (m_instance.Claim()) {
    case tvsim::SingleInstance::Role::kForwarded:
      return kErrorNone;  // the running instance got our launch request
    case tvsim::SingleInstance::Role::kError:
      std::fprintf(stderr, "tvsim: cannot claim the TV's instance socket %s; running alone\n",
                   m_instance.Name().c_str());
      break;
    case tvsim::SingleInstance::Role::kFirst:
      break;
  }
  tvsim::PrepareToolkitEnvironment();
  // The TV draws its 1920x1080 screen at toolkit scale 2.0, the scale the
  // application's themes and text sizes are made for; ELM_SCALE still overrides.
  setenv("ELM_SCALE", "2.0", 0);
  const int initCount = elm_init(argc, argv);
  if (initCount <= 0) return kErrorToolkit;
  if (!DisplayOpens()) {
    m_instance.Close();
    elm_shutdown();
    return kErrorNoWindow;
  }
  // When a host (the test main) already runs the toolkit, it also added the theme.
  if (initCount == 1) tvsim::AddPlatformTheme();
  // Under Xvfb without a window manager windows stay withdrawn and would never render.
  elm_config_agressive_withdrawn_set(EINA_FALSE);

  s_running = this;
  StartWatching();
  int result = kErrorNone;
  if (m_callbacks.create != nullptr && !m_callbacks.create(m_pData)) {
    result = kErrorCreateFailed;
  } else {
    ScanWindows();
    if (!m_bExitRequested) {
      m_launchJob = ecore_job_add(OnLaunchJob, this);
      m_bInLoop = true;
      ecore_main_loop_begin();
      m_bInLoop = false;
    }
    m_state = State::kEnding;
    if (m_callbacks.terminate != nullptr) m_callbacks.terminate(m_pData);
    result = m_result;
  }
  m_state = State::kEnding;
  StopWatching();
  s_running = nullptr;
  tvsim::FlushCalls();  // while the toolkit's idlers still exist
  if (m_bDisplayHeld) ecore_x_shutdown();  // before the toolkit's own, while Ecore lives
  elm_shutdown();
  return result;
}

// Without ELM_ENGINE, ELM_DISPLAY and WAYLAND_DISPLAY, Elementary makes its
// windows on the X display named by DISPLAY: see that it opens before the
// application is started at all. Other set-ups are judged by the window the
// application makes (OnLaunchJob).
bool Framework::DisplayOpens() {
  for (const char* other : {"ELM_ENGINE", "ELM_DISPLAY", "WAYLAND_DISPLAY"}) {
    const char* value = std::getenv(other);
    if (value != nullptr && *value != '\0') return true;
  }
  const char* display = std::getenv("DISPLAY");
  if (display == nullptr || *display == '\0') {
    EndWithoutWindow("DISPLAY is not set");
    return false;
  }
  // Kept open: the toolkit's windows then use this connection instead of making another.
  if (ecore_x_init(display) <= 0) {
    EndWithoutWindow(std::string("display \"") + display + "\" cannot be opened (no X server there)");
    return false;
  }
  m_bDisplayHeld = true;
  return true;
}

// A process that holds the TV's instance socket without a window would take
// every later start's launch request and show nothing: it gives the socket up
// at once and ends with kErrorNoWindow.
void Framework::EndWithoutWindow(const std::string& why) {
  __dlog_print(LOG_ID_SYSTEM, DLOG_ERROR, kLogTag, "no window can be made: %s; the application ends (result %d)",
               why.c_str(), kErrorNoWindow);
  m_instance.Close();
  m_result = kErrorNoWindow;
  RequestExit();
}

void Framework::RequestExit() {
  m_bExitRequested = true;
  if (m_bInLoop) ecore_main_loop_quit();
}

void Framework::StartWatching() {
  m_instance.Listen();
  m_keyFilter = std::make_unique<tvsim::RemoteKeyFilter>();
  m_signalHandler = ecore_event_handler_add(ECORE_EVENT_SIGNAL_EXIT, OnSignalExit, this);
  // A closed terminal or session (SIGHUP) ends the application like SIGTERM.
  m_hangupHandler = ecore_event_handler_add(ECORE_EVENT_SIGNAL_HUP, OnSignalExit, this);
  m_idle = ecore_idle_enterer_before_add(OnIdle, this);
  // Watched inside the platform, not through the port, so that the application's
  // call log and its injected faults see only the application's own calls.
  m_languageWatch = tvsim::WatchSetting(tvsim::kLanguageKey, [this](const std::string&) { OnLanguageChanged(); });
}

void Framework::StopWatching() {
  if (m_languageWatch != 0) tvsim::UnwatchSetting(m_languageWatch);
  m_languageWatch = 0;
  while (!m_windows.empty()) Forget(m_windows.back().object);
  if (m_idle != nullptr) ecore_idle_enterer_del(m_idle);
  if (m_launchJob != nullptr) ecore_job_del(m_launchJob);
  if (m_updateJob != nullptr) ecore_job_del(m_updateJob);
  if (m_signalHandler != nullptr) ecore_event_handler_del(m_signalHandler);
  if (m_mapHandler != nullptr) ecore_event_handler_del(m_mapHandler);
  m_mapHandler = nullptr;
  if (m_hangupHandler != nullptr) ecore_event_handler_del(m_hangupHandler);
  m_idle = nullptr;
  m_launchJob = m_updateJob = nullptr;
  m_signalHandler = m_hangupHandler = nullptr;
  m_keyFilter.reset();
  m_instance.Close();
}

void Framework::DeliverLaunch() {
  if (m_bExitRequested || m_state == State::kEnding) return;
  static app_control_s request;
  m_bLaunched = true;
  if (m_callbacks.app_control != nullptr) m_callbacks.app_control(&request, m_pData);
  // The first launch request usually creates and shows the window.
  ScanWindows();
  ScheduleUpdate();
}

// Elementary keeps its window object as data of the window's Ecore_Evas. New
// windows are picked up after each lifecycle callback and before the loop idles.
void Framework::ScanWindows() {
  Eina_List* list = ecore_evas_ecore_evas_list_get();
  void* item;
  EINA_LIST_FREE(list, item) {
    auto* canvas = static_cast<Ecore_Evas*>(item);
    auto* window = static_cast<Evas_Object*>(ecore_evas_data_get(canvas, "elm_win"));
    if (window != nullptr && Find(window) == nullptr && IsLive(canvas, window)) Track(window);
  }
}

// A deleted window's Ecore_Evas (and its "elm_win" data) outlives it until the
// next loop pass. Any call on the dead object would log errors, so look for it
// among the live objects of its canvas by pointer only.
bool Framework::IsLive(Ecore_Evas* canvas, Evas_Object* window) {
  for (Evas_Object* object = evas_object_bottom_get(ecore_evas_get(canvas)); object != nullptr;
       object = evas_object_above_get(object)) {
    if (object == window) return true;
  }
  return false;
}

void Framework::Track(Evas_Object* window) {
  m_windows.push_back({window, false});
  const tvsim::ScreenSize screen = tvsim::Screen();
  evas_object_resize(window, screen.width, screen.height);
  // A TV has no title bar, but on a desktop an untitled window is hard to find
  // (xdotool search --name, window lists): give it its window name as title.
  const char* title = elm_win_title_get(window);
  if (title == nullptr || *title == '\0') {
    const char* name = nullptr;
    ecore_evas_name_class_get(ecore_evas_ecore_evas_get(evas_object_evas_get(window)), &name, nullptr);
    if (name != nullptr) elm_win_title_set(window, name);
  }
  evas_object_smart_callback_add(window, "focus,in", OnFocusIn, this);
  evas_object_smart_callback_add(window, "focus,out", OnFocusOut, this);
  evas_object_smart_callback_add(window, "iconified", OnWindowState, this);
  evas_object_smart_callback_add(window, "normal", OnWindowState, this);
  evas_object_event_callback_add(window, EVAS_CALLBACK_SHOW, OnVisibility, this);
  evas_object_event_callback_add(window, EVAS_CALLBACK_HIDE, OnVisibility, this);
  evas_object_event_callback_add(window, EVAS_CALLBACK_DEL, OnWindowDel, this);
  tvsim::AttachFrameProbe(window);  // only with TVSIM_FRAME_PROBE set (benchmarks)
  // X is started with the first X window, and its event types exist from then on.
  if (m_mapHandler == nullptr && elm_win_xwindow_get(window) != 0) {
    m_mapHandler = ecore_event_handler_add(ECORE_X_EVENT_WINDOW_SHOW, OnMapped, this);
  }
  ScheduleUpdate();
}

void Framework::Forget(Evas_Object* window) {
  evas_object_smart_callback_del_full(window, "focus,in", OnFocusIn, this);
  evas_object_smart_callback_del_full(window, "focus,out", OnFocusOut, this);
  evas_object_smart_callback_del_full(window, "iconified", OnWindowState, this);
  evas_object_smart_callback_del_full(window, "normal", OnWindowState, this);
  evas_object_event_callback_del_full(window, EVAS_CALLBACK_SHOW, OnVisibility, this);
  evas_object_event_callback_del_full(window, EVAS_CALLBACK_HIDE, OnVisibility, this);
  evas_object_event_callback_del_full(window, EVAS_CALLBACK_DEL, OnWindowDel, this);
  m_windows.erase(std::remove_if(m_windows.begin(), m_windows.end(),
                                 [window](const Window& w) { return w.object == window; }),
                  m_windows.end());
}

Framework::Window* Framework::Find(Evas_Object* window) {
  for (Window& w : m_windows) {
    if (w.object == window) return &w;
  }
  return nullptr;
}

bool Framework::InForeground() const {
  for (const Window& w : m_windows) {
    if (evas_object_visible_get(w.object) && !elm_win_iconified_get(w.object) && !w.focusLost) return true;
  }
  return false;
}

// Window events are folded into one decision on the next loop pass, so that a
// focus-out followed at once by a focus-in (or a show inside app_control) does
// not become a pause and a resume, and nothing is called back from inside the
// application's own toolkit calls.
void Framework::ScheduleUpdate() {
  if (m_updateJob == nullptr) m_updateJob = ecore_job_add(OnUpdateJob, this);
}

void Framework::OnUpdateJob(void* data) {
  auto* self = static_cast<Framework*>(data);
  self->m_updateJob = nullptr;
  if (self->m_bExitRequested || !self->m_bLaunched || self->m_state == State::kEnding) return;
  const bool foreground = self->InForeground();
  if (foreground && self->m_state != State::kRunning) {
    self->m_state = State::kRunning;
    if (self->m_callbacks.resume != nullptr) self->m_callbacks.resume(self->m_pData);
  } else if (!foreground && self->m_state == State::kRunning) {
    self->m_state = State::kPaused;
    if (self->m_callbacks.pause != nullptr) self->m_callbacks.pause(self->m_pData);
  }
}

void Framework::OnLaunchJob(void* data) {
  auto* self = static_cast<Framework*>(data);
  self->m_launchJob = nullptr;
  self->DeliverLaunch();
  // The first launch request is where an application makes its window.
  if (!self->m_bExitRequested && self->m_windows.empty()) {
    const char* display = std::getenv("DISPLAY");
    const char* engine = std::getenv("ELM_ENGINE");
    self->EndWithoutWindow(std::string("the application made no window (DISPLAY \"") + (display ? display : "") +
                           "\", ELM_ENGINE \"" + (engine ? engine : "") + "\")");
  }
}

Eina_Bool Framework::OnIdle(void* data) {
  static_cast<Framework*>(data)->ScanWindows();
  return ECORE_CALLBACK_RENEW;
}

Eina_Bool Framework::OnSignalExit(void* data, int, void*) {
  static_cast<Framework*>(data)->RequestExit();
  return ECORE_CALLBACK_PASS_ON;
}

void Framework::OnLanguageChanged() {
  std::string language = tvsim::LanguageSetting();
  if (language.empty()) language = "en_US";
  if (language == tvsim::AppliedLanguage() || m_state == State::kEnding) return;
  tvsim::ApplyLanguage(language);
  app_event_info info{APP_EVENT_LANGUAGE_CHANGED};
  // Handlers may remove themselves (or others) while being called.
  std::vector<app_event_handler*> current;
  for (const auto& handler : s_handlers) {
    if (handler->type == APP_EVENT_LANGUAGE_CHANGED) current.push_back(handler.get());
  }
  for (app_event_handler* handler : current) {
    const bool stillThere = std::any_of(s_handlers.begin(), s_handlers.end(),
                                        [handler](const auto& h) { return h.get() == handler; });
    if (stillThere) handler->callback(&info, handler->data);
  }
}

void Framework::OnFocusIn(void* data, Evas_Object* window, void*) {
  auto* self = static_cast<Framework*>(data);
  if (Window* w = self->Find(window)) w->focusLost = false;
  self->ScheduleUpdate();
}

void Framework::OnFocusOut(void* data, Evas_Object* window, void*) {
  auto* self = static_cast<Framework*>(data);
  if (Window* w = self->Find(window)) w->focusLost = true;
  self->ScheduleUpdate();
}

void Framework::OnWindowState(void* data, Evas_Object*, void*) { static_cast<Framework*>(data)->ScheduleUpdate(); }

void Framework::OnVisibility(void* data, Evas*, Evas_Object*, void*) {
  static_cast<Framework*>(data)->ScheduleUpdate();
}

// The application's window is the TV's screen: once X has mapped it, it goes to
// the screen's top-left corner (a desktop window manager may have placed it at
// the pointer) and gets the keyboard, as the foreground application on a TV does.
Eina_Bool Framework::OnMapped(void* data, int, void* event) {
  auto* self = static_cast<Framework*>(data);
  const auto* mapped = static_cast<const Ecore_X_Event_Window_Show*>(event);
  for (const Window& w : self->m_windows) {
    if (elm_win_xwindow_get(w.object) != mapped->win) continue;
    // Where it is on the screen: a window manager's frame holds it at the frame's origin.
    int x = 0, y = 0;
    const Ecore_X_Window root = ecore_x_window_root_get(mapped->win);
    for (Ecore_X_Window win = mapped->win; win != 0 && win != root; win = ecore_x_window_parent_get(win)) {
      int dx = 0, dy = 0;
      ecore_x_window_geometry_get(win, &dx, &dy, nullptr, nullptr);
      x += dx;
      y += dy;
    }
    if (x != 0 || y != 0) ecore_x_window_move(mapped->win, 0, 0);
    ecore_x_window_focus(mapped->win);
  }
  return ECORE_CALLBACK_PASS_ON;
}

void Framework::OnWindowDel(void* data, Evas*, Evas_Object* window, void*) {
  auto* self = static_cast<Framework*>(data);
  self->Forget(window);
  // Without a window this process can show nothing: the next start is the TV's application.
  if (self->m_windows.empty()) self->m_instance.Close();
  self->ScheduleUpdate();
}

}  // namespace

namespace tvsim {

int ExitRequests() { return s_exitRequests; }
void ResetExitRequests() { s_exitRequests = 0; }

}  // namespace tvsim

extern "C" {

int ui_app_main(int argc, char** argv, ui_app_lifecycle_callback_s* callback, void* user_data) {
  if (callback == nullptr || s_running != nullptr) return kErrorInvalidParameter;
  // A result fault ends the call at once with that error, before any callback.
  return tvsim::RunPurePort<int>("ui_app_main", nlohmann::json::object(), {}, kErrorToolkit, [&](nlohmann::json&) {
    Framework framework(*callback, user_data);
    return framework.Run(argc, argv);
  });
}

void ui_app_exit(void) {
  ++s_exitRequests;
  if (s_running != nullptr) {
    s_running->RequestExit();
  } else if (ecore_main_loop_nested_get() > 0) {
    ecore_main_loop_quit();
  }
}

int ui_app_add_event_handler(app_event_handler_h* handler, app_event_type_e event_type, app_event_cb callback,
                             void* user_data) {
  if (handler == nullptr || callback == nullptr || event_type < APP_EVENT_LOW_MEMORY ||
      event_type > APP_EVENT_REGION_FORMAT_CHANGED) {
    return kErrorInvalidParameter;
  }
  s_handlers.push_back(std::make_unique<app_event_handler>(app_event_handler{event_type, callback, user_data}));
  *handler = s_handlers.back().get();
  return kErrorNone;
}

int ui_app_remove_event_handler(app_event_handler_h handler) {
  const auto it = std::find_if(s_handlers.begin(), s_handlers.end(),
                               [handler](const auto& h) { return h.get() == handler; });
  if (it == s_handlers.end()) return kErrorInvalidParameter;
  s_handlers.erase(it);
  return kErrorNone;
}

int ui_orientation_get(void) {
  std::string language = tvsim::LanguageSetting();
  if (language.empty()) language = tvsim::AppliedLanguage();
  return tvsim::IsRightToLeft(language) ? 1 : 0;
}

// The UI assist library has nothing to do on the simulated TV.
int ui_assist_init(int, int) { return 0; }
void ui_assist_shutdown(void) {}

}  // extern "C"
