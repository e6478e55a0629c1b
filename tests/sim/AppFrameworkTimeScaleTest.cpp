// TVSIM_TIME_SCALE reaches the application's own timers (this executable is linked
// like the application, with ecore_timer_add wrapped) and nothing else.
#include <Elementary.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "App.h"
#include "TempTv.h"
#include "TimeScale.h"

namespace {

class TimeScaleTest : public ::testing::Test {
 protected:
  void TearDown() override {
    unsetenv("TVSIM_TIME_SCALE");
    tvsim::ReloadTimeScaleForTesting();
  }
};

Eina_Bool Never(void*) {
  ADD_FAILURE() << "timer fired";
  return ECORE_CALLBACK_CANCEL;
}

TEST_F(TimeScaleTest, ScalesApplicationTimersAndLeavesLoopTimersAlone) {
  struct Case {
    const char* setting;
    double seconds;  // what a 30 s application timer becomes
  } cases[] = {{nullptr, 30.0}, {"0.001", 0.03}, {"0.5", 15.0}, {"2", 60.0},
               {"0", 30.0},     {"-1", 30.0},    {"fast", 30.0}, {"0.1s", 30.0}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.setting ? c.setting : "(unset)");
    if (c.setting) {
      setenv("TVSIM_TIME_SCALE", c.setting, 1);
    } else {
      unsetenv("TVSIM_TIME_SCALE");
    }
    tvsim::ReloadTimeScaleForTesting();
    Ecore_Timer* application = ecore_timer_add(30.0, Never, nullptr);
    Ecore_Timer* platform = ecore_timer_loop_add(30.0, Never, nullptr);
    EXPECT_DOUBLE_EQ(ecore_timer_interval_get(application), c.seconds);
    EXPECT_DOUBLE_EQ(ecore_timer_interval_get(platform), 30.0);
    EXPECT_DOUBLE_EQ(tvsim::Scaled(30.0), c.seconds);
    ecore_timer_del(application);
    ecore_timer_del(platform);
  }
}

struct Recorded {
  std::vector<std::string> events;
  Evas_Object* window = nullptr;
};

TEST_F(TimeScaleTest, ThirtySecondApplicationTimeOutEndsTheRunWithinABoundedWait) {
  tvtest::TempTv tv;
  setenv("TVSIM_TIME_SCALE", "0.001", 1);
  tvsim::ReloadTimeScaleForTesting();
  Recorded run;
  // The bound is a loop timer, so it is not scaled.
  Ecore_Timer* guard = ecore_timer_loop_add(
      20.0,
      [](void* data) -> Eina_Bool {
        static_cast<Recorded*>(data)->events.push_back("guard");
        ui_app_exit();
        return ECORE_CALLBACK_CANCEL;
      },
      &run);
  ui_app_lifecycle_callback_s callbacks = {
      [](void* d) { static_cast<Recorded*>(d)->events.push_back("create"); return true; },
      [](void* d) { static_cast<Recorded*>(d)->events.push_back("terminate"); },
      nullptr,
      [](void* d) {
        static_cast<Recorded*>(d)->events.push_back("resume");
        // The product's inactivity time-out, as the application writes it.
        ecore_timer_add(30.0, [](void* data) -> Eina_Bool {
          static_cast<Recorded*>(data)->events.push_back("time-out");
          ui_app_exit();
          return ECORE_CALLBACK_CANCEL;
        }, d);
      },
      [](app_control_h, void* d) {
        auto* self = static_cast<Recorded*>(d);
        self->events.push_back("app_control");
        self->window = elm_win_add(nullptr, "time scale", ELM_WIN_BASIC);
        evas_object_show(self->window);
      }};
  char name[] = "time-scale-test";
  char* argv[] = {name, nullptr};
  EXPECT_EQ(ui_app_main(1, argv, &callbacks, &run), 0);
  if (run.window != nullptr) evas_object_del(run.window);
  if (std::find(run.events.begin(), run.events.end(), "guard") == run.events.end()) ecore_timer_del(guard);
  EXPECT_EQ(run.events, (std::vector<std::string>{"create", "app_control", "resume", "time-out", "terminate"}));
}

}  // namespace
