// The popups in process against the simulated TV: what the antenna list shows
// and what the remote's keys make of it, the question when a recording is in
// the way, the stop-recording popup's texts and answers. Time-outs, late and
// missing recorder reports and the first keys are shown by the tours (tours/).
#include <libintl.h>

#include <algorithm>
#include <regex>

#include "AntennaSelectionPopup.h"
#include "AppFramework.h"
#include "Control.h"
#include "Language.h"
#include "PopupDriver.h"
#include "Trace.h"
#include "UiDriver.h"
#include "Util.h"

using nlohmann::json;
using tvtest::FocusedRow;

namespace {

constexpr uint64_t kOnAir = 7340034;    // 0x700002, "Riverside News", 4-1
constexpr uint64_t kOnCable = 8388610;  // 0x800002, "Cable Kids", 102
const std::vector<std::string> kNames = {"Air", "Cable", "Satellite 19.2°E", "Satellite 13°E", "Satellite 28.2°E",
                                         "Helios Sat"};

json Tuned(int antenna, int service, json patch = json::object()) {
  patch["tv_mode"] = {{"antenna", antenna}, {"service", service}};
  return patch;
}
// Nothing records: a pick switches at once.
json Quiet(const json& patch = json::object()) {
  json scenario = tvtest::SampleTv({{"recordings", json::array()}});
  scenario.merge_patch(patch);
  return scenario;
}

using AntennaPopup = tvtest::PopupTest;

TEST_F(AntennaPopup, ListsTheAntennasAndFocusesAndSelectsTheCurrentOne) {
  const std::pair<json, const char*> rows[] = {
      {Tuned(0, 21), "Air"}, {Tuned(1, 21), "Cable"}, {Tuned(2, 5), "Satellite 13°E"}, {Tuned(2, 30), "Helios Sat"}};
  for (const auto& [tuned, focused] : rows) {
    SCOPED_TRACE(focused);
    ASSERT_TRUE(Open(tvtest::SampleTv(tuned)));
    EXPECT_EQ(kNames, tvtest::ShownRows());
    EXPECT_EQ(focused, FocusedRow());
    EXPECT_EQ(focused, tvtest::RowText(elm_genlist_selected_item_get(tvtest::GenlistOf(tvtest::ShownList()))));
    EXPECT_TRUE(tv.Logged("m_AddAntennaListItem", std::string("current Antenna item ") + focused, 0, 5));
    EXPECT_EQ(0, tvsim::ExitRequests());  // building and showing the list is no pick
    EXPECT_TRUE(Kpi().empty());
  }
}

TEST_F(AntennaPopup, KeysPickOrLeaveAndEachPickIsReported) {
  struct Row {
    json tuned;
    std::vector<const char*> keys;
    int antenna, service;  // -1: the TV must not switch
    const char* kpi;       // the pick's description; null: no pick
  } rows[] = {
      {Tuned(0, 21), {"Down", "Return"}, 1, 21, "{sl_antenna=Cable;pre_antenna=Air;antennanum=6}"},
      {Tuned(0, 21), {"Down", "Down", "Down", "Return"}, 2, 5, "{sl_antenna=Satellite 13°E;pre_antenna=Air;antennanum=6}"},
      {Tuned(2, 5), {"Up", "Up", "Up", "Return"}, 0, 21, "{sl_antenna=Air;pre_antenna=Satellite 13°E;antennanum=6}"},
      {Tuned(1, 21), {"Down", "Up", "Up", "Return"}, 0, 21, "{sl_antenna=Air;pre_antenna=Cable;antennanum=6}"},
      // The current mode again: reported, nothing switched.
      {Tuned(1, 21), {"Return"}, -1, -1, "{sl_antenna=Cable;pre_antenna=Cable;antennanum=6}"},
      {Tuned(0, 21), {"Down", "XF86Back"}, -1, -1, nullptr},
      // Six rows from the first: the sixth Down reaches Close.
      {Tuned(0, 21), {"Down", "Down", "Down", "Down", "Down", "Down", "Return"}, -1, -1, nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.keys));
    ASSERT_TRUE(Open(Quiet(row.tuned)));
    Press(row.keys);
    EXPECT_EQ(1, tvsim::ExitRequests());
    EXPECT_EQ(row.antenna >= 0, SwitchedTo(row.antenna, row.service));
    EXPECT_EQ(row.antenna < 0 ? 0u : 1u, Tuning().size());
    const json kpi = Kpi();
    ASSERT_EQ(row.kpi ? 1u : 0u, kpi.size());
    if (row.kpi) {
      EXPECT_EQ(json({"SELECT_ANTENNA", "EV017", row.kpi, 1}),
                json({kpi[0]["event"], kpi[0]["code"], kpi[0]["desc"], kpi[0]["status"]}));
    }
  }
}

TEST_F(AntennaPopup, RecordingsAndRecordableTunersDecideWhetherThePickSwitchesAsksOrChooses) {
  enum Outcome { kSwitch, kAsk, kChoose, kStay };
  struct Row {
    json recordings;
    int tuners, recordable;
    json tuned;  // satellite over a single connection costs a two-tuner set a tuner
    Outcome outcome;
  } rows[] = {
      {json::array(), 2, 1, Tuned(0, 21), kSwitch},
      {{kOnAir}, 2, 2, Tuned(0, 21), kSwitch},
      {{kOnAir}, 2, 1, Tuned(0, 21), kAsk},
      {{kOnAir}, 1, 2, Tuned(0, 21), kAsk},
      {{kOnAir}, 2, 2, Tuned(2, 5, {{"settings", {{"db/menu/Broadcast/setting/SatelliteSystem/SatelliteAntConnectionType", false}}}}), kAsk},
      {{kOnAir, kOnCable}, 2, 2, Tuned(0, 21), kChoose},
      {{7340033, kOnAir, kOnCable}, 2, 2, Tuned(0, 21), kStay},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.recordings.dump() + " " + std::to_string(row.tuners) + "/" + std::to_string(row.recordable));
    json scenario = tvtest::SampleTv(row.tuned);
    scenario.merge_patch({{"recordings", row.recordings},
                          {"settings", {{"system_info/18", row.tuners}, {"system_info/238", row.recordable}}}});
    ASSERT_TRUE(Open(scenario));
    Press({"Down", "Return"});
    EXPECT_EQ(row.outcome == kSwitch ? 1u : 0u, Tuning().size());
    EXPECT_EQ(row.outcome == kSwitch ? 1 : 0, tvsim::ExitRequests());
    EXPECT_EQ(row.outcome == kAsk, tvtest::ShownBox() != nullptr);
    EXPECT_EQ(row.outcome == kChoose, tvtest::ShownStopList() != nullptr);
    if (row.outcome != kSwitch) {
      EXPECT_EQ(row.outcome == kStay, tvtest::ShownList() != nullptr);
    }
    // An unexpected count only logs; the popup stays.
    EXPECT_EQ(row.outcome == kStay, tv.Logged("m_AntennaItemSelectCb", "Wrong recording count 3", 2, 5));
    EXPECT_EQ(1u, Kpi().size());
  }
}

// Keys the display queues for a window that has no focus yet: the first one
// held asks for the focus, the row takes it, and the keys queued behind it
// meanwhile must still come after it. Down then Return picks the next row.
TEST_F(AntennaPopup, KeysQueuedBeforeTheRowHasTheFocusApplyInTheirOrder) {
  AntennaSelectionPopup::DestroyInstance();
  tv.Load(Quiet());
  tvsim::ResetExitRequests();
  m_pWindow = Util::GetWindow();
  tvtest::ShowOnScreen(m_pWindow);
  ecore_evas_focus_set(ecore_evas_ecore_evas_get(evas_object_evas_get(m_pWindow)), EINA_FALSE);
  AntennaSelectionPopup::GetInstance()->Show();
  ASSERT_TRUE(tvtest::RenderedOnce(m_pWindow));
  ASSERT_EQ("", FocusedRow());
  tvtest::QueueKey(m_pWindow, "Down");
  tvtest::QueueKey(m_pWindow, "Return");
  EXPECT_TRUE(tvtest::PumpUntil([] { return tvsim::ExitRequests() > 0; }, 2.0));
  EXPECT_TRUE(SwitchedTo(1, 21));
}

TEST_F(AntennaPopup, AnEmptyListOffersCloseAndWithoutACurrentRowTheFirstPickCounts) {
  Open(tvtest::Scenario("empty.json"), false);
  EXPECT_TRUE(tvtest::ShownRows().empty());
  EXPECT_TRUE(tvtest::PumpUntil([&] { return elm_object_focused_object_get(m_pWindow) ==
                                             elm_object_part_content_get(tvtest::ShownList(), "button1"); }));
  Press({"Return"});
  EXPECT_TRUE(tv.Logged("m_ButtonClickCB", "Cancel button clicked", 0, 5));
  EXPECT_EQ(1, tvsim::ExitRequests());

  // Satellite service mode 19 is never offered: no row is current, nothing selected.
  Open(Quiet(Tuned(2, 19)), false);
  EXPECT_EQ(nullptr, elm_genlist_selected_item_get(tvtest::GenlistOf(tvtest::ShownList())));
  Press({"Down"});
  EXPECT_EQ("Air", FocusedRow());
  Press({"Return"});
  EXPECT_TRUE(SwitchedTo(0, 21));
}

TEST_F(AntennaPopup, NamesWithMarkupShowAsTheyAreAndLineBreaksAsSpaces) {
  const std::pair<const char*, const char*> rows[] = {  // the TV's name, the row's text
      {"Air <UHF> & VHF", "Air <UHF> & VHF"}, {"Air\nUHF", "Air UHF"}, {"Air\r\nUHF", "Air UHF"},
      {"Air\rUHF\n", "Air UHF "}, {"Air\u2028\vUHF\f", "Air  UHF "}, {"Air\u0085\u2029UHF\t", "Air  UHF "}};
  for (const auto& [name, shown] : rows) {
    SCOPED_TRACE(name);
    Open(Quiet({{"antenna_names", {{{"antenna", 0}, {"name", name}}, {{"antenna", 1}, {"name", "Cable"}}}}}));
    EXPECT_EQ(shown, FocusedRow());
    Press({"Down", "Return"});
    ASSERT_EQ(1u, Kpi().size());
    EXPECT_EQ(std::string("{sl_antenna=Cable;pre_antenna=") + name + ";antennanum=6}", Kpi()[0]["desc"]);
  }
}

TEST_F(AntennaPopup, SpeaksTheViewersLanguageMirrorsForArabicAndReadsOutTheFocus) {
  const std::tuple<const char*, const char*, const char*, bool> rows[] = {
      {"en_US", "Antenna Type", "Close", false}, {"de_DE", "Antennentyp", "Schließen", false},
      {"ar_AE", "نوع الهوائي", "إغلاق", true}};
  for (const auto& [language, title, close, rtl] : rows) {
    SCOPED_TRACE(language);
    const json scenario = Quiet({{"settings", {{"db/menu/system/language", language}}}});
    tv.Load(scenario);
    tvsim::ApplyLanguage(language);
    elm_config_mirrored_set(Util::ReverseOSD());  // as the shell does
    Open(scenario);
    Evas_Object* popup = tvtest::ShownList();
    EXPECT_STREQ(title, elm_object_part_text_get(popup, "title,text"));
    EXPECT_STREQ(close, elm_object_text_get(elm_object_part_content_get(popup, "button1")));
    EXPECT_EQ(rtl, static_cast<bool>(elm_object_mirrored_get(popup)));
  }
  tvsim::ApplyLanguage("en_US");
  elm_config_mirrored_set(EINA_FALSE);

  // A screen reader hears the title and count first, then the focused row only.
  elm_config_access_set(EINA_TRUE);
  Open(Quiet(Tuned(1, 21)));
  Evas_Object* list = tvtest::GenlistOf(tvtest::ShownList());
  Evas_Object* access = elm_object_item_access_object_get(elm_genlist_first_item_get(list));
  ASSERT_NE(nullptr, access);
  std::vector<std::string> heard;
  for (int i = 0; i < 2; ++i) {
    char* text = elm_access_info_get(access, ELM_ACCESS_INFO);
    heard.push_back(text ? text : "");
    free(text);
  }
  EXPECT_EQ(std::vector<std::string>({"Antenna Type,6,items,Cable", "Cable"}), heard);
  AntennaSelectionPopup::DestroyInstance();
  elm_config_access_set(EINA_FALSE);
}

TEST_F(AntennaPopup, FocusMovesAreTracedWhenTracingIsOn) {
  trace::TracePattern::Instance()->Clear();
  setenv("TVSIM_TRACE", (tv.Dir() + "/trace.txt").c_str(), 1);
  Open(Quiet(Tuned(2, 7)));
  Press({"Down", "Down"});  // to the last row, then to Close
  unsetenv("TVSIM_TRACE");
  const auto queue = trace::TracePattern::Instance()->Queue();
  auto traced = [&](const std::string& function, const std::string& value) {
    const std::regex pattern("^src/AntennaSelectionPopup\\.cpp:[0-9]+ static void AntennaSelectionPopup::" + function +
                             "\\(void\\*, Evas_Object\\*, void\\*\\) item 0 char const\\* " + value + "$");
    return std::any_of(queue.begin(), queue.end(), [&](const std::string& line) { return std::regex_match(line, pattern); });
  };
  EXPECT_TRUE(traced("m_ItemFocusedCB", "null"));  // the list has no text of its own
  EXPECT_TRUE(traced("m_ButtonFocusedCB", "\"Close\""));
}

// One recording on the only recordable tuner: the question, then the stop.
json OneRecording(const json& patch = json::object()) {
  return tvtest::Scenario("one-recording.json", patch);
}

using ChangeFlow = tvtest::PopupTest;

TEST_F(ChangeFlow, TheQuestionFocusesCancelAndEachAnswerStopsSwitchesLeavesOrGoesBack) {
  enum Outcome { kSwitches, kLeaves, kFreshList };
  const std::tuple<std::vector<const char*>, Outcome> rows[] = {
      {{"Left", "Return"}, kSwitches}, {{"Left", "XF86Back"}, kLeaves},
      {{"Return"}, kFreshList}, {{"XF86Back"}, kFreshList}};
  for (const auto& [keys, outcome] : rows) {
    SCOPED_TRACE(testing::PrintToString(keys));
    PickCable(OneRecording({{"playback", {{"playing", 1}}}}));
    Evas_Object* box = tvtest::ShownBox();
    ASSERT_NE(nullptr, box);
    EXPECT_EQ(nullptr, tvtest::ShownList());
    EXPECT_STREQ("Change Antenna", elm_object_part_text_get(box, "title,text"));
    EXPECT_TRUE(tvtest::PumpUntil([&] {
      Evas_Object* focused = elm_object_focused_object_get(m_pWindow);
      return focused && elm_object_text_get(focused) && std::string(elm_object_text_get(focused)) == "Cancel";
    }));
    EXPECT_EQ(AntennaSelectionPopup::GetTvMode(), TvMode(ANTENNA_MODE_1, static_cast<ServiceMode>(21)));
    Press(keys);
    EXPECT_EQ(nullptr, tvtest::ShownBox());
    if (outcome == kSwitches) {
      ASSERT_TRUE(tvtest::PumpUntil([&] { return Exited(); }));
      // Playback first, then the recording, then the switch on the recorder's report.
      EXPECT_EQ(json({"stop_playing", "stop_recording"}), json({Requests()[0]["op"], Requests()[1]["op"]}));
      EXPECT_EQ(std::vector<uint64_t>{kOnAir}, Stopped());
      EXPECT_TRUE(tv.Logged("sm_CbSvcPvr", "recording stopped, change antenna now", 0, 5));
      EXPECT_TRUE(SwitchedTo(1, 21));
    } else {
      EXPECT_TRUE(Requests().empty());
      EXPECT_TRUE(Tuning().empty());
      EXPECT_EQ(outcome == kLeaves ? 1 : 0, tvsim::ExitRequests());
    }
    if (outcome == kFreshList) {
      // The list is built anew, the current antenna focused, and it works.
      EXPECT_EQ("Air", SettledFocus());
      EXPECT_EQ(AntennaSelectionPopup::GetTvMode(), TvMode());
      Press({"Down", "Return"});
      EXPECT_NE(nullptr, tvtest::ShownBox());
    }
  }
}

TEST_F(ChangeFlow, OnlyTheAwaitedReportOfAStoppedRecordingSwitches) {
  PickCable(OneRecording());
  SendRecorderEvent(1, 1);  // nobody asked for a stop yet
  EXPECT_NE(nullptr, tvtest::ShownBox());
  EXPECT_TRUE(Tuning().empty());
  for (const auto& [event, result] : {std::pair(1, 0), std::pair(2, 1)}) {
    SCOPED_TRACE(std::to_string(event) + "/" + std::to_string(result));
    PickCable(OneRecording({{"recorder", {{"stop_report", {{"event", event}, {"result", result}}}}}}));
    Press({"Left", "Return"});
    ASSERT_TRUE(tvtest::PumpUntil([&] { return !Requests().empty(); }));
    SendRecorderEvent(event, result);
    EXPECT_TRUE(Tuning().empty());
    EXPECT_EQ(0, tvsim::ExitRequests());
    // Still waiting: the first real report switches, a second one finds nobody waiting.
    SendRecorderEvent(1, 1);
    SendRecorderEvent(1, 1);
    EXPECT_TRUE(SwitchedTo(1, 21));
    EXPECT_EQ(1, tvsim::ExitRequests());
  }
}

// The recorder lists two ids at most: recordings started while the question
// was on screen beyond those are not read past the list's end.
TEST_F(ChangeFlow, AgreeingStopsAtMostTheTwoListedRecordings) {
  PickCable(OneRecording());
  for (uint64_t id : {kOnCable, uint64_t{9502721}}) tvsim::Control(tv.DbPath()).StartRecording(id);
  Press({"Left", "Return"});
  ASSERT_TRUE(tvtest::PumpUntil([&] { return Exited(); }));
  EXPECT_EQ(std::vector<uint64_t>({kOnAir, kOnCable}), Stopped());
}

// Two recordings: the popup that asks which one to stop.
json TwoRecordings(const json& patch = json::object(), void (*edit)(json& services) = nullptr) {
  json scenario = tvtest::Scenario("two-recordings.json", patch);
  if (edit) edit(scenario["services"]);
  return scenario;
}

json& ServiceById(json& services, uint64_t id) {
  for (json& service : services) {
    if (service["id"] == id) return service;
  }
  ADD_FAILURE() << "no service " << id;
  return services[0];
}

// A second line as the popup builds it: the display's direction (a left-to-right
// mark here), then each field from the TV on one line and direction-isolated
// (U+2068 .. U+2069), fields two spaces apart.
std::string Fields(std::initializer_list<std::string> fields, const char* after = "", const char* mark = "\u200e") {
  std::string line;
  for (const std::string& field : fields) line += (line.empty() ? "" : "  ") + ("\u2068" + field + "\u2069");
  return mark + line + after;
}

const char* const kStop = "Stop recording and change channel";

class StopPopup : public tvtest::PopupTest {
 protected:
  // Picks Cable and waits for the stop-recording popup with its first item focused.
  void AskedWhichToStop(const json& scenario) {
    PickCable(scenario);
    ASSERT_TRUE(tvtest::PumpUntil([&] { return tvtest::FocusedRowText(tvtest::ShownStopList()) == kStop; }));
    EXPECT_EQ(nullptr, tvtest::ShownList());
  }
  std::vector<std::string> SecondLines() const { return tvtest::RowTexts(tvtest::ShownStopList(), "elm.text.1"); }
  std::string Brief() const {
    Evas_Object* popup = nullptr;
    tvtest::ShownStopList(&popup);
    const char* brief = elm_object_part_text_get(elm_object_content_get(popup), "brief.text.area");
    return brief ? brief : "";
  }
};

TEST_F(StopPopup, ShowsBothRecordingsAndTheChannelAfterTheChange) {
  AskedWhichToStop(TwoRecordings());
  Evas_Object* popup = nullptr;
  tvtest::ShownStopList(&popup);
  EXPECT_STREQ("Change Channel", elm_object_part_text_get(popup, "title,text"));
  EXPECT_EQ("After the antenna change the TV will show \u2068Cable Movies\u2069. Two recordings are in progress: "
            "choose what to do.", Brief());
  EXPECT_EQ(std::vector<std::string>({kStop, kStop, "Do not change channel"}), tvtest::RowTexts(tvtest::ShownStopList()));
  // The antenna named is always the target's, also for the recording on Air.
  EXPECT_EQ(std::vector<std::string>({Fields({"Cable", "4-1", "Riverside News", "Weather at Noon"}),
                                      Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}),
                                      Fields({"Cable", "101", "Cable Movies", "The Long Road Home"})}),
            SecondLines());
  // The recording icon marks the two stop items only.
  std::vector<bool> icons;
  for (Elm_Object_Item* item = elm_genlist_first_item_get(tvtest::ShownStopList()); item;
       item = elm_genlist_item_next_get(item)) {
    icons.push_back(elm_object_item_part_content_get(item, "elm.swallow.content.1") != nullptr);
  }
  EXPECT_EQ(std::vector<bool>({true, true, false}), icons);
  EXPECT_TRUE(Requests().empty());
  EXPECT_EQ(0, tvsim::ExitRequests());
}

TEST_F(StopPopup, SecondLinesDropWhatTheTvCannotTellAndKeepEachFieldOnOneLineInItsDirection) {
  struct Row {
    const char* name;
    json patch;
    void (*edit)(json&);
    std::vector<std::string> lines;
    const char* brief;  // the service named in the brief text, or null
  } rows[] = {
      {"first recording unknown", {{"recordings", {42, kOnCable}}}, nullptr,
       {"", Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}),
        Fields({"Cable", "101", "Cable Movies", "The Long Road Home"})}, nullptr},
      {"no programme guide entries", json::object(),
       [](json& s) { for (json& service : s) service.erase("programme"); },
       {"", "", Fields({"Cable", "101", "Cable Movies"}, "  ")}, nullptr},
      {"untitled programmes", json::object(),
       [](json& s) { ServiceById(s, kOnAir)["programme"] = ServiceById(s, 8388609)["programme"] = ""; },
       {Fields({"Cable", "4-1", "Riverside News", "No information"}),
        Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}), Fields({"Cable", "101", "Cable Movies", "No information"})},
       nullptr},
      {"unnamed antenna and service", {{"antenna_names", {{{"antenna", 0}, {"name", "Air"}}}}},
       [](json& s) { ServiceById(s, kOnCable)["name"] = ""; },
       {Fields({"4-1", "Riverside News", "Weather at Noon"}), Fields({"102", "", "Puppet Theatre"}),
        Fields({"101", "Cable Movies", "The Long Road Home"})}, nullptr},
      // The service's own line breaks are removed before it is shown; tabs remain for the popup.
      {"breaks, tabs and markup in names",
       {{"antenna_names", {{{"antenna", 0}, {"name", "Air"}}, {{"antenna", 1}, {"name", "Ca\nble"}}}}},
       [](json& s) {
         ServiceById(s, kOnAir)["programme"] = "Weather\nat <Noon> & more";
         ServiceById(s, kOnCable)["name"] = "Cable\tKids";
         ServiceById(s, 8388609)["name"] = "Cable\t\tMovies\u2028";
       },
       {Fields({"Ca ble", "4-1", "Riverside News", "Weather at <Noon> & more"}),
        Fields({"Ca ble", "102", "Cable Kids", "Puppet Theatre"}),
        Fields({"Ca ble", "101", "Cable  Movies ", "The Long Road Home"})}, "Cable  Movies "},
      // A name's own direction marks would end the field's isolate early or outlast it.
      {"right-to-left names with stray direction marks", json::object(),
       [](json& s) {
         ServiceById(s, kOnAir)["name"] = "قناة\u2069\u202e 24";
         ServiceById(s, kOnCable)["programme"] = "\u2067Puppet\u202a Theatre\u202c";
         ServiceById(s, 8388609)["name"] = "\u202dسينما\u2066";
       },
       {Fields({"Cable", "4-1", "قناة 24", "Weather at Noon"}), Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}),
        Fields({"Cable", "101", "سينما", "The Long Road Home"})}, "سينما"},
      {"a right-to-left display", {{"settings", {{"db/menu/system/language", "ar_AE"}}}}, nullptr,
       {Fields({"Cable", "4-1", "Riverside News", "Weather at Noon"}, "", "\u200f"),
        Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}, "", "\u200f"),
        Fields({"Cable", "101", "Cable Movies", "The Long Road Home"}, "", "\u200f")}, nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    AskedWhichToStop(TwoRecordings(row.patch, row.edit));
    EXPECT_EQ(row.lines, SecondLines());
    if (row.brief) {
      EXPECT_EQ("After the antenna change the TV will show \u2068" + std::string(row.brief) +
                    "\u2069. Two recordings are in progress: choose what to do.", Brief());
    }
    EXPECT_TRUE(tv.Logged("m_PrepareItemText", "m_ChangeItem[RECORD_NUMBER].text2 is " + row.lines[2], 0, 5));
  }
}

TEST_F(StopPopup, TextsReadTheNumberBeforeTheName) {
  // A record without attributes: each text logs the number's failure before the name's.
  for (const char* op : {"FindService", "GetCurrentService"}) {
    SCOPED_TRACE(op);
    json scenario = TwoRecordings();
    scenario["faults"] = {{{"op", op}, {"no_table", true}}};
    AskedWhichToStop(scenario);
    std::vector<std::string> order;
    for (const tvtest::LogLine& line : tv.Logs()) {
      if (line.message.find("GetServiceNumberString(") != std::string::npos) order.push_back("number");
      if (line.message.find("Get service name error") != std::string::npos) order.push_back("name");
    }
    ASSERT_LE(2u, order.size());
    EXPECT_EQ(std::vector<std::string>({"number", "name"}), std::vector<std::string>(order.begin(), order.begin() + 2));
  }
}

TEST_F(StopPopup, EachAnswerStopsExactlyWhatTheViewerChose) {
  enum Outcome { kSwitches, kLeaves, kFreshList };
  struct Row {
    int playing;
    std::vector<const char*> keys;
    Outcome outcome;
    std::vector<uint64_t> stopped;
  } rows[] = {
      {0, {"Return"}, kSwitches, {kOnAir}},
      {1, {"Down", "Return"}, kSwitches, {kOnCable}},
      {0, {"Down", "Down", "Return"}, kLeaves, {}},
      {0, {"XF86Back"}, kLeaves, {}},
      {0, {"Down", "Down", "Down", "Return"}, kFreshList, {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.keys));
    AskedWhichToStop(TwoRecordings({{"playback", {{"playing", row.playing}}}}));
    Press(row.keys);
    if (row.outcome != kFreshList) {
      ASSERT_TRUE(tvtest::PumpUntil([&] { return Exited(); }));
    }
    EXPECT_EQ(nullptr, tvtest::ShownStopList());
    EXPECT_EQ(row.stopped, Stopped());
    EXPECT_EQ(row.outcome == kSwitches, SwitchedTo(1, 21));
    EXPECT_EQ(row.outcome == kFreshList ? 0 : 1, tvsim::ExitRequests());
    // Playback of recorded content stops before the recording does.
    EXPECT_EQ(row.playing == 1, !Requests().empty() && Requests()[0]["op"] == "stop_playing");
    EXPECT_EQ(2u - row.stopped.size(), tv.Show()["recordings"].size());
    if (row.outcome == kFreshList) {
      EXPECT_EQ("Air", SettledFocus());
      EXPECT_EQ(AntennaSelectionPopup::GetTvMode(), TvMode());
    }
  }
}

}  // namespace
