// Picking another antenna while a recording runs on the only recordable tuner:
// the question, the stop, the wait for the recorder's report and the switch,
// end to end against the simulated TV.
#include "ChangeFlowFixture.h"

using flowtest::json;
using flowtest::kCaller;
using flowtest::SetTimeScale;

namespace {

constexpr uint64_t kRecorded = 7340034;  // 0x700002, on Air

// The sample TV tuned to Air with one recording and one recordable tuner; the
// recorder reports a stop at once unless `recorder` says otherwise.
json OneRecording(const json& patch = json::object()) {
  json scenario = flowtest::Scenario("sample.json", {{"recordings", {kRecorded}},
                                                     {"settings", {{"system_info/238", 1}}},
                                                     {"recorder", {{"stop_report", {{"delay_ms", 0}, {"event", 1}, {"result", 1}}}}}});
  scenario.merge_patch(patch);
  return scenario;
}

class ChangeFlow : public flowtest::ChangeFlowFixture {
 protected:
  // Picks Cable and checks that the question is on screen with Cancel focused.
  void AskedToStop(const json& scenario) {
    PickCable(scenario);
    std::vector<Evas_Object*> buttons;
    ASSERT_NE(nullptr, VisibleBox(&buttons));
    ASSERT_EQ(2u, buttons.size());
    EXPECT_STREQ("Change Antenna", elm_object_text_get(buttons[0]));
    EXPECT_STREQ("Cancel", elm_object_text_get(buttons[1]));
    EXPECT_TRUE(tvtest::PumpUntil([&] { return elm_object_focused_object_get(m_pWindow) == buttons[1]; }, 1.0));
    EXPECT_EQ(nullptr, VisibleList());
  }

  // Presses the box's first button with `key` (focus moves there with Left).
  void AnswerOnButton1(const char* key) {
    tvtest::PressKey(m_pWindow, "Left");
    tvtest::PressKey(m_pWindow, key);
  }
};

TEST_F(ChangeFlow, OneRecordingOnTheOnlyTunerAsksFirst) {
  AskedToStop(OneRecording());
  EXPECT_TRUE(tv.Logged("m_AntennaItemSelectCb", "nRecordCnt 1, nTunerCnt 1 ", 0, 5));
  EXPECT_TRUE(tv.Logged("t_CreateMsgWidget", "t_CreateMsgWidget...", 0, 5));
  EXPECT_TRUE(tv.Logged("m_OnMsgBoxVisibilityChange", "bMsgBoxVisible:1", 0, 5));
  EXPECT_EQ(AntennaSelectionPopup::GetTvMode(), TvMode(ANTENNA_MODE_1, static_cast<ServiceMode>(21)));
  // A stop report nobody asked for changes nothing.
  SendRecorderEvent(1, 1);
  EXPECT_NE(nullptr, VisibleBox());
  EXPECT_TRUE(Tuning().empty());
  EXPECT_TRUE(Requests().empty());
  EXPECT_EQ(0, tvsim::ExitRequests());
}

TEST_F(ChangeFlow, AnswersDecideBetweenStopAndSwitchLeavingAndAFreshList) {
  enum Outcome { kSwitches, kLeaves, kFreshList };
  struct Row {
    const char* name;
    bool onButton1;
    const char* key;
    Outcome outcome;
  } rows[] = {
      {"select on change", true, "Return", kSwitches},
      {"back on change", true, "XF86Back", kLeaves},
      {"select on cancel", false, "Return", kFreshList},
      {"back on cancel", false, "XF86Back", kFreshList},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    AskedToStop(OneRecording());
    if (row.onButton1) {
      AnswerOnButton1(row.key);
    } else {
      tvtest::PressKey(m_pWindow, row.key);
    }
    EXPECT_EQ(nullptr, VisibleBox());
    if (row.outcome == kSwitches) {
      ASSERT_TRUE(tvtest::PumpUntil([&] { return Exited(); }));
      const json requests = Requests();
      ASSERT_EQ(1u, requests.size());
      EXPECT_EQ(json({"stop_recording", kRecorded, kCaller}),
                json({requests[0]["op"], requests[0]["service_id"], requests[0]["caller"]}));
      EXPECT_EQ(json::array(), tv.Show()["recordings"]);
      EXPECT_TRUE(tv.Logged("StopCurrentRecording", "stop recording success , servic id = 0x700002", 0, 5));
      EXPECT_TRUE(tv.Logged("sm_CbSvcPvr", "recording stopped, change antenna now", 0, 5));
      ASSERT_EQ(1u, Tuning().size());
      EXPECT_EQ(1, Tuning()[0]["antenna"]);
      EXPECT_EQ(21, Tuning()[0]["service"]);
      EXPECT_EQ(1, tvsim::ExitRequests());
    } else {
      EXPECT_TRUE(Requests().empty());
      EXPECT_TRUE(Tuning().empty());
      EXPECT_EQ(row.outcome == kLeaves ? 1 : 0, tvsim::ExitRequests());
    }
    if (row.outcome == kFreshList) {
      // The list is built anew, the current antenna focused, and it works.
      EXPECT_EQ("Air", SettledListFocus());
      EXPECT_EQ(AntennaSelectionPopup::GetTvMode(), TvMode());
      tvtest::PressKey(m_pWindow, "Down");
      tvtest::PressKey(m_pWindow, "Return");
      EXPECT_NE(nullptr, VisibleBox());
    }
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(ChangeFlow, QuestionLeftAloneEndsWithoutSwitching) {
  PickCable(OneRecording());
  ASSERT_NE(nullptr, VisibleBox());
  // The box counts from its last activity: a focus move restarts it, now at 10 s x 0.002.
  SetTimeScale("0.002");
  tvtest::PressKey(m_pWindow, "Left");
  ASSERT_TRUE(tvtest::PumpUntil([] { return tvsim::ExitRequests() >= 1; }));
  EXPECT_TRUE(tv.Logged("m_ChangeAntennaTimeOut", "MessageBox time out,m_OnTimeOutHideMsgBox", 0, 5));
  EXPECT_EQ(nullptr, VisibleBox());
  EXPECT_TRUE(Tuning().empty());
  EXPECT_TRUE(Requests().empty());
}

TEST_F(ChangeFlow, OnlyAReportOfAStoppedRecordingSwitches) {
  struct Row {
    const char* name;
    int event, result;
  } rows[] = {
      {"failed stop", 1, 0},
      {"another event", 2, 1},
      {"another event, failed", 0, 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    AskedToStop(OneRecording({{"recorder", {{"stop_report", {{"event", row.event}, {"result", row.result}}}}}}));
    AnswerOnButton1("Return");
    ASSERT_TRUE(tvtest::PumpUntil([&] { return CallbackLines() >= 1; }));
    EXPECT_EQ(1u, Requests().size());
    EXPECT_TRUE(Tuning().empty());
    EXPECT_EQ(0, tvsim::ExitRequests());
    // Still waiting: the first real report switches, a second one finds nobody waiting.
    SendRecorderEvent(1, 1);
    ASSERT_EQ(1u, Tuning().size());
    EXPECT_EQ(1, Tuning()[0]["antenna"]);
    SendRecorderEvent(1, 1);
    EXPECT_EQ(1u, Tuning().size());
    EXPECT_EQ(1, tvsim::ExitRequests());
    AntennaSelectionPopup::DestroyInstance();
  }
}

TEST_F(ChangeFlow, AnAcceptedStopWaitsForItsReportHoweverLate) {
  AskedToStop(OneRecording({{"recorder", {{"stop_report", {{"never", true}}}}}}));
  SetTimeScale("0.002");  // any time-out of the application is over within 60 ms
  AnswerOnButton1("Return");
  EXPECT_TRUE(tv.Logged("StopCurrentRecording", "stop recording success , servic id = 0x700002", 0, 5));
  // Far longer than any time-out the application has: still waiting, nothing on screen.
  const double until = ecore_time_get() + 0.3;
  tvtest::PumpUntil([&] { return Exited() || ecore_time_get() > until; }, 1.0);
  EXPECT_FALSE(Exited());
  EXPECT_TRUE(Tuning().empty());
  EXPECT_TRUE(AntennaSelectionPopup::s_bWaitStopRecToChangeAntenna);
  EXPECT_EQ(nullptr, VisibleBox());
  EXPECT_EQ(nullptr, VisibleList());
  // The report, however late, switches.
  SendRecorderEvent(1, 1);
  EXPECT_TRUE(SwitchedToCable());
  EXPECT_EQ(1, tvsim::ExitRequests());
}

TEST_F(ChangeFlow, WhenNoReportCanComeTheWaitEndsAtOnce) {
  struct Row {
    const char* name;
    json fault;  // set once the question is on screen
    bool endRecording;  // the recording ends by itself while the question is shown
    const char* stopLine;  // StopCurrentRecording's line about the stop
    int stopBuffer;
    const char* endLine;  // StopReportWillNotCome's line
    int endBuffer;
    bool switches;
  } rows[] = {
      {"the stop is refused", {{"op", "rec_stop_recording"}, {"result", -3}}, false,
       "stop recording failed , servic id = 0x700002", 2, "the stop request failed, leaving without change", 2,
       false},
      {"the list cannot be read", {{"op", "rec_get_recording_service_id_list"}, {"result", -5}}, false,
       "get recording service id list failed, nCount = 0, eResult = -5", 2,
       "the stop request failed, leaving without change", 2, false},
      {"nothing is left to stop", nullptr, true, "get recording service id list success, nCount = 0, eResult = 0", 0,
       "no recording left to stop, change antenna now", 0, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    AskedToStop(OneRecording());
    if (!row.fault.is_null()) tv.AddFault(row.fault);
    if (row.endRecording) tvsim::Control(tv.DbPath()).StopRecording(kRecorded);
    AnswerOnButton1("Return");
    // At once, inside the answer: no time-out is involved.
    EXPECT_EQ(1, tvsim::ExitRequests());
    EXPECT_TRUE(tv.Logged("StopCurrentRecording", row.stopLine, row.stopBuffer, 5));
    EXPECT_TRUE(tv.Logged("StopReportWillNotCome", row.endLine, row.endBuffer, 5));
    EXPECT_EQ(row.switches, SwitchedToCable());
    EXPECT_EQ(row.switches ? 1u : 0u, Tuning().size());
    EXPECT_FALSE(AntennaSelectionPopup::s_bWaitStopRecToChangeAntenna);
    // A report after the end must not switch (again).
    SendRecorderEvent(1, 1);
    EXPECT_EQ(row.switches ? 1u : 0u, Tuning().size());
    AntennaSelectionPopup::DestroyInstance();
    tvsim::ResetExitRequests();
  }
}

TEST_F(ChangeFlow, PlaybackStopsBeforeTheRecordingAndAtMostTwoRecordingsAreStopped) {
  struct Row {
    const char* name;
    int playing;
    std::vector<uint64_t> startedMeanwhile;  // recordings started while the question is shown
    std::vector<std::string> ops;
    std::vector<uint64_t> stopped;
  } rows[] = {
      {"playback running", 1, {}, {"stop_playing", "stop_recording"}, {kRecorded}},
      {"no playback", 0, {}, {"stop_recording"}, {kRecorded}},
      // The list has room for two: a third recording is not read past its end.
      {"three recordings by then", 0, {8388610, 9502721}, {"stop_recording", "stop_recording"}, {kRecorded, 8388610}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    AskedToStop(OneRecording({{"playback", {{"playing", row.playing}}}}));
    for (uint64_t id : row.startedMeanwhile) tvsim::Control(tv.DbPath()).StartRecording(id);
    AnswerOnButton1("Return");
    ASSERT_TRUE(tvtest::PumpUntil([&] { return Exited(); }));
    const json requests = Requests();
    std::vector<std::string> ops;
    std::vector<uint64_t> stopped;
    for (const json& request : requests) {
      ops.push_back(request["op"]);
      EXPECT_EQ(kCaller, request["caller"]);
      if (request["op"] == "stop_recording") stopped.push_back(request["service_id"]);
    }
    EXPECT_EQ(row.ops, ops);
    EXPECT_EQ(row.stopped, stopped);
    EXPECT_EQ(row.playing == 1, tv.Logged("StopPlayingMultimedia", "stop playing", 0, 4));
    AntennaSelectionPopup::DestroyInstance();
  }
}

}  // namespace
