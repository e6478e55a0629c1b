// Picking another antenna while two recordings run: the popup that asks which
// one to stop, its texts, and what each answer does to the TV.
#include "ChangeFlowFixture.h"

using flowtest::json;
using flowtest::SetTimeScale;

namespace {

constexpr uint64_t kOnAir = 7340034;     // 0x700002, "Riverside News", 4-1
constexpr uint64_t kOnCable = 8388610;  // 0x800002, "Cable Kids", 102

const char* const kStop = "Stop recording and change channel";

// A second line as the popup builds it: the display's direction (a left-to-right
// mark here), then each field from the TV on one line and direction-isolated
// (U+2068 .. U+2069), fields two spaces apart.
std::string Fields(std::initializer_list<std::string> fields, const char* after = "", const char* mark = "\u200e") {
  std::string line;
  for (const std::string& field : fields) line += (line.empty() ? "" : "  ") + ("\u2068" + field + "\u2069");
  return mark + line + after;
}
const char* const kStay = "Do not change channel";

// The two-recording TV with `edit` applied to its services (arrays do not merge).
json TwoRecordings(const json& patch = json::object(), void (*edit)(json& services) = nullptr) {
  json scenario = flowtest::Scenario("two-recordings.json", patch);
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

class StopRecordingPopup : public flowtest::ChangeFlowFixture {
 protected:
  // Picks Cable and waits for the stop-recording popup with its first item focused.
  void AskedWhichToStop(const json& scenario) {
    PickCable(scenario);
    ASSERT_TRUE(tvtest::PumpUntil([&] { return VisibleStopList() != nullptr; }, 2.0));
    ASSERT_TRUE(tvtest::PumpUntil([&] { return FocusedIndex() == 0; }, 2.0));
    EXPECT_EQ(nullptr, VisibleList());
  }

  int FocusedIndex() const {
    Evas_Object* list = VisibleStopList();
    Elm_Object_Item* item = list ? elm_object_focused_item_get(list) : nullptr;
    return item ? Util::GetGenlistItemIndex(item) : -1;
  }

  std::vector<std::string> SecondLines() const { return tvtest::RowTexts(VisibleStopList(), "elm.text.1"); }
};

TEST_F(StopRecordingPopup, ShowsBothRecordingsAndTheChannelAfterTheChange) {
  AskedWhichToStop(TwoRecordings());
  Evas_Object* popup = nullptr;
  ASSERT_NE(nullptr, VisibleStopList(&popup));
  EXPECT_STREQ("Change Channel", elm_object_part_text_get(popup, "title,text"));
  EXPECT_STREQ("After the antenna change the TV will show \u2068Cable Movies\u2069. Two recordings are in progress: choose "
               "what to do.",
               elm_object_part_text_get(elm_object_content_get(popup), "brief.text.area"));
  EXPECT_EQ(std::vector<std::string>({kStop, kStop, kStay}), tvtest::RowTexts(VisibleStopList()));
  // The antenna named is always the target's, also for the recording on Air.
  EXPECT_EQ(std::vector<std::string>({Fields({"Cable", "4-1", "Riverside News", "Weather at Noon"}),
                                      Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}),
                                      Fields({"Cable", "101", "Cable Movies", "The Long Road Home"})}),
            SecondLines());
  // The recording icon marks the two stop items only.
  std::vector<bool> icons;
  for (Elm_Object_Item* item = elm_genlist_first_item_get(VisibleStopList()); item; item = elm_genlist_item_next_get(item)) {
    icons.push_back(elm_object_item_part_content_get(item, "elm.swallow.content.1") != nullptr);
  }
  EXPECT_EQ(std::vector<bool>({true, true, false}), icons);
  EXPECT_TRUE(tv.Logged("m_AntennaItemSelectCb", "nRecordCnt 2, nTunerCnt 2 ", 0, 5));
  EXPECT_TRUE(tv.Logged("m_CreateServIdList", "get recording service id list success, nCount = 2, eResult = 0", 0, 4));
  EXPECT_TRUE(tv.Logged("m_CreateServIdList", "GetCurrentService for changing tvmode ret 1", 0, 5));
  EXPECT_TRUE(tv.Logged("m_SetNotifyInfo", "Service name is Cable Movies", 0, 5));
  EXPECT_TRUE(tv.Logged("m_ItemContentGet",
                        std::string("add record icon. path [") + TV_RES_DIR + "/images/epg_icon_body_recording.png]", 0, 5));
  // Nothing happened to the TV yet.
  EXPECT_TRUE(Requests().empty());
  EXPECT_TRUE(Tuning().empty());
  EXPECT_EQ(0, tvsim::ExitRequests());
}

// A record that lacks its attributes: each text reads the channel number (and
// logs its failure) before the service name.
TEST_F(StopRecordingPopup, TextsReadTheNumberBeforeTheName) {
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
    EXPECT_EQ("number", order[0]);
    EXPECT_EQ("name", order[1]);
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(StopRecordingPopup, SecondLinesDropWhatTheTvCannotTell) {
  struct Row {
    const char* name;
    json patch;
    void (*edit)(json&);
    std::vector<std::string> lines;
    const char* log;  // an error line of m_GetButtonItemText, or null
  } rows[] = {
      {"first recording unknown", {{"recordings", {42, kOnCable}}}, nullptr,
       {"", Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}),
        Fields({"Cable", "101", "Cable Movies", "The Long Road Home"})},
       "ServData can not get ."},
      {"no programme guide entries", json::object(),
       [](json& s) {
         for (json& service : s) service.erase("programme");
       },
       {"", "", Fields({"Cable", "101", "Cable Movies"}, "  ")}, "ProgData can not get ."},
      {"untitled programmes", json::object(),
       [](json& s) {
         ServiceById(s, kOnAir)["programme"] = "";
         ServiceById(s, 8388609)["programme"] = "";
       },
       {Fields({"Cable", "4-1", "Riverside News", "No information"}),
        Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}), Fields({"Cable", "101", "Cable Movies", "No information"})},
       nullptr},
      {"unnamed antenna and service", {{"antenna_names", {{{"antenna", 0}, {"name", "Air"}}}}},
       [](json& s) { ServiceById(s, kOnCable)["name"] = ""; },
       {Fields({"4-1", "Riverside News", "Weather at Noon"}), Fields({"102", "", "Puppet Theatre"}),
        Fields({"101", "Cable Movies", "The Long Road Home"})},
       nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    AskedWhichToStop(TwoRecordings(row.patch, row.edit));
    EXPECT_EQ(row.lines, SecondLines());
    if (row.log) {
      EXPECT_TRUE(tv.Logged("m_GetButtonItemText", row.log, 2, 5));
    }
    EXPECT_TRUE(tv.Logged("m_PrepareItemText", "m_ChangeItem[RECORD_NUMBER].text2 is " + row.lines[2], 0, 5));
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(StopRecordingPopup, NamesFromTheTvShowOnOneLineEachFieldWithItsOwnDirection) {
  struct Row {
    const char* name;
    json patch;
    void (*edit)(json&);
    std::vector<std::string> lines;
    const char* brief;  // the service named in the brief text
  } rows[] = {
      {"line breaks and tabs in programme titles", json::object(),
       [](json& s) {
         ServiceById(s, kOnAir)["programme"] = "Weather\nat Noon";
         ServiceById(s, kOnCable)["programme"] = "Puppet\tTheatre";
         ServiceById(s, 8388609)["programme"] = "The Long\r\nRoad\u2029Home";
       },
       {Fields({"Cable", "4-1", "Riverside News", "Weather at Noon"}), Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}),
        Fields({"Cable", "101", "Cable Movies", "The Long Road Home"})},
       "Cable Movies"},
      // The service's own line breaks are removed before it is shown (Util::Twstring2String); tabs remain for the popup.
      {"breaks in the antenna name, tabs in service names",
       {{"antenna_names", {{{"antenna", 0}, {"name", "Air"}}, {{"antenna", 1}, {"name", "Ca\nble\t2"}}}}},
       [](json& s) {
         ServiceById(s, kOnCable)["name"] = "Cable\tKids";
         ServiceById(s, 8388609)["name"] = "Cable\t\tMovies\u2028";
       },
       {Fields({"Ca ble 2", "4-1", "Riverside News", "Weather at Noon"}),
        Fields({"Ca ble 2", "102", "Cable Kids", "Puppet Theatre"}),
        Fields({"Ca ble 2", "101", "Cable  Movies ", "The Long Road Home"})},
       "Cable  Movies "},
      {"right-to-left names in a left-to-right line", json::object(),
       [](json& s) {
         ServiceById(s, kOnAir)["name"] = "قناة 24";
         ServiceById(s, kOnAir)["programme"] = "חדשות 12";
         ServiceById(s, 8388609)["name"] = "سينما";
       },
       {Fields({"Cable", "4-1", "قناة 24", "חדשות 12"}), Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}),
        Fields({"Cable", "101", "سينما", "The Long Road Home"})},
       "سينما"},
      // A name's own direction marks would end the field's isolate early or outlast it.
      {"names with stray direction marks", json::object(),
       [](json& s) {
         ServiceById(s, kOnAir)["name"] = "News\u2069\u202e 24";
         ServiceById(s, kOnCable)["programme"] = "\u2067Puppet\u202a Theatre\u202c";
         ServiceById(s, 8388609)["name"] = "\u202dCable Movies\u2066";
       },
       {Fields({"Cable", "4-1", "News 24", "Weather at Noon"}), Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}),
        Fields({"Cable", "101", "Cable Movies", "The Long Road Home"})},
       "Cable Movies"},
      // A right-to-left display lays the fields out from the right, whatever the names.
      {"a right-to-left display", {{"settings", {{"db/menu/system/language", "ar_AE"}}}}, nullptr,
       {Fields({"Cable", "4-1", "Riverside News", "Weather at Noon"}, "", "\u200f"),
        Fields({"Cable", "102", "Cable Kids", "Puppet Theatre"}, "", "\u200f"),
        Fields({"Cable", "101", "Cable Movies", "The Long Road Home"}, "", "\u200f")},
       nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    AskedWhichToStop(TwoRecordings(row.patch, row.edit));
    EXPECT_EQ(row.lines, SecondLines());
    Evas_Object* popup = nullptr;
    ASSERT_NE(nullptr, VisibleStopList(&popup));
    const char* brief = elm_object_part_text_get(elm_object_content_get(popup), "brief.text.area");
    if (row.brief) {
      EXPECT_STREQ(("After the antenna change the TV will show \u2068" + std::string(row.brief) +
                    "\u2069. Two recordings are in progress: choose what to do.").c_str(), brief);
    }
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(StopRecordingPopup, EachAnswerStopsExactlyWhatTheViewerChose) {
  enum Outcome { kSwitches, kLeaves, kFreshList };
  struct Row {
    const char* name;
    int playing;
    std::vector<const char*> keys;
    Outcome outcome;
    std::vector<uint64_t> stopped;
  } rows[] = {
      {"first item", 0, {"Return"}, kSwitches, {kOnAir}},
      {"second item, playback running", 1, {"Down", "Return"}, kSwitches, {kOnCable}},
      {"do not change", 0, {"Down", "Down", "Return"}, kLeaves, {}},
      {"back", 0, {"XF86Back"}, kLeaves, {}},
      {"cancel", 0, {"Down", "Down", "Down", "Return"}, kFreshList, {}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    AskedWhichToStop(TwoRecordings({{"playback", {{"playing", row.playing}}}}));
    for (const char* key : row.keys) tvtest::PressKey(m_pWindow, key);
    if (row.outcome != kFreshList) {
      ASSERT_TRUE(tvtest::PumpUntil([&] { return Exited(); }));
    }
    EXPECT_EQ(nullptr, VisibleStopList());
    EXPECT_EQ(row.stopped, Stopped());
    EXPECT_EQ(row.outcome == kSwitches, SwitchedToCable());
    EXPECT_EQ(row.outcome == kFreshList ? 0 : 1, tvsim::ExitRequests());
    // Playback of recorded content stops before the recording does.
    EXPECT_EQ(row.playing == 1, !Requests().empty() && Requests()[0]["op"] == "stop_playing");
    json recordings = tv.Show()["recordings"];
    EXPECT_EQ(2u - row.stopped.size(), recordings.size());
    if (row.outcome == kSwitches) {
      char line[80];
      snprintf(line, sizeof line, "stop recording success , servic id = 0x%llx",
               static_cast<unsigned long long>(row.stopped[0]));
      EXPECT_TRUE(tv.Logged("m_ItemSelectCb", line, 0, 4));
      EXPECT_TRUE(tv.Logged("sm_CbSvcPvr", "recording stopped, change antenna now", 0, 5));
    }
    if (row.outcome == kFreshList) {
      EXPECT_TRUE(tv.Logged("m_ButtonClickCB", "Cancel button clicked, exit epg", 0, 5));
      EXPECT_EQ("Air", SettledListFocus());
      EXPECT_EQ(AntennaSelectionPopup::GetTvMode(), TvMode());
    }
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(StopRecordingPopup, LeftAloneItGoesBackToAFreshList) {
  // Every view's 30 s become 1.5 s: time enough to pick, short enough to wait for.
  SetTimeScale("0.05");
  AskedWhichToStop(TwoRecordings());
  for (const char* key : {"Down", "Down", "Down"}) tvtest::PressKey(m_pWindow, key);
  EXPECT_TRUE(tv.Logged("m_ButtonFocusedCB", "m_ButtonFocusedCB", 0, 5));
  ASSERT_TRUE(tvtest::PumpUntil([&] { return VisibleStopList() == nullptr && VisibleList() != nullptr; }));
  EXPECT_EQ("Air", SettledListFocus());
  EXPECT_EQ(AntennaSelectionPopup::GetTvMode(), TvMode());
  EXPECT_TRUE(Requests().empty());
  EXPECT_TRUE(Tuning().empty());
  EXPECT_EQ(0, tvsim::ExitRequests());
}

TEST_F(StopRecordingPopup, ARefusedStopEndsAtOnceAndAnAcceptedOneWaitsForItsReport) {
  // Refused: the recording runs on and no report will come.
  AskedWhichToStop(TwoRecordings());
  tv.AddFault({{"op", "rec_stop_recording"}, {"result", -3}});
  tvtest::PressKey(m_pWindow, "Return");
  EXPECT_EQ(1, tvsim::ExitRequests());
  EXPECT_TRUE(tv.Logged("m_ItemSelectCb", "stop recording failed , servic id = 0x700002", 2, 5));
  EXPECT_TRUE(tv.Logged("StopReportWillNotCome", "the stop request failed, leaving without change", 2, 5));
  EXPECT_EQ(nullptr, VisibleStopList());
  EXPECT_TRUE(Tuning().empty());
  AntennaSelectionPopup::DestroyInstance();
  tvsim::ResetExitRequests();

  // Accepted, the report slow to come: the switch waits for it, past any time-out.
  AskedWhichToStop(TwoRecordings({{"recorder", {{"stop_report", {{"never", true}}}}}}));
  SetTimeScale("0.002");
  tvtest::PressKey(m_pWindow, "Return");
  const double until = ecore_time_get() + 0.3;
  tvtest::PumpUntil([&] { return Exited() || ecore_time_get() > until; }, 1.0);
  EXPECT_FALSE(Exited());
  EXPECT_EQ(nullptr, VisibleStopList());
  EXPECT_TRUE(Tuning().empty());
  SendRecorderEvent(1, 1);
  EXPECT_TRUE(SwitchedToCable());
  EXPECT_EQ(1, tvsim::ExitRequests());
}

}  // namespace
