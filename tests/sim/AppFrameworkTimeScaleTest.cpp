// TVSIM_TIME_SCALE reaches the application's own timers (this executable is linked
// like the application, with ecore_timer_add wrapped) and nothing else.
#include <cstdlib>

#include "SimTestUtil.h"
#include "TempTv.h"
#include "TimeScale.h"

namespace {

class TimeScaleTest : public ::testing::Test {
 protected:
  void TearDown() override { Scale(nullptr); }
  static void Scale(const char* setting) {
    if (setting) setenv("TVSIM_TIME_SCALE", setting, 1);
    else unsetenv("TVSIM_TIME_SCALE");
    tvsim::ReloadTimeScaleForTesting();
  }
};

Eina_Bool Never(void*) {
  ADD_FAILURE() << "timer fired";
  return ECORE_CALLBACK_CANCEL;
}

TEST_F(TimeScaleTest, ScalesApplicationTimersAndLeavesLoopTimersAlone) {
  const std::pair<const char*, double> cases[] = {  // setting, what a 30 s application timer becomes
      {nullptr, 30.0}, {"0.001", 0.03}, {"0.5", 15.0}, {"2", 60.0}, {"0", 30.0}, {"-1", 30.0}, {"fast", 30.0},
      {"0.1s", 30.0}};
  for (const auto& [setting, seconds] : cases) {
    SCOPED_TRACE(setting ? setting : "(unset)");
    Scale(setting);
    Ecore_Timer* application = ecore_timer_add(30.0, Never, nullptr);
    Ecore_Timer* platform = ecore_timer_loop_add(30.0, Never, nullptr);
    EXPECT_DOUBLE_EQ(ecore_timer_interval_get(application), seconds);
    EXPECT_DOUBLE_EQ(ecore_timer_interval_get(platform), 30.0);
    EXPECT_DOUBLE_EQ(tvsim::Scaled(30.0), seconds);
    ecore_timer_del(application);
    ecore_timer_del(platform);
  }
}

TEST_F(TimeScaleTest, ThirtySecondApplicationTimeOutEndsTheRunWithinABoundedWait) {
  tvtest::TempTv tv;
  Scale("0.001");
  simtest::TestApp app;
  app.onResume = [&app] {
    // The product's inactivity time-out, as the application writes it.
    ecore_timer_add(30.0, [](void* data) -> Eina_Bool {
      static_cast<simtest::TestApp*>(data)->events.push_back("time-out");
      ui_app_exit();
      return ECORE_CALLBACK_CANCEL;
    }, &app);
  };
  EXPECT_EQ(app.Run(), 0);
  EXPECT_EQ(app.events, (simtest::Events{"create", "app_control", "resume", "time-out", "terminate"}));
}

}  // namespace
