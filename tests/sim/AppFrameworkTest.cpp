// The application framework driven as the product drives it: a small application
// written here runs through ui_app_main in the buffer engine against a fresh TV.
#include <Ecore_Input.h>
#include <Elementary.h>
#include <gtest/gtest.h>
#include <libintl.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "App.h"
#include "AppFramework.h"
#include "Language.h"
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
      {"focus lost and regained", [](TestApp& app) {
         app.onResume = [&app] {
           if (app.Count("resume") == 2) return ui_app_exit();
           Later([&app] { ecore_evas_focus_set(app.Canvas(), EINA_FALSE); });
         };
         app.onPause = [&app] { Later([&app] { ecore_evas_focus_set(app.Canvas(), EINA_TRUE); }); };
       }, 0, then({"pause", "resume", "terminate"}), 1},
      {"window hidden", [](TestApp& app) {
         app.onResume = [&app] { Later([&app] { evas_object_hide(app.window); }); };
         app.onPause = [] { ui_app_exit(); };
       }, 0, then({"pause", "terminate"}), 1},
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

TEST(AppFramework, ExitOutsideTheApplicationCountsAndQuitsTheRunningLoop) {
  tvsim::ResetExitRequests();
  ui_app_exit();  // no loop runs: only counted
  ecore_timer_loop_add(0.0, [](void*) -> Eina_Bool { ui_app_exit(); return ECORE_CALLBACK_CANCEL; }, nullptr);
  Ecore_Timer* guard = ecore_timer_loop_add(20.0, [](void*) -> Eina_Bool {
    ADD_FAILURE() << "the loop did not end";
    ecore_main_loop_quit();
    return ECORE_CALLBACK_CANCEL;
  }, nullptr);
  ecore_main_loop_begin();
  ecore_timer_del(guard);
  EXPECT_EQ(tvsim::ExitRequests(), 2);
}

// A catalogue of our own, so the test does not depend on the product's translations.
void WriteCatalogue(const std::string& root, const std::string& language, const std::string& text) {
  const std::string dir = root + "/" + language + "/LC_MESSAGES";
  ASSERT_EQ(std::system(("mkdir -p '" + dir + "'").c_str()), 0);
  std::ofstream(root + "/" + language + ".po") << "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
                                               << "msgid \"TV_SID_GREETING\"\nmsgstr \"" << text << "\"\n";
  ASSERT_EQ(std::system(("msgfmt -o '" + dir + "/tvsim-fw-test.mo' '" + root + "/" + language + ".po'").c_str()), 0);
}

// What the application sees: its text and direction, at resume and in the handler.
struct Seen {
  Events seen;
  int calls = 0;
};
void Look(Seen& s) {
  s.seen.push_back(std::string(dgettext("tvsim-fw-test", "TV_SID_GREETING")) + " " + std::to_string(ui_orientation_get()));
}

TEST(AppFramework, LanguageChangeSwitchesTranslationsAndDirectionBeforeTheHandlerRuns) {
  tvtest::TempTv tv;
  WriteCatalogue(tv.Dir() + "/locale", "en", "Hello");
  WriteCatalogue(tv.Dir() + "/locale", "ar", "مرحبا");
  bindtextdomain("tvsim-fw-test", (tv.Dir() + "/locale").c_str());
  bind_textdomain_codeset("tvsim-fw-test", "UTF-8");
  tv.Set("db/menu/system/language", "en_US");
  Seen seen;
  app_event_handler_h handle = nullptr;
  ASSERT_EQ(ui_app_add_event_handler(&handle, APP_EVENT_LANGUAGE_CHANGED, [](app_event_info_h info, void* data) {
    EXPECT_NE(info, nullptr);
    auto* s = static_cast<Seen*>(data);
    ++s->calls;
    Look(*s);
    ui_app_exit();
  }, &seen), 0);
  TestApp app;
  app.onResume = [&] {
    Look(seen);
    tv.Set("db/menu/system/language", "ar_AE");
  };
  EXPECT_EQ(app.Run(), 0);
  EXPECT_EQ(ui_app_remove_event_handler(handle), 0);
  EXPECT_EQ(ui_app_remove_event_handler(handle), -22);
  tvsim::ApplyLanguage("en_US");
  EXPECT_EQ(seen.calls, 1);
  EXPECT_EQ(seen.seen, (Events{"Hello 0", "مرحبا 1"}));

  const std::pair<const char*, int> directions[] = {{"en_US", 0}, {"ar_AE", 1}, {"he_IL", 1}, {"fa_IR", 1}, {"ur_PK", 1},
                                                    {"de_DE", 0}, {"fr_FR", 0}, {"ko_KR", 0}, {"arn_CL", 0}};
  for (const auto& [language, rightToLeft] : directions) {
    SCOPED_TRACE(language);
    tv.Set("db/menu/system/language", language);
    EXPECT_EQ(ui_orientation_get(), rightToLeft);
  }
}

TEST(AppFramework, DesktopKeysArriveAsRemoteKeysWhileTheApplicationRuns) {
  const std::pair<const char*, const char*> keys[] = {  // pressed, seen
      {"Escape", "XF86Back"}, {"Return", "Return"}, {"KP_Enter", "Return"}, {"Down", "Down"}};
  tvtest::TempTv tv;
  Events seen;
  auto record = [](void* data, int type, void* event) -> Eina_Bool {
    auto* key = static_cast<Ecore_Event_Key*>(event);
    static_cast<Events*>(data)->push_back(std::string(type == ECORE_EVENT_KEY_DOWN ? "down " : "up ") + key->keyname +
                                          "/" + key->key);
    return ECORE_CALLBACK_PASS_ON;
  };
  ecore_event_init();
  Ecore_Event_Handler* down = ecore_event_handler_add(ECORE_EVENT_KEY_DOWN, record, &seen);
  Ecore_Event_Handler* up = ecore_event_handler_add(ECORE_EVENT_KEY_UP, record, &seen);
  auto send = [](int type, const char* name) {
    auto* key = static_cast<Ecore_Event_Key*>(calloc(1, sizeof(Ecore_Event_Key)));
    key->keyname = key->key = name;
    ecore_event_add(type, key, nullptr, nullptr);
  };
  TestApp app;
  app.onResume = [&] {
    for (const auto& key : keys) {
      send(ECORE_EVENT_KEY_DOWN, key.first);
      send(ECORE_EVENT_KEY_UP, key.first);
    }
    Later([] { ui_app_exit(); });
  };
  EXPECT_EQ(app.Run(), 0);
  send(ECORE_EVENT_KEY_DOWN, "Escape");  // outside ui_app_main the names stay as they are
  ecore_main_loop_iterate();
  ecore_event_handler_del(down);
  ecore_event_handler_del(up);
  ecore_event_shutdown();
  Events expected;
  for (const auto& key : keys) {
    for (const char* way : {"down ", "up "}) expected.push_back(std::string(way) + key.second + "/" + key.second);
  }
  expected.push_back("down Escape/Escape");
  EXPECT_EQ(seen, expected);
}

}  // namespace
