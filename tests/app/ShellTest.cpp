// The application shell: main() and the lifecycle callbacks, in process under
// the simulated framework and as the built program.
#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <vector>

#include "AppFramework.h"
#include "Language.h"
#include "TempTv.h"
#include "TimeScale.h"
#include "UiDriver.h"

// The shell's callbacks are file-local to src/main.cpp: compile it into this
// test, with its main() renamed, to call them one by one.
#define main AntennaSelectionMain
#include "../../src/main.cpp"
#undef main

namespace {

using nlohmann::json;

json SampleWithoutRecordings(const json& patch = json::object()) {
  std::ifstream in(std::string(TV_SOURCE_DIR) + "/scenarios/sample.json");
  json scenario = json::parse(in);
  scenario["recordings"] = json::array();
  scenario.merge_patch(patch);
  return scenario;
}

Evas_Object* ShownPopup() {
  for (Evas_Object* popup : tvtest::FindWidgets(Util::GetWindow(), "Elm_Popup")) {
    if (evas_object_visible_get(popup)) return popup;
  }
  return nullptr;
}

Evas_Object* ListOf(Evas_Object* popup) {
  Evas_Object* layout = popup ? elm_object_content_get(popup) : nullptr;
  return layout ? elm_object_part_content_get(layout, "elm.swallow.content") : nullptr;
}

int TextClassSize() {
  const char* font = nullptr;
  Evas_Font_Size size = 0;
  edje_text_class_get("black_body1_font", &font, &size);
  EXPECT_STREQ("VelmoraPrism_400", font);
  return size;
}

// Messages of the shell's own begin/end lines, in order.
std::vector<std::string> Lifecycle(const tvtest::TempTv& tv) {
  std::vector<std::string> lines;
  for (const std::string& message : tv.AppMessages()) {
    if (message.rfind("begin app_", 0) == 0 || message.rfind("end app_", 0) == 0) lines.push_back(message);
  }
  return lines;
}

class Shell : public ::testing::Test {
 protected:
  void SetUp() override {
    s_bAppControlDone = false;
    tvsim::ResetExitRequests();
    elm_config_scale_set(1.0);
  }
  void TearDown() override {
    AntennaSelectionPopup::DestroyInstance();
    elm_config_mirrored_set(EINA_FALSE);
    elm_config_scale_set(1.0);
    tvsim::ApplyLanguage("en_US");
  }
  tvtest::TempTv tv;
};

TEST_F(Shell, CallbacksBuildShowAndTearDownThePopupInOrder) {
  tv.Load(SampleWithoutRecordings());
  ASSERT_TRUE(app_create(nullptr));
  EXPECT_DOUBLE_EQ(2.0, elm_app_base_scale_get());
  EXPECT_EQ(nullptr, ShownPopup());
  app_control(nullptr, nullptr);
  EXPECT_FALSE(elm_win_iconified_get(Util::GetWindow()));
  app_resume(nullptr);
  Evas_Object* popup = ShownPopup();
  ASSERT_NE(nullptr, popup);
  // A second launch request changes nothing.
  app_control(nullptr, nullptr);
  EXPECT_EQ(popup, ShownPopup());
  app_pause(nullptr);
  EXPECT_EQ(1, tvsim::ExitRequests());
  app_terminate(nullptr);
  EXPECT_EQ(nullptr, ShownPopup());
  EXPECT_EQ(TvMode(), AntennaSelectionPopup::GetTvMode());  // no popup any more
  const std::vector<std::string> expected = {
      "begin app_create", "end app_create",  "begin app_control", "end app_control",   "begin app_resume",
      "end app_resume",   "begin app_control", "begin app_pause", "end app_pause", "begin app_terminate",
      "end app_terminate"};
  EXPECT_EQ(expected, Lifecycle(tv));
  EXPECT_TRUE(tv.Logged("app_create", "rec_service_init()", 0, 5));
  EXPECT_TRUE(tv.Logged("app_create", "begin app_create", 2, 5));
}

TEST_F(Shell, AResumeBeforeTheFirstLaunchIsReplacedByAFreshPopup) {
  tv.Load(SampleWithoutRecordings());
  app_create(nullptr);
  app_resume(nullptr);
  ASSERT_NE(nullptr, ShownPopup());
  tv.ClearLogs();
  app_control(nullptr, nullptr);
  // The early popup was destroyed and a new one built (not shown until resumed).
  EXPECT_TRUE(tv.Logged("m_AddAntennaListItem", "Antenna list size = 6", 0, 5));
  EXPECT_EQ(nullptr, ShownPopup());
  app_resume(nullptr);
  EXPECT_NE(nullptr, ShownPopup());
  app_terminate(nullptr);
}

TEST_F(Shell, TextClassFollowsTheScaleAndFocusZoom) {
  struct Row { double scale; int zoom, size; } rows[] = {
      {1.0, 0, 15}, {1.0, 1, 18}, {1.5, 0, 23}, {1.5, 1, 27}, {2.0, 0, 30}, {2.0, 1, 36}};
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::Message() << row.scale << " zoom " << row.zoom);
    tv.Load({{"settings", {{"db/menu/system/accessibility/focuszoom", row.zoom}}}});
    elm_config_scale_set(row.scale);
    app_create(nullptr);
    EXPECT_EQ(row.size, TextClassSize());
    app_terminate(nullptr);
  }
}

TEST_F(Shell, FocusZoomChangesApplyAtOnce) {
  tv.Load(SampleWithoutRecordings());
  app_create(nullptr);
  app_control(nullptr, nullptr);
  app_resume(nullptr);
  Evas_Object* popup = ShownPopup();
  ASSERT_NE(nullptr, popup);
  EXPECT_DOUBLE_EQ(1.0, elm_object_scale_get(popup));
  EXPECT_EQ(15, TextClassSize());
  tv.Set("db/menu/system/accessibility/focuszoom", "1");
  EXPECT_TRUE(tvtest::PumpUntil([&] { return elm_object_scale_get(popup) > 1.1; }));
  EXPECT_DOUBLE_EQ(1.2, elm_object_scale_get(popup));
  EXPECT_EQ(18, TextClassSize());
  app_terminate(nullptr);
  // No longer watched after the end.
  tv.Set("db/menu/system/accessibility/focuszoom", "0");
  tvtest::PumpUntil([] { return false; }, 0.3);
  EXPECT_EQ(18, TextClassSize());
}

TEST_F(Shell, MirroringFollowsTheLanguage) {
  struct Row { const char* atStart; bool mirroredAtStart; const char* changedTo; bool mirroredAfter; }
  rows[] = {
      {"ar_AE", true, "en_US", false},
      {"en_US", false, "he_IL", true},
      {"de_DE", false, "de_DE", false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.atStart);
    elm_config_mirrored_set(EINA_FALSE);
    tv.Load({{"settings", {{"db/menu/system/language", row.atStart}}}});
    app_create(nullptr);
    EXPECT_EQ(row.mirroredAtStart, static_cast<bool>(elm_config_mirrored_get()));
    tv.Load({{"settings", {{"db/menu/system/language", row.changedTo}}}});
    lang_changed(nullptr, nullptr);
    EXPECT_EQ(row.mirroredAfter, static_cast<bool>(elm_config_mirrored_get()));
    EXPECT_TRUE(tv.Logged("lang_changed", "In app lang_change", 0, 4));
    app_terminate(nullptr);
  }
  // At start-up mirroring is only ever turned on, never off.
  elm_config_mirrored_set(EINA_TRUE);
  tv.Load({{"settings", {{"db/menu/system/language", "en_US"}}}});
  app_create(nullptr);
  EXPECT_TRUE(elm_config_mirrored_get());
  app_terminate(nullptr);
}

// Runs steps on the main loop, each when its condition holds: the viewer's
// part while main() runs the framework's loop. Steps must not run a loop of
// their own (it would swallow the application's request to end).
class Viewer {
 public:
  struct Step {
    std::function<bool()> ready;
    std::function<void()> act;
  };
  explicit Viewer(std::vector<Step> steps) : m_steps(std::move(steps)) {
    m_timer = ecore_timer_loop_add(0.01, Tick, this);
  }
  ~Viewer() {
    if (m_timer) ecore_timer_del(m_timer);
  }
  size_t done() const { return m_next; }

 private:
  static Eina_Bool Tick(void* data) {
    auto* self = static_cast<Viewer*>(data);
    if (self->m_next < self->m_steps.size() && self->m_steps[self->m_next].ready()) {
      self->m_steps[self->m_next++].act();
    }
    return ECORE_CALLBACK_RENEW;
  }
  std::vector<Step> m_steps;
  size_t m_next = 0;
  Ecore_Timer* m_timer = nullptr;
};

TEST_F(Shell, MainRunsTheWholeApplicationUntilThePick) {
  tv.Load(SampleWithoutRecordings());
  Evas_Object* window = Util::GetWindow();
  Viewer viewer({
      // The window manager's part: the window gets the input focus once shown.
      {[&] { return ShownPopup() != nullptr; }, [&] { tvtest::FocusWindow(window); }},
      {[&] { return tvtest::FocusedRowText(ListOf(ShownPopup())) == "Air"; },
       [&] { tvtest::FeedKey(window, "Down"); }},
      {[&] { return tvtest::FocusedRowText(ListOf(ShownPopup())) == "Cable"; },
       [&] { tvtest::FeedKey(window, "Return"); }},
  });
  char name[] = "antenna-selection";
  char* argv[] = {name, nullptr};
  EXPECT_EQ(0, AntennaSelectionMain(1, argv));
  EXPECT_EQ(3u, viewer.done());
  const json tuning = tv.Show()["tuning_changes"];
  ASSERT_EQ(1u, tuning.size());
  EXPECT_EQ(1, tuning[0]["antenna"]);
  EXPECT_TRUE(tv.Logged("AntennaSelectionMain", "PERF_CHECK1", 2, 5));  // main(), renamed here
  const std::vector<std::string> lifecycle = Lifecycle(tv);
  ASSERT_FALSE(lifecycle.empty());
  EXPECT_EQ("begin app_create", lifecycle.front());
  EXPECT_EQ("end app_terminate", lifecycle.back());
}

TEST_F(Shell, TheProgramEndsOnItsOwnAfterTheTimeOut) {
  const std::string program = std::string(TV_BINARY_DIR) + "/antenna-selection";
  ASSERT_EQ(0, access(program.c_str(), X_OK)) << "build the antenna-selection target first";
  tv.Load(SampleWithoutRecordings());
  // 30 s of inactivity become 0.15 s.
  const int status = tv.Run("ELM_ENGINE=buffer TVSIM_TIME_SCALE=0.005 " + program + " 2>&1");
  EXPECT_EQ(0, status);
  EXPECT_TRUE(tv.Logged("t_OnTimeOut", "enter_t_OnTimeOut", 0, 5));
  EXPECT_TRUE(tv.Show()["tuning_changes"].empty());
  const std::vector<std::string> lifecycle = Lifecycle(tv);
  ASSERT_FALSE(lifecycle.empty());
  EXPECT_EQ("begin app_create", lifecycle.front());
  EXPECT_EQ("end app_terminate", lifecycle.back());
}

// The framework's main call failing: its error is logged and is the exit status.
TEST_F(Shell, AFailingFrameworkEndsTheProgramWithItsError) {
  const std::string program = std::string(TV_BINARY_DIR) + "/antenna-selection";
  tv.Load(SampleWithoutRecordings());
  tv.AddFault({{"op", "ui_app_main"}, {"result", 5}});
  EXPECT_EQ(5, tv.Run("ELM_ENGINE=buffer " + program + " 2>&1"));
  EXPECT_TRUE(tv.Logged("main", "app_efl_main() is failed. err=5", 2, 5));
  EXPECT_TRUE(Lifecycle(tv).empty());  // no callback ran
  EXPECT_TRUE(tv.OnlyFaultFired());
}

TEST_F(Shell, LooksLikeATvPopupInEnglishAndArabic) {
  // Screenshots for people, at the scale the application is designed for.
  for (const char* language : {"en_US", "ar_AE"}) {
    SCOPED_TRACE(language);
    s_bAppControlDone = false;
    tv.Load(SampleWithoutRecordings({{"settings", {{"db/menu/system/language", language}}}}));
    tvsim::ApplyLanguage(language);
    elm_config_scale_set(2.0);
    elm_config_mirrored_set(EINA_FALSE);
    app_create(nullptr);
    Evas_Object* window = Util::GetWindow();
    tvtest::ShowOnScreen(window);
    tvtest::FocusWindow(window);
    app_control(nullptr, nullptr);
    app_resume(nullptr);
    Evas_Object* popup = ShownPopup();
    ASSERT_NE(nullptr, popup);
    ASSERT_TRUE(tvtest::PumpUntil([&] { return tvtest::FocusedRowText(ListOf(popup)) == "Air"; }));
    tvtest::PressKey(window, "Down");
    EXPECT_EQ(std::string(language) == "ar_AE", static_cast<bool>(elm_object_mirrored_get(popup)));
    EXPECT_TRUE(tvtest::SaveScreenshot(window, tvtest::ArtefactPath(std::string("Shell.") + language)));
    app_terminate(nullptr);
  }
}

}  // namespace
