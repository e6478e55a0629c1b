// Helpers shared by the simulator's own tests.
#pragma once

#include <Elementary.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "App.h"
#include "UiDriver.h"

namespace simtest {

using tvtest::PumpUntil;

inline nlohmann::json ReadScenario(const std::string& name) {
  std::ifstream in(std::string(TV_SOURCE_DIR) + "/scenarios/" + name);
  return nlohmann::json::parse(in);
}

inline std::string Tvctl() { return std::string(TV_BINARY_DIR) + "/tools/tvctl"; }

using Events = std::vector<std::string>;

// A test application: records its lifecycle callbacks, opens a window on the
// first launch request (as the product does) and lets each test add behaviour.
struct TestApp {
  Events events;
  std::function<bool()> onCreate = [] { return true; };
  std::function<void()> onControl, onResume, onPause;
  bool makeWindow = true;  // false: an application that cannot make its window
  Evas_Object* window = nullptr;

  ~TestApp() {
    if (window != nullptr) evas_object_del(window);
  }
  Ecore_Evas* Canvas() const { return ecore_evas_ecore_evas_get(evas_object_evas_get(window)); }
  int Count(const std::string& event) const { return static_cast<int>(std::count(events.begin(), events.end(), event)); }
  static TestApp* Self(void* data, const char* event) {
    auto* self = static_cast<TestApp*>(data);
    self->events.push_back(event);
    return self;
  }
  static void Call(const std::function<void()>& fn) {
    if (fn) fn();
  }

  // Runs ui_app_main; a 20 s guard (a loop timer, never scaled) ends a run that would otherwise hang.
  int Run() {
    Ecore_Timer* guard = ecore_timer_loop_add(20.0, [](void* data) -> Eina_Bool {
      Self(data, "guard");
      ADD_FAILURE() << "the application did not end";
      ui_app_exit();
      return ECORE_CALLBACK_CANCEL;
    }, this);
    ui_app_lifecycle_callback_s callbacks = {
        [](void* d) { return Self(d, "create")->onCreate(); },
        [](void* d) { Self(d, "terminate"); },
        [](void* d) { Call(Self(d, "pause")->onPause); },
        [](void* d) { Call(Self(d, "resume")->onResume); },
        [](app_control_h request, void* d) {
          EXPECT_NE(request, nullptr);
          TestApp* self = Self(d, "app_control");
          if (self->window == nullptr && self->makeWindow) {
            self->window = elm_win_add(nullptr, "framework test", ELM_WIN_BASIC);
            evas_object_show(self->window);
          }
          Call(self->onControl);
        }};
    char name[] = "framework-test";
    char* argv[] = {name, nullptr};
    const int result = ui_app_main(1, argv, &callbacks, this);
    if (Count("guard") == 0) ecore_timer_del(guard);
    return result;
  }
};

// Runs step from the main loop, after the current callback has returned.
inline void Later(std::function<void()> step) {
  ecore_job_add([](void* data) {
    auto* fn = static_cast<std::function<void()>*>(data);
    (*fn)();
    delete fn;
  }, new std::function<void()>(std::move(step)));
}

}  // namespace simtest
