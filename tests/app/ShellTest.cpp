// The application shell: main() and the lifecycle callbacks in process under the
// simulated framework. A whole run of the built program is what the tours show.
#include <gtest/gtest.h>

#include <vector>

#include "AppFramework.h"
#include "Language.h"
#include "PopupDriver.h"
#include "UiDriver.h"

// The shell's callbacks are file-local to src/main.cpp: compile it into this
// test, with its main() renamed, to call them one by one.
#define main AntennaSelectionMain
#include "../../src/main.cpp"
#undef main

namespace {

using nlohmann::json;

json Quiet(const json& patch = json::object()) {
  json scenario = tvtest::SampleTv({{"recordings", json::array()}});
  scenario.merge_patch(patch);
  return scenario;
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
  tv.Load(Quiet());
  ASSERT_TRUE(app_create(nullptr));
  EXPECT_DOUBLE_EQ(2.0, elm_app_base_scale_get());
  // A resume before the first launch request shows a popup that the request replaces.
  app_resume(nullptr);
  Evas_Object* early = tvtest::ShownList();
  ASSERT_NE(nullptr, early);
  app_control(nullptr, nullptr);
  EXPECT_EQ(nullptr, tvtest::ShownList());
  app_resume(nullptr);
  Evas_Object* popup = tvtest::ShownList();
  ASSERT_NE(nullptr, popup);
  app_control(nullptr, nullptr);  // a second launch request changes nothing
  EXPECT_EQ(popup, tvtest::ShownList());
  app_pause(nullptr);
  EXPECT_EQ(1, tvsim::ExitRequests());
  app_terminate(nullptr);
  EXPECT_EQ(nullptr, tvtest::ShownList());
  const std::vector<std::string> expected = {
      "begin app_create", "end app_create",  "begin app_resume", "end app_resume", "begin app_control",
      "end app_control",  "begin app_resume", "end app_resume",   "begin app_control", "begin app_pause",
      "end app_pause",    "begin app_terminate", "end app_terminate"};
  EXPECT_EQ(expected, Lifecycle(tv));
  EXPECT_TRUE(tv.Logged("app_create", "rec_service_init()", 0, 5));
  EXPECT_TRUE(tv.Logged("app_create", "begin app_create", 2, 5));
  EXPECT_TRUE(tv.Logged("app_terminate", "end app_terminate", 2, 5));
}

TEST_F(Shell, TextClassFollowsTheScaleAndFocusZoomAlsoWhenZoomChanges) {
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
  elm_config_scale_set(1.0);
  tv.Load(Quiet());
  app_create(nullptr);
  app_control(nullptr, nullptr);
  app_resume(nullptr);
  tv.Set("db/menu/system/accessibility/focuszoom", "1");
  EXPECT_TRUE(tvtest::PumpUntil([&] { return TextClassSize() == 18; }));
  EXPECT_DOUBLE_EQ(1.2, elm_object_scale_get(tvtest::ShownList()));
  app_terminate(nullptr);
}

TEST_F(Shell, MirroringFollowsTheLanguageAtStartAndOnEachChange) {
  struct Row { const char* atStart; bool mirroredAtStart; const char* changedTo; bool mirroredAfter; } rows[] = {
      {"ar_AE", true, "en_US", false}, {"en_US", false, "he_IL", true}, {"de_DE", false, "de_DE", false}};
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
}

// The framework's main call failing: its error is logged and is the exit status.
TEST_F(Shell, AFailingFrameworkEndsTheProgramWithItsError) {
  tv.Load(Quiet());
  tv.AddFault({{"op", "ui_app_main"}, {"result", 5}});
  EXPECT_EQ(5, tv.Run("ELM_ENGINE=buffer " + std::string(TV_BINARY_DIR) + "/antenna-selection 2>&1"));
  EXPECT_TRUE(tv.Logged("main", "app_efl_main() is failed. err=5", 2, 5));
  EXPECT_TRUE(Lifecycle(tv).empty());  // no callback ran
  EXPECT_TRUE(tv.OnlyFaultFired());
}

}  // namespace
