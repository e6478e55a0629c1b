// The antenna popup against the simulated TV: what it lists and focuses, and
// what the remote control's keys make of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <vector>

#include "AntennaSelectionPopup.h"
#include "AppFramework.h"
#include "Language.h"
#include "TempTv.h"
#include "TimeScale.h"
#include "Trace.h"
#include "UiDriver.h"
#include "Util.h"

using nlohmann::json;

namespace {

// The sample TV with `patch` merged in (RFC 7386: null removes a member).
json Sample(const json& patch = json::object()) {
  std::ifstream in(std::string(TV_SOURCE_DIR) + "/scenarios/sample.json");
  json scenario = json::parse(in);
  scenario.merge_patch(patch);
  return scenario;
}

// Nothing records: a pick switches at once.
json SampleWithoutRecordings(const json& patch = json::object()) {
  json scenario = Sample({{"recordings", json::array()}});
  scenario.merge_patch(patch);
  return scenario;
}

json Tuned(int antenna, int service) { return {{"tv_mode", {{"antenna", antenna}, {"service", service}}}}; }

class AntennaPopup : public ::testing::Test {
 protected:
  void SetUp() override { tvsim::ResetExitRequests(); }
  void TearDown() override {
    if (HasFailure()) tvtest::ReportFailure(m_pWindow, tv);
    AntennaSelectionPopup::DestroyInstance();
  }

  // Builds and shows the popup as the shell does at launch, the window having
  // the input focus (as a window manager gives it) unless told otherwise.
  AntennaSelectionPopup* Open(bool windowFocused = true) {
    m_pWindow = Util::GetWindow();
    tvtest::ShowOnScreen(m_pWindow);
    Ecore_Evas* ee = ecore_evas_ecore_evas_get(evas_object_evas_get(m_pWindow));
    if (windowFocused) {
      tvtest::FocusWindow(m_pWindow);
    } else {
      ecore_evas_focus_set(ee, EINA_FALSE);
    }
    AntennaSelectionPopup* popup = AntennaSelectionPopup::GetInstance();
    popup->Show();
    tvtest::RenderedOnce(m_pWindow);
    m_pPopup = nullptr;
    for (Evas_Object* object : tvtest::FindWidgets(m_pWindow, "Elm_Popup")) {
      if (evas_object_visible_get(object)) m_pPopup = object;
    }
    // The parts the theme contract names.
    Evas_Object* layout = m_pPopup ? elm_object_content_get(m_pPopup) : nullptr;
    m_pGenlist = layout ? elm_object_part_content_get(layout, "elm.swallow.content") : nullptr;
    m_pCloseButton = m_pPopup ? elm_object_part_content_get(m_pPopup, "button1") : nullptr;
    EXPECT_NE(nullptr, m_pGenlist);
    return popup;
  }

  // Waits for the row focus to settle on a non-empty row text.
  std::string SettledFocus() {
    std::string text;
    tvtest::PumpUntil([&] { return !(text = tvtest::FocusedRowText(m_pGenlist)).empty(); }, 2.0);
    return text;
  }

  void Press(const std::vector<std::string>& keys) {
    for (const std::string& key : keys) tvtest::PressKey(m_pWindow, key.c_str());
  }

  json Tuning() const { return tv.Show()["tuning_changes"]; }
  json Kpi() const { return tv.Show()["kpi_events"]; }

  tvtest::TempTv tv;
  Evas_Object* m_pWindow = nullptr;
  Evas_Object* m_pPopup = nullptr;
  Evas_Object* m_pGenlist = nullptr;
  Evas_Object* m_pCloseButton = nullptr;
};

TEST_F(AntennaPopup, ListsTheAntennasAndFocusesTheCurrentOne) {
  struct Row {
    json scenario;
    const char* focused;
  } rows[] = {
      {Sample(), "Air"},
      {Sample(Tuned(1, 21)), "Cable"},
      {Sample(Tuned(2, 5)), "Satellite 13°E"},
      {Sample(Tuned(2, 30)), "Helios Sat"},
  };
  const std::vector<std::string> names = {"Air", "Cable", "Satellite 19.2°E", "Satellite 13°E", "Satellite 28.2°E",
                                          "Helios Sat"};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.focused);
    tv.Load(row.scenario);
    tv.ClearLogs();
    Open();
    EXPECT_EQ(names, tvtest::RowTexts(m_pGenlist));
    EXPECT_EQ(row.focused, SettledFocus());
    Elm_Object_Item* selected = elm_genlist_selected_item_get(m_pGenlist);
    ASSERT_NE(nullptr, selected);
    EXPECT_EQ(row.focused, tvtest::RowText(selected));
    EXPECT_TRUE(tv.Logged("m_AddAntennaListItem", "Antenna list size = 6", 0, 5));
    EXPECT_TRUE(tv.Logged("m_AddAntennaListItem", std::string("current Antenna item ") + row.focused, 0, 5));
    // Building and showing the list is no pick.
    EXPECT_EQ(0, tvsim::ExitRequests());
    EXPECT_TRUE(Kpi().empty());
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(AntennaPopup, KeysPickTheRightModeAndTheTvSwitches) {
  struct Row {
    json tuned;
    std::vector<std::string> keys;
    int antenna, service;  // -1: the TV must not switch
    const char* picked;
    const char* current;
  } rows[] = {
      {Tuned(0, 21), {"Down", "Return"}, 1, 21, "Cable", "Air"},
      {Tuned(0, 21), {"Down", "Down", "Down", "Return"}, 2, 5, "Satellite 13°E", "Air"},
      {Tuned(2, 5), {"Up", "Return"}, 2, 3, "Satellite 19.2°E", "Satellite 13°E"},
      {Tuned(2, 5), {"Up", "Up", "Up", "Return"}, 0, 21, "Air", "Satellite 13°E"},
      {Tuned(1, 21), {"Down", "Up", "Up", "Return"}, 0, 21, "Air", "Cable"},
      // The current mode again: reported, but nothing is switched.
      {Tuned(1, 21), {"Return"}, -1, -1, "Cable", "Cable"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.picked);
    tv.Load(SampleWithoutRecordings(row.tuned));
    tv.ClearLogs();
    tvsim::ResetExitRequests();
    Open();
    ASSERT_EQ(row.current, SettledFocus());
    Press(row.keys);
    EXPECT_EQ(1, tvsim::ExitRequests());
    const json tuning = Tuning();
    if (row.antenna < 0) {
      EXPECT_TRUE(tuning.empty());
      EXPECT_TRUE(tv.Logged("m_AntennaItemSelectCb", "It's selecting same antenna as current , Do nothing.", 0, 5));
    } else {
      ASSERT_EQ(1u, tuning.size());
      EXPECT_EQ(row.antenna, tuning[0]["antenna"]);
      EXPECT_EQ(row.service, tuning[0]["service"]);
    }
    const json kpi = Kpi();
    ASSERT_EQ(1u, kpi.size());
    EXPECT_EQ("SELECT_ANTENNA", kpi[0]["event"]);
    EXPECT_EQ("EV017", kpi[0]["code"]);
    EXPECT_EQ(std::string("{sl_antenna=") + row.picked + ";pre_antenna=" + row.current + ";antennanum=6}",
              kpi[0]["desc"]);
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(AntennaPopup, BackAndCloseEndTheApplicationWithoutChange) {
  struct Row {
    const char* name;
    std::vector<std::string> keys;
    const char* function;
    const char* line;
  } rows[] = {
      {"back on a row", {"XF86Back"}, "m_PopupPressCB", "key back."},
      {"back after a move", {"Down", "XF86Back"}, "m_PopupPressCB", "key back."},
      // Six rows from the first: the sixth Down reaches the close button.
      {"close button", {"Down", "Down", "Down", "Down", "Down", "Down", "Return"}, "m_ButtonClickCB",
       "Cancel button clicked"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tv.Load(SampleWithoutRecordings());
    tv.ClearLogs();
    tvsim::ResetExitRequests();
    Open();
    ASSERT_EQ("Air", SettledFocus());
    Press(row.keys);
    EXPECT_EQ(1, tvsim::ExitRequests());
    EXPECT_TRUE(tv.Logged(row.function, row.line, 0, 5));
    EXPECT_TRUE(Tuning().empty());
    EXPECT_TRUE(Kpi().empty());
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(AntennaPopup, FirstKeyAfterLaunchIsNotLost) {
  // The window may get the input focus before the popup is built or only
  // after it is drawn (a window manager is free to take its time).
  for (bool focusedBeforeShow : {true, false}) {
    SCOPED_TRACE(focusedBeforeShow ? "window focused first" : "window focused after the first frame");
    tv.Load(SampleWithoutRecordings(Tuned(1, 21)));
    tvsim::ResetExitRequests();
    Open(focusedBeforeShow);
    if (!focusedBeforeShow) tvtest::FocusWindow(m_pWindow);
    ASSERT_EQ("Cable", SettledFocus());
    Press({"Down"});
    EXPECT_EQ("Satellite 19.2°E", tvtest::FocusedRowText(m_pGenlist));
    Press({"Return"});
    ASSERT_EQ(1u, Tuning().size());
    EXPECT_EQ(2, Tuning()[0]["antenna"]);
    EXPECT_EQ(3, Tuning()[0]["service"]);
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(AntennaPopup, RecordingsDecideWhetherThePickSwitches) {
  enum Outcome { kSwitch, kAsk, kChoose, kStay };
  struct Row {
    const char* name;
    json recordings;
    int recordableTuners;
    Outcome outcome;
  } rows[] = {
      {"no recording", json::array(), 1, kSwitch},
      {"one recording, a spare tuner", {7340034}, 2, kSwitch},
      {"one recording, no spare tuner", {7340034}, 1, kAsk},
      // Two recordings always ask which one to stop, spare tuner or not.
      {"two recordings", {7340034, 8388610}, 1, kChoose},
      {"three recordings", {7340033, 7340034, 8388610}, 2, kStay},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tv.Load(Sample({{"recordings", row.recordings}, {"settings", {{"system_info/238", row.recordableTuners}}}}));
    tv.ClearLogs();
    tvsim::ResetExitRequests();
    Open();
    ASSERT_EQ("Air", SettledFocus());
    Press({"Down", "Return"});
    EXPECT_EQ(row.outcome == kSwitch ? 1u : 0u, Tuning().size());
    EXPECT_EQ(row.outcome == kSwitch ? 1 : 0, tvsim::ExitRequests());
    EXPECT_EQ(1u, Kpi().size());
    if (row.outcome == kAsk) {
      // The question replaces the list; the box's own flow is tested with the change flow.
      EXPECT_TRUE(tv.Logged("t_CreateMsgWidget", "t_CreateMsgWidget...", 0, 5));
      EXPECT_FALSE(evas_object_visible_get(m_pPopup));
    }
    if (row.outcome == kChoose) {
      // The stop-recording popup replaces the list; its answers are tested on their own.
      EXPECT_TRUE(tv.Logged("t_Create", "Create ...", 0, 5));
      EXPECT_FALSE(evas_object_visible_get(m_pPopup));
    }
    if (row.outcome == kStay) {
      // An unexpected count only logs; the popup stays and the viewer may leave.
      EXPECT_TRUE(tv.Logged("m_AntennaItemSelectCb", "Wrong recording count 3", 2, 5));
      EXPECT_TRUE(evas_object_visible_get(m_pPopup));
      Press({"XF86Back"});
      EXPECT_EQ(1, tvsim::ExitRequests());
    }
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(AntennaPopup, EmptyListShowsOnlyTheCloseButton) {
  tv.LoadFile("empty.json");
  Open();
  EXPECT_EQ(0u, elm_genlist_items_count(m_pGenlist));
  Evas_Object* button = m_pCloseButton;
  ASSERT_NE(nullptr, button);
  EXPECT_STREQ("Close", elm_object_text_get(button));
  EXPECT_TRUE(tv.Logged("m_AddAntennaListItem", "Antenna list size = 0", 0, 5));
  tvtest::PumpUntil([&] { return elm_object_focused_object_get(m_pWindow) == button; }, 0.5);
  Press({"Down", "Return"});
  EXPECT_EQ(1, tvsim::ExitRequests());
  EXPECT_TRUE(tv.Logged("m_ButtonClickCB", "Cancel button clicked", 0, 5));
}

TEST_F(AntennaPopup, WithoutACurrentRowTheFirstPickCounts) {
  // Satellite service mode 19 is never offered: no row is the current one,
  // nothing is selected, and the viewer's first pick must not be swallowed.
  tv.Load(SampleWithoutRecordings(Tuned(2, 19)));
  Open();
  EXPECT_EQ(6u, elm_genlist_items_count(m_pGenlist));
  EXPECT_EQ(nullptr, elm_genlist_selected_item_get(m_pGenlist));
  Press({"Down"});
  EXPECT_EQ("Air", tvtest::FocusedRowText(m_pGenlist));
  Press({"Return"});
  EXPECT_EQ(1, tvsim::ExitRequests());
  ASSERT_EQ(1u, Kpi().size());
  ASSERT_EQ(1u, Tuning().size());
  EXPECT_EQ(0, Tuning()[0]["antenna"]);
}

TEST_F(AntennaPopup, InactivityEndsTheApplicationWithoutChange) {
  setenv("TVSIM_TIME_SCALE", "0.002", 1);  // 30 s become 60 ms
  tvsim::ReloadTimeScaleForTesting();
  tv.Load(SampleWithoutRecordings());
  Open();
  EXPECT_TRUE(tvtest::PumpUntil([] { return tvsim::ExitRequests() >= 1; }));
  EXPECT_TRUE(tv.Logged("t_OnTimeOut", "enter_t_OnTimeOut", 0, 5));
  // The time-out repeats while the popup stays (the framework ends the
  // process after the first; nothing else must happen meanwhile).
  EXPECT_TRUE(tvtest::PumpUntil([] { return tvsim::ExitRequests() >= 2; }));
  EXPECT_TRUE(Tuning().empty());
  EXPECT_TRUE(Kpi().empty());
  setenv("TVSIM_TIME_SCALE", "1", 1);
  tvsim::ReloadTimeScaleForTesting();
}

TEST_F(AntennaPopup, ReadOutCarriesTheTitleAndCountOnlyTheFirstTime) {
  elm_config_access_set(EINA_TRUE);
  tv.Load(SampleWithoutRecordings(Tuned(1, 21)));
  Open();
  ASSERT_EQ("Cable", SettledFocus());
  Elm_Object_Item* focused = elm_object_focused_item_get(m_pGenlist);
  Evas_Object* access = elm_object_item_access_object_get(focused);
  ASSERT_NE(nullptr, access);
  char* first = elm_access_info_get(access, ELM_ACCESS_INFO);
  char* second = elm_access_info_get(access, ELM_ACCESS_INFO);
  EXPECT_STREQ("Antenna Type,6,items,Cable", first);
  EXPECT_STREQ("Cable", second);
  free(first);
  free(second);
  // Another row asking reads the focused row, not itself.
  Evas_Object* other = elm_object_item_access_object_get(elm_genlist_first_item_get(m_pGenlist));
  ASSERT_NE(nullptr, other);
  char* third = elm_access_info_get(other, ELM_ACCESS_INFO);
  EXPECT_STREQ("Cable", third);
  free(third);
  // With a screen reader a button is read on the first activation and pressed
  // on the second; the close button still ends the application.
  elm_object_focus_set(m_pCloseButton, EINA_TRUE);
  tvtest::RenderedOnce(m_pWindow);
  ASSERT_EQ(m_pCloseButton, elm_object_focused_object_get(m_pWindow));
  Press({"Return"});
  EXPECT_EQ(0, tvsim::ExitRequests());
  Press({"Return"});
  EXPECT_EQ(1, tvsim::ExitRequests());
  EXPECT_TRUE(tv.Logged("m_ButtonClickCB", "Cancel button clicked", 0, 5));
  AntennaSelectionPopup::DestroyInstance();
  elm_config_access_set(EINA_FALSE);
}

TEST_F(AntennaPopup, NamesWithMarkupCharactersShowAsTheyAreAndLineBreaksAsSpaces) {
  const std::pair<const char*, const char*> rows[] = {  // the TV's name, the row's text
      {"Air <UHF> & VHF", "Air <UHF> & VHF"}, {"Air\nUHF", "Air UHF"}, {"Air\tUHF", "Air UHF"},
      {"Air\r\nUHF", "Air UHF"}, {"Air\rUHF\n", "Air UHF "}, {"Air\u2029UHF", "Air UHF"},
      {"Air\u2028\vUHF\f", "Air  UHF "}, {"Air\u0085UHF", "Air UHF"},
  };
  for (const auto& [name, shown] : rows) {
    SCOPED_TRACE(name);
    tv.Load(SampleWithoutRecordings({{"antenna_names", {{{"antenna", 0}, {"name", name}},
                                                         {{"antenna", 1}, {"name", "Cable"}}}}}));
    tvsim::ResetExitRequests();
    Open();
    // The row is markup: a line break or tab would show as a tag (a plain text part) or break the row.
    EXPECT_EQ(shown, SettledFocus());
    Press({"Down", "Return"});
    ASSERT_EQ(1u, Kpi().size());
    EXPECT_EQ(std::string("{sl_antenna=Cable;pre_antenna=") + name + ";antennanum=6}", Kpi()[0]["desc"]);
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(AntennaPopup, SpeaksTheViewersLanguageAndMirrorsForArabic) {
  struct Row {
    const char* language;
    const char* title;
    const char* close;
    bool rtl;
  } rows[] = {
      {"en_US", "Antenna Type", "Close", false},
      {"de_DE", "Antennentyp", "Schließen", false},
      {"ar_AE", "نوع الهوائي", "إغلاق", true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.language);
    tv.Load(SampleWithoutRecordings({{"settings", {{"db/menu/system/language", row.language}}}}));
    tvsim::ApplyLanguage(row.language);
    elm_config_mirrored_set(Util::ReverseOSD());  // as the shell does
    Open();
    ASSERT_EQ("Air", SettledFocus());
    EXPECT_STREQ(row.title, elm_object_part_text_get(m_pPopup, "title,text"));
    EXPECT_STREQ(row.close, elm_object_text_get(m_pCloseButton));
    EXPECT_EQ(row.rtl, static_cast<bool>(elm_object_mirrored_get(m_pPopup)));
    // The theme's side of mirroring is checked in ThemeContractTest.
    AntennaSelectionPopup::DestroyInstance();
  }
  tvsim::ApplyLanguage("en_US");
  elm_config_mirrored_set(EINA_FALSE);
}

TEST_F(AntennaPopup, FocusMovesAreTracedWhenTracingIsOn) {
  tv.Load(SampleWithoutRecordings(Tuned(2, 7)));
  trace::TracePattern::Instance()->Clear();
  setenv("TVSIM_TRACE", (tv.Dir() + "/trace.txt").c_str(), 1);
  Open();
  ASSERT_EQ("Satellite 28.2°E", SettledFocus());
  Press({"Down", "Down"});  // to the last row, then to the close button
  unsetenv("TVSIM_TRACE");
  const auto queue = trace::TracePattern::Instance()->Queue();
  const std::vector<std::string> lines(queue.begin(), queue.end());
  auto traced = [&](const std::string& function, const std::string& value) {
    const std::regex pattern("^src/AntennaSelectionPopup\\.cpp:[0-9]+ static void AntennaSelectionPopup::" +
                             function + "\\(void\\*, Evas_Object\\*, void\\*\\) item 0 char const\\* " + value + "$");
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) { return std::regex_match(line, pattern); });
  };
  // The list object has no text of its own; the button's is its label.
  EXPECT_TRUE(traced("m_ItemFocusedCB", "null"));
  EXPECT_TRUE(traced("m_ButtonFocusedCB", "\"Close\""));
}

TEST_F(AntennaPopup, IsOneObjectUntilDestroyed) {
  tv.Load(SampleWithoutRecordings());
  AntennaSelectionPopup* first = AntennaSelectionPopup::GetInstance();
  EXPECT_EQ(first, AntennaSelectionPopup::GetInstance());
  int built = 0;
  for (const std::string& message : tv.AppMessages()) built += message.rfind("Antenna list size", 0) == 0;
  EXPECT_EQ(1, built);
  AntennaSelectionPopup::DestroyInstance();
  AntennaSelectionPopup::DestroyInstance();  // harmless without an instance
  const TvMode none = AntennaSelectionPopup::GetTvMode();
  EXPECT_EQ(TvMode(), none);
}

}  // namespace
