// One running application per TV: a second start hands its launch request to the
// running instance, whichever of the two processes started first. The other
// process is tests/sim/TinyApp.cpp, which prints its lifecycle callbacks.
#include <Elementary.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <memory>
#include <functional>
#include <string>
#include <vector>

#include "App.h"
#include "TempTv.h"

namespace {

using Lines = std::vector<std::string>;

// The tiny application as a child process on the same TV, its stdout read line by line.
class TinyApp {
 public:
  explicit TinyApp(const tvtest::TempTv& tv) {
    m_data = ecore_event_handler_add(ECORE_EXE_EVENT_DATA, OnData, this);
    m_del = ecore_event_handler_add(ECORE_EXE_EVENT_DEL, OnDel, this);
    const std::string command =
        "TVSIM_DB='" + tv.DbPath() + "' TVSIM_LOG='" + tv.LogPath() + "' exec '" TV_TINY_APP "'";
    m_exe = ecore_exe_pipe_run(command.c_str(), static_cast<Ecore_Exe_Flags>(ECORE_EXE_PIPE_READ |
                                                                             ECORE_EXE_PIPE_READ_LINE_BUFFERED),
                               this);
  }
  ~TinyApp() {
    if (m_exe != nullptr && !m_bExited) ecore_exe_kill(m_exe);
    ecore_event_handler_del(m_data);
    ecore_event_handler_del(m_del);
  }

  bool Started() const { return m_exe != nullptr; }
  void Terminate() { ecore_exe_terminate(m_exe); }
  bool Exited() const { return m_bExited; }
  int ExitCode() const { return m_nExitCode; }
  const Lines& Output() const { return m_lines; }
  int Count(const std::string& line) const { return static_cast<int>(std::count(m_lines.begin(), m_lines.end(), line)); }

 private:
  static Eina_Bool OnData(void* data, int, void* event) {
    auto* self = static_cast<TinyApp*>(data);
    auto* e = static_cast<Ecore_Exe_Event_Data*>(event);
    if (e->exe != self->m_exe) return ECORE_CALLBACK_PASS_ON;
    for (int i = 0; e->lines != nullptr && e->lines[i].line != nullptr; ++i) self->m_lines.push_back(e->lines[i].line);
    return ECORE_CALLBACK_DONE;
  }
  static Eina_Bool OnDel(void* data, int, void* event) {
    auto* self = static_cast<TinyApp*>(data);
    auto* e = static_cast<Ecore_Exe_Event_Del*>(event);
    if (e->exe != self->m_exe) return ECORE_CALLBACK_PASS_ON;
    self->m_bExited = true;
    self->m_nExitCode = e->exited ? e->exit_code : 128 + e->exit_signal;
    return ECORE_CALLBACK_DONE;
  }

  Ecore_Exe* m_exe = nullptr;
  Ecore_Event_Handler* m_data = nullptr;
  Ecore_Event_Handler* m_del = nullptr;
  Lines m_lines;
  bool m_bExited = false;
  int m_nExitCode = -1;
};

// Runs the loop until pred() holds or the bound passes; no timing is asserted.
bool PumpUntil(const std::function<bool()>& pred, double bound = 30.0) {
  const double deadline = ecore_time_get() + bound;
  while (!pred() && ecore_time_get() < deadline) {
    Ecore_Timer* tick = ecore_timer_loop_add(0.005, [](void*) -> Eina_Bool { return ECORE_CALLBACK_CANCEL; }, nullptr);
    ecore_main_loop_iterate_may_block(EINA_TRUE);
    ecore_timer_del(tick);
  }
  return pred();
}

struct InProcessApp {
  Lines events;
  std::function<void()> onResume, onControl;

  int Run() {
    ui_app_lifecycle_callback_s callbacks = {
        [](void* d) { static_cast<InProcessApp*>(d)->events.push_back("create"); return true; },
        [](void* d) { static_cast<InProcessApp*>(d)->events.push_back("terminate"); },
        [](void* d) { static_cast<InProcessApp*>(d)->events.push_back("pause"); },
        [](void* d) {
          auto* self = static_cast<InProcessApp*>(d);
          self->events.push_back("resume");
          if (self->onResume) self->onResume();
        },
        [](app_control_h, void* d) {
          auto* self = static_cast<InProcessApp*>(d);
          self->events.push_back("app_control");
          if (self->window == nullptr) {
            self->window = elm_win_add(nullptr, "instance test", ELM_WIN_BASIC);
            evas_object_show(self->window);
          }
          if (self->onControl) self->onControl();
        }};
    char name[] = "instance-test";
    char* argv[] = {name, nullptr};
    return ui_app_main(1, argv, &callbacks, this);
  }
  ~InProcessApp() {
    if (window != nullptr) evas_object_del(window);
  }
  Evas_Object* window = nullptr;
};

TEST(AppFrameworkInstance, SecondStartForwardsToTheRunningApplicationAndEndsWithZero) {
  tvtest::TempTv tv;
  InProcessApp app;
  std::unique_ptr<TinyApp> second;
  Ecore_Timer* guard = ecore_timer_loop_add(
      30.0, [](void*) -> Eina_Bool { ADD_FAILURE() << "no forwarded launch"; ui_app_exit(); return ECORE_CALLBACK_CANCEL; },
      nullptr);
  app.onResume = [&] {
    second = std::make_unique<TinyApp>(tv);
    ASSERT_TRUE(second->Started());
  };
  app.onControl = [&] {
    if (std::count(app.events.begin(), app.events.end(), "app_control") == 2) ui_app_exit();
  };
  EXPECT_EQ(app.Run(), 0);
  ecore_timer_del(guard);
  ASSERT_TRUE(second);
  ASSERT_TRUE(PumpUntil([&] { return second->Exited(); }));

  EXPECT_EQ(app.events, (Lines{"create", "app_control", "resume", "app_control", "terminate"}));
  EXPECT_EQ(second->ExitCode(), 0);
  EXPECT_EQ(second->Output(), (Lines{"result 0"}));  // no create: it never became an application
}

TEST(AppFrameworkInstance, StartingBesideARunningApplicationRunsNoCallbackAndTheOtherEndsOnSigterm) {
  tvtest::TempTv tv;
  TinyApp first(tv);
  ASSERT_TRUE(first.Started());
  ASSERT_TRUE(PumpUntil([&] { return first.Count("resume") == 1 || first.Exited(); }));
  ASSERT_FALSE(first.Exited()) << "the first instance ended early";

  InProcessApp app;
  EXPECT_EQ(app.Run(), 0);
  EXPECT_TRUE(app.events.empty());

  ASSERT_TRUE(PumpUntil([&] { return first.Count("app_control") == 2; }));
  first.Terminate();
  ASSERT_TRUE(PumpUntil([&] { return first.Exited(); }));
  EXPECT_EQ(first.ExitCode(), 0);
  EXPECT_EQ(first.Output(), (Lines{"create", "app_control", "resume", "app_control", "terminate", "result 0"}));

  // With the first instance gone, a start on the same TV runs on its own again.
  InProcessApp again;
  again.onResume = [] { ui_app_exit(); };
  EXPECT_EQ(again.Run(), 0);
  EXPECT_EQ(again.events, (Lines{"create", "app_control", "resume", "terminate"}));
}

}  // namespace
