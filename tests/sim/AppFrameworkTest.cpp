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
#include "TempTv.h"

namespace {

// A test application: records its lifecycle callbacks, opens a window on the
// first launch request (as the product does) and lets each test add behaviour.
struct TestApp {
  std::vector<std::string> events;
  std::function<bool()> onCreate = [] { return true; };
  std::function<void()> onControl, onResume, onPause;
  Evas_Object* window = nullptr;
  int controls = 0;

  ~TestApp() {
    if (window != nullptr) evas_object_del(window);
  }

  Ecore_Evas* Canvas() const { return ecore_evas_ecore_evas_get(evas_object_evas_get(window)); }

  // Runs ui_app_main; a 20 s guard ends a run that would otherwise hang.
  int Run() {
    Ecore_Timer* guard = ecore_timer_loop_add(
        20.0,
        [](void* data) -> Eina_Bool {
          static_cast<TestApp*>(data)->events.push_back("guard");
          ADD_FAILURE() << "the application did not end";
          ui_app_exit();
          return ECORE_CALLBACK_CANCEL;
        },
        this);
    ui_app_lifecycle_callback_s callbacks = {Create, Terminate, Pause, Resume, Control};
    char name[] = "framework-test";
    char* argv[] = {name, nullptr};
    const int result = ui_app_main(1, argv, &callbacks, this);
    if (std::find(events.begin(), events.end(), "guard") == events.end()) ecore_timer_del(guard);
    return result;
  }

  static bool Create(void* data) {
    auto* self = static_cast<TestApp*>(data);
    self->events.push_back("create");
    return self->onCreate();
  }
  static void Control(app_control_h request, void* data) {
    auto* self = static_cast<TestApp*>(data);
    EXPECT_NE(request, nullptr);
    self->events.push_back("app_control");
    if (++self->controls == 1) {
      self->window = elm_win_add(nullptr, "framework test", ELM_WIN_BASIC);
      evas_object_show(self->window);
    }
    if (self->onControl) self->onControl();
  }
  static void Resume(void* data) {
    auto* self = static_cast<TestApp*>(data);
    self->events.push_back("resume");
    if (self->onResume) self->onResume();
  }
  static void Pause(void* data) {
    auto* self = static_cast<TestApp*>(data);
    self->events.push_back("pause");
    if (self->onPause) self->onPause();
  }
  static void Terminate(void* data) { static_cast<TestApp*>(data)->events.push_back("terminate"); }
};

using Events = std::vector<std::string>;

void Later(std::function<void()> step) {
  ecore_job_add(
      [](void* data) {
        auto* fn = static_cast<std::function<void()>*>(data);
        (*fn)();
        delete fn;
      },
      new std::function<void()>(std::move(step)));
}

TEST(AppFramework, CallsTheLifecycleInOrderAndPausesOnlyWhenFocusStaysAway) {
  tvtest::TempTv tv;
  tvsim::ResetExitRequests();
  TestApp app;
  app.onResume = [&app] {
    // Losing and regaining focus at once (as the UI tests do to focus the window)
    // is no pause; losing it for good is, and the product exits there.
    ecore_evas_focus_set(app.Canvas(), EINA_FALSE);
    ecore_evas_focus_set(app.Canvas(), EINA_TRUE);
    Later([&app] {
      app.events.push_back("focus away");
      ecore_evas_focus_set(app.Canvas(), EINA_FALSE);
    });
  };
  app.onPause = [] { ui_app_exit(); };

  EXPECT_EQ(app.Run(), 0);
  EXPECT_EQ(app.events, (Events{"create", "app_control", "resume", "focus away", "pause", "terminate"}));
  EXPECT_EQ(tvsim::ExitRequests(), 1);
}

TEST(AppFramework, SizesTheApplicationWindowLikeTheTvScreen) {
  struct Case {
    const char* screen;
    int width, height;
  } cases[] = {{nullptr, 1920, 1080}, {"1280x720", 1280, 720}, {"3840x2160", 3840, 2160}, {"wide", 1920, 1080}};
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
    EXPECT_EQ(width, c.width);
    EXPECT_EQ(height, c.height);
  }
}

TEST(AppFramework, EndsThroughTerminateOnEveryWayOut) {
  struct Case {
    const char* name;
    std::function<void(TestApp&)> setUp;
    int result;
    Events events;
    int exitRequests;
  } cases[] = {
      {"ui_app_exit from a timer", [](TestApp& app) {
         app.onResume = [] {
           ecore_timer_add(0.01, [](void*) -> Eina_Bool { ui_app_exit(); return ECORE_CALLBACK_CANCEL; }, nullptr);
         };
       }, 0, {"create", "app_control", "resume", "terminate"}, 1},
      {"ui_app_exit in the launch request", [](TestApp& app) { app.onControl = [] { ui_app_exit(); }; },
       0, {"create", "app_control", "terminate"}, 1},
      {"ui_app_exit in create", [](TestApp& app) { app.onCreate = [] { ui_app_exit(); return true; }; },
       0, {"create", "terminate"}, 1},
      {"create fails", [](TestApp& app) { app.onCreate = [] { return false; }; }, 1, {"create"}, 0},
      {"SIGTERM", [](TestApp& app) { app.onResume = [] { raise(SIGTERM); }; },
       0, {"create", "app_control", "resume", "terminate"}, 0},
      {"SIGINT", [](TestApp& app) { app.onResume = [] { raise(SIGINT); }; },
       0, {"create", "app_control", "resume", "terminate"}, 0},
      {"window closed", [](TestApp& app) {
         app.onResume = [&app] { Later([&app] { evas_object_del(std::exchange(app.window, nullptr)); }); };
         app.onPause = [] { ui_app_exit(); };
       }, 0, {"create", "app_control", "resume", "pause", "terminate"}, 1},
      {"focus lost and regained", [](TestApp& app) {
         app.onResume = [&app] {
           if (std::count(app.events.begin(), app.events.end(), "resume") == 2) return ui_app_exit();
           Later([&app] { ecore_evas_focus_set(app.Canvas(), EINA_FALSE); });
         };
         app.onPause = [&app] { Later([&app] { ecore_evas_focus_set(app.Canvas(), EINA_TRUE); }); };
       }, 0, {"create", "app_control", "resume", "pause", "resume", "terminate"}, 1},
      {"window hidden", [](TestApp& app) {
         app.onResume = [&app] { Later([&app] { evas_object_hide(app.window); }); };
         app.onPause = [] { ui_app_exit(); };
       }, 0, {"create", "app_control", "resume", "pause", "terminate"}, 1},
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
  Ecore_Timer* guard = ecore_timer_loop_add(
      20.0, [](void*) -> Eina_Bool { ADD_FAILURE() << "the loop did not end"; ecore_main_loop_quit(); return ECORE_CALLBACK_CANCEL; },
      nullptr);
  ecore_main_loop_begin();
  ecore_timer_del(guard);
  EXPECT_EQ(tvsim::ExitRequests(), 2);
}

// A catalogue of our own, so the test does not depend on the product's translations.
void WriteCatalogue(const std::string& root, const std::string& language, const std::string& text) {
  const std::string dir = root + "/" + language + "/LC_MESSAGES";
  ASSERT_EQ(std::system(("mkdir -p '" + dir + "'").c_str()), 0);
  std::ofstream(root + "/" + language + ".po")
      << "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
      << "msgid \"TV_SID_GREETING\"\nmsgstr \"" << text << "\"\n";
  ASSERT_EQ(std::system(("msgfmt -o '" + dir + "/tvsim-fw-test.mo' '" + root + "/" + language + ".po'").c_str()), 0);
}

TEST(AppFramework, LanguageChangeSwitchesTranslationsAndDirectionBeforeTheHandlerRuns) {
  tvtest::TempTv tv;
  WriteCatalogue(tv.Dir() + "/locale", "en", "Hello");
  WriteCatalogue(tv.Dir() + "/locale", "ar", "مرحبا");
  bindtextdomain("tvsim-fw-test", (tv.Dir() + "/locale").c_str());
  bind_textdomain_codeset("tvsim-fw-test", "UTF-8");
  tv.Set("db/menu/system/language", "en_US");

  struct Seen {
    std::vector<std::string> texts;
    std::vector<int> orientations;
    int calls = 0;
  } seen;
  app_event_handler_h handle = nullptr;
  ASSERT_EQ(ui_app_add_event_handler(
                &handle, APP_EVENT_LANGUAGE_CHANGED,
                [](app_event_info_h info, void* data) {
                  EXPECT_NE(info, nullptr);
                  auto* s = static_cast<Seen*>(data);
                  ++s->calls;
                  s->texts.push_back(dgettext("tvsim-fw-test", "TV_SID_GREETING"));
                  s->orientations.push_back(ui_orientation_get());
                  ui_app_exit();
                },
                &seen),
            0);
  TestApp app;
  app.onResume = [&] {
    seen.texts.push_back(dgettext("tvsim-fw-test", "TV_SID_GREETING"));
    seen.orientations.push_back(ui_orientation_get());
    tv.Set("db/menu/system/language", "ar_AE");
  };
  EXPECT_EQ(app.Run(), 0);
  EXPECT_EQ(ui_app_remove_event_handler(handle), 0);
  EXPECT_EQ(ui_app_remove_event_handler(handle), -22);
  tvsim::ApplyLanguage("en_US");

  EXPECT_EQ(seen.calls, 1);
  EXPECT_EQ(seen.texts, (std::vector<std::string>{"Hello", "مرحبا"}));
  EXPECT_EQ(seen.orientations, (std::vector<int>{0, 1}));
}

TEST(AppFramework, OrientationFollowsTheLanguageSetting) {
  struct Case {
    const char* language;
    int rightToLeft;
  } cases[] = {{"en_US", 0}, {"ar_AE", 1}, {"he_IL", 1}, {"fa_IR", 1}, {"ur_PK", 1},
               {"de_DE", 0}, {"fr_FR", 0}, {"ko_KR", 0}, {"arn_CL", 0}};
  tvtest::TempTv tv;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.language);
    tv.Set("db/menu/system/language", c.language);
    EXPECT_EQ(ui_orientation_get(), c.rightToLeft);
  }
}

TEST(AppFramework, DesktopKeysArriveAsRemoteKeysWhileTheApplicationRuns) {
  struct Case {
    const char* pressed;
    const char* seen;
  } cases[] = {{"Escape", "XF86Back"}, {"Return", "Return"}, {"KP_Enter", "Return"}, {"Down", "Down"}};
  tvtest::TempTv tv;
  std::vector<std::string> seen;
  auto record = [](void* data, int type, void* event) -> Eina_Bool {
    auto* key = static_cast<Ecore_Event_Key*>(event);
    static_cast<std::vector<std::string>*>(data)->push_back(
        std::string(type == ECORE_EVENT_KEY_DOWN ? "down " : "up ") + key->keyname + "/" + key->key);
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
    for (const Case& c : cases) {
      send(ECORE_EVENT_KEY_DOWN, c.pressed);
      send(ECORE_EVENT_KEY_UP, c.pressed);
    }
    Later([] { ui_app_exit(); });
  };
  EXPECT_EQ(app.Run(), 0);
  // Outside ui_app_main the names stay as they are.
  send(ECORE_EVENT_KEY_DOWN, "Escape");
  ecore_main_loop_iterate();
  ecore_event_handler_del(down);
  ecore_event_handler_del(up);
  ecore_event_shutdown();

  std::vector<std::string> expected;
  for (const Case& c : cases) {
    expected.push_back(std::string("down ") + c.seen + "/" + c.seen);
    expected.push_back(std::string("up ") + c.seen + "/" + c.seen);
  }
  expected.push_back("down Escape/Escape");
  EXPECT_EQ(seen, expected);
}

}  // namespace
