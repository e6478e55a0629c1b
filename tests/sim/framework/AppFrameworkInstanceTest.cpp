// One running application per TV: a second start hands its launch request to the
// running instance, whichever of the two processes started first. The other
// process is tests/sim/framework/TinyApp.cpp, which prints its lifecycle callbacks.
#include <memory>

#include "SimTestUtil.h"
#include "TempTv.h"

namespace {

using simtest::Events;
using simtest::PumpUntil;
using simtest::TestApp;

// The tiny application as a child process on the same TV, its stdout read line by line.
class TinyApp {
 public:
  explicit TinyApp(const tvtest::TempTv& tv) {
    m_data = ecore_event_handler_add(ECORE_EXE_EVENT_DATA, OnData, this);
    m_del = ecore_event_handler_add(ECORE_EXE_EVENT_DEL, OnDel, this);
    const std::string command = "TVSIM_DB='" + tv.DbPath() + "' TVSIM_LOG='" + tv.LogPath() + "' exec '" TV_TINY_APP "'";
    m_exe = ecore_exe_pipe_run(
        command.c_str(), static_cast<Ecore_Exe_Flags>(ECORE_EXE_PIPE_READ | ECORE_EXE_PIPE_READ_LINE_BUFFERED), this);
  }
  ~TinyApp() {
    if (m_exe != nullptr && !exited) ecore_exe_kill(m_exe);
    ecore_event_handler_del(m_data);
    ecore_event_handler_del(m_del);
  }
  bool Started() const { return m_exe != nullptr; }
  void Terminate() { ecore_exe_terminate(m_exe); }
  int Count(const std::string& line) const { return static_cast<int>(std::count(lines.begin(), lines.end(), line)); }

  Events lines;
  bool exited = false;
  int exitCode = -1;

 private:
  static Eina_Bool OnData(void* data, int, void* event) {
    auto* self = static_cast<TinyApp*>(data);
    auto* e = static_cast<Ecore_Exe_Event_Data*>(event);
    if (e->exe != self->m_exe) return ECORE_CALLBACK_PASS_ON;
    for (int i = 0; e->lines != nullptr && e->lines[i].line != nullptr; ++i) self->lines.push_back(e->lines[i].line);
    return ECORE_CALLBACK_DONE;
  }
  static Eina_Bool OnDel(void* data, int, void* event) {
    auto* self = static_cast<TinyApp*>(data);
    auto* e = static_cast<Ecore_Exe_Event_Del*>(event);
    if (e->exe != self->m_exe) return ECORE_CALLBACK_PASS_ON;
    self->exited = true;
    self->exitCode = e->exited ? e->exit_code : 128 + e->exit_signal;
    return ECORE_CALLBACK_DONE;
  }

  Ecore_Exe* m_exe = nullptr;
  Ecore_Event_Handler* m_data = nullptr;
  Ecore_Event_Handler* m_del = nullptr;
};

TEST(AppFrameworkInstance, SecondStartForwardsToTheRunningApplicationAndEndsWithZero) {
  tvtest::TempTv tv;
  TestApp app;
  std::unique_ptr<TinyApp> second;
  app.onResume = [&] {
    second = std::make_unique<TinyApp>(tv);
    ASSERT_TRUE(second->Started());
  };
  app.onControl = [&] {
    if (app.Count("app_control") == 2) ui_app_exit();
  };
  EXPECT_EQ(app.Run(), 0);
  ASSERT_TRUE(second);
  ASSERT_TRUE(PumpUntil([&] { return second->exited; }, 30));
  EXPECT_EQ(app.events, (Events{"create", "app_control", "resume", "app_control", "terminate"}));
  EXPECT_EQ(second->exitCode, 0);
  EXPECT_EQ(second->lines, (Events{"result 0"}));  // no create: it never became an application
}

TEST(AppFrameworkInstance, StartingBesideARunningApplicationRunsNoCallbackAndTheOtherEndsOnSigterm) {
  tvtest::TempTv tv;
  TinyApp first(tv);
  ASSERT_TRUE(first.Started());
  ASSERT_TRUE(PumpUntil([&] { return first.Count("resume") == 1 || first.exited; }, 30));
  ASSERT_FALSE(first.exited) << "the first instance ended early";

  TestApp app;
  EXPECT_EQ(app.Run(), 0);
  EXPECT_TRUE(app.events.empty());
  ASSERT_TRUE(PumpUntil([&] { return first.Count("app_control") == 2; }, 30));
  first.Terminate();
  ASSERT_TRUE(PumpUntil([&] { return first.exited; }, 30));
  EXPECT_EQ(first.exitCode, 0);
  EXPECT_EQ(first.lines, (Events{"create", "app_control", "resume", "app_control", "terminate", "result 0"}));

  // With the first instance gone, a start on the same TV runs on its own again.
  TestApp again;
  again.onResume = [] { ui_app_exit(); };
  EXPECT_EQ(again.Run(), 0);
  EXPECT_EQ(again.events, (Events{"create", "app_control", "resume", "terminate"}));
}

}  // namespace
