// The application framework driven as the product drives it: a small application
// written here runs through ui_app_main in the buffer engine against a fresh TV.
#include <Elementary.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "App.h"
#include "AppFramework.h"
#include "SimTestUtil.h"
#include "TempTv.h"

namespace {

using simtest::Events;
using simtest::Later;
using simtest::TestApp;

TEST(AppFramework, SizesTheApplicationWindowLikeTheTvScreen) {
  struct Case { const char* screen; int width, height; } cases[] = {
      {nullptr, 1920, 1080}, {"1280x720", 1280, 720}, {"3840x2160", 3840, 2160}, {"wide", 1920, 1080},
      // Beyond 8K UHD (what the software renderer takes) or not plain digits: the default.
      {"7680x1080", 7680, 1080}, {"1920x4320", 1920, 4320}, {"7681x1080", 1920, 1080}, {"1920x4321", 1920, 1080},
      {"100000x100000", 1920, 1080}, {"99999999999x720", 1920, 1080}, {"0x720", 1920, 1080},
      {"-1280x720", 1920, 1080}, {"+1280x720", 1920, 1080}, {"1280x720 ", 1920, 1080}, {"1280 x720", 1920, 1080}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.screen ? c.screen : "(unset)");
    tvtest::TempTv tv;
    if (c.screen) setenv("TVSIM_SCREEN", c.screen, 1);
    TestApp app;
    int width = 0, height = 0;
    app.onResume = [&] {
      evas_object_geometry_get(app.window, nullptr, nullptr, &width, &height);
      ui_app_exit();
    };
    EXPECT_EQ(app.Run(), 0);
    unsetenv("TVSIM_SCREEN");
    EXPECT_EQ(std::pair(width, height), std::pair(c.width, c.height));
  }
}

TEST(AppFramework, EndsThroughTerminateOnEveryWayOutAndPausesOnlyWhenFocusStaysAway) {
  const Events untilResume = {"create", "app_control", "resume"};
  auto then = [&](Events more) { Events e = untilResume; e.insert(e.end(), more.begin(), more.end()); return e; };
  struct Case { const char* name; std::function<void(TestApp&)> setUp; int result; Events events; int exitRequests; };
  Case cases[] = {
      {"ui_app_exit from a timer", [](TestApp& app) {
         app.onResume = [] {
           ecore_timer_add(0.01, [](void*) -> Eina_Bool { ui_app_exit(); return ECORE_CALLBACK_CANCEL; }, nullptr);
         };
       }, 0, then({"terminate"}), 1},
      {"ui_app_exit in the launch request", [](TestApp& app) { app.onControl = [] { ui_app_exit(); }; },
       0, {"create", "app_control", "terminate"}, 1},
      {"ui_app_exit in create", [](TestApp& app) { app.onCreate = [] { ui_app_exit(); return true; }; },
       0, {"create", "terminate"}, 1},
      {"create fails", [](TestApp& app) { app.onCreate = [] { return false; }; }, 1, {"create"}, 0},
      {"SIGTERM", [](TestApp& app) { app.onResume = [] { raise(SIGTERM); }; }, 0, then({"terminate"}), 0},
      {"SIGINT", [](TestApp& app) { app.onResume = [] { raise(SIGINT); }; }, 0, then({"terminate"}), 0},
      {"SIGHUP", [](TestApp& app) { app.onResume = [] { raise(SIGHUP); }; }, 0, then({"terminate"}), 0},
      // Nothing can be shown: the run ends at once, with its own result.
      {"no window after the launch request", [](TestApp& app) { app.makeWindow = false; },
       3, {"create", "app_control", "terminate"}, 0},
      {"window closed", [](TestApp& app) {
         app.onResume = [&app] { Later([&app] { evas_object_del(std::exchange(app.window, nullptr)); }); };
         app.onPause = [] { ui_app_exit(); };
       }, 0, then({"pause", "terminate"}), 1},
      // Losing and regaining focus at once (as the UI tests do to focus the window)
      // is no pause; losing it for good is, and the product exits there.
      {"focus blinks, then goes away", [](TestApp& app) {
         app.onResume = [&app] {
           ecore_evas_focus_set(app.Canvas(), EINA_FALSE);
           ecore_evas_focus_set(app.Canvas(), EINA_TRUE);
           Later([&app] { app.events.push_back("focus away"); ecore_evas_focus_set(app.Canvas(), EINA_FALSE); });
         };
         app.onPause = [] { ui_app_exit(); };
       }, 0, then({"focus away", "pause", "terminate"}), 1},
  };
  for (Case& c : cases) {
    SCOPED_TRACE(c.name);
    tvtest::TempTv tv;
    tvsim::ResetExitRequests();
    TestApp app;
    c.setUp(app);
    EXPECT_EQ(app.Run(), c.result);
    EXPECT_EQ(app.events, c.events);
    EXPECT_EQ(tvsim::ExitRequests(), c.exitRequests);
  }
}

TEST(AppFramework, RightToLeftLanguagesTurnTheOrientation) {
  tvtest::TempTv tv;
  const std::pair<const char*, int> directions[] = {{"en_US", 0}, {"ar_AE", 1}, {"he_IL", 1}, {"fa_IR", 1}, {"ur_PK", 1},
                                                    {"de_DE", 0}, {"fr_FR", 0}, {"ko_KR", 0}, {"arn_CL", 0}};
  for (const auto& [language, rightToLeft] : directions) {
    SCOPED_TRACE(language);
    tv.Set("db/menu/system/language", language);
    EXPECT_EQ(ui_orientation_get(), rightToLeft);
  }
}

}  // namespace
