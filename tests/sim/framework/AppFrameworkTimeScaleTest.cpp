// TVSIM_TIME_SCALE reaches the application's own timers (this executable is linked
// like the application, with ecore_timer_add wrapped) and nothing else. The
// program's own scaled time-out is run end to end in tests/app/ShellTest.cpp.
#include <cstdlib>

#include "SimTestUtil.h"
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
      {"0.1s", 30.0},
      // So large that a time-out would overflow: the default, with a warning.
      {"1000", 30000.0}, {"1000.5", 30.0}, {"1e308", 30.0}, {"1e400", 30.0}, {"inf", 30.0}, {"nan", 30.0}};
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

}  // namespace
