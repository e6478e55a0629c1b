// Recorder events sent from outside (tvctl recorder-event, Control): they reach
// the callback registered at the time, on the main loop, each once per process;
// nothing sent before the registration or after the unregistration arrives, and
// a stop is reported on the loop, after the call.
#include <gtest/gtest.h>

#include <vector>

#include "Control.h"
#include "Recorder.h"
#include "SimTestUtil.h"
#include "TempTv.h"

namespace {

struct Heard {
  std::vector<rec_result> events;
};

void OnEvent(rec_result result, void* data) { static_cast<Heard*>(data)->events.push_back(result); }

// A second function, so that a fresh registration is told apart from the first.
void OnEventToo(rec_result result, void* data) { static_cast<Heard*>(data)->events.push_back(result); }

std::vector<int> EventsOf(const Heard& heard) {
  std::vector<int> events;
  for (const rec_result& r : heard.events) events.push_back(r.event);
  return events;
}

}  // namespace

TEST(RecorderEvent, ReachesTheRegisteredCallbackOnTheLoopOnceWithItsWords) {
  tvtest::TempTv tv;
  tv.LoadFile("one-recording.json");
  Heard heard;
  ASSERT_EQ(1, rec_service_init());
  ASSERT_EQ(0, rec_register_to_other_apps_cb(OnEvent, &heard));

  ASSERT_EQ(0, tv.Run(simtest::Tvctl() + " recorder-event 1 1 7 -8 4294967295"));  // another process
  tvsim::Control(tv.DbPath()).SendRecorderEvent(2, 0, {5});                          // another connection
  EXPECT_TRUE(heard.events.empty());  // only from the main loop
  ASSERT_TRUE(simtest::PumpUntil([&] { return heard.events.size() == 2; }, 10.0));
  EXPECT_EQ(1, heard.events[0].event);
  EXPECT_EQ(1, heard.events[0].result);
  const int32_t words[5] = {7, -8, -1, 0, 0};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(words[i], heard.events[0].data[i]) << "word " << i + 3;
  EXPECT_EQ(2, heard.events[1].event);
  EXPECT_EQ(0, heard.events[1].result);
  EXPECT_EQ(5, heard.events[1].data[0]);

  // A later event comes alone: the first two are not delivered again.
  tvsim::Control(tv.DbPath()).SendRecorderEvent(3, 1);
  ASSERT_TRUE(simtest::PumpUntil([&] { return heard.events.size() >= 3; }, 10.0));
  EXPECT_EQ((std::vector<int>{1, 2, 3}), EventsOf(heard));

  EXPECT_EQ(0, rec_unregister_to_other_apps_cb(OnEvent));
  rec_service_destroy();
}

TEST(RecorderEvent, NothingSentBeforeRegistrationOrAfterItEndsArrives) {
  struct Row { const char* name; void (*end)(); } rows[] = {
      {"unregistered", [] { rec_unregister_to_other_apps_cb(OnEvent); }},
      {"service destroyed", [] { rec_service_destroy(); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tvsim::Control control(tv.DbPath());
    Heard first, second;
    rec_service_init();
    control.SendRecorderEvent(10, 1);  // before anyone listens
    ASSERT_EQ(0, rec_register_to_other_apps_cb(OnEvent, &first));
    control.SendRecorderEvent(11, 1);
    ASSERT_TRUE(simtest::PumpUntil([&] { return !first.events.empty(); }, 10.0));

    row.end();
    control.SendRecorderEvent(12, 1);  // nobody listens
    rec_service_init();
    ASSERT_EQ(0, rec_register_to_other_apps_cb(OnEventToo, &second));
    control.SendRecorderEvent(13, 1);
    // Had 12 been delivered, it would have come before 13.
    ASSERT_TRUE(simtest::PumpUntil([&] { return !second.events.empty(); }, 10.0));
    EXPECT_EQ(std::vector<int>{11}, EventsOf(first));
    EXPECT_EQ(std::vector<int>{13}, EventsOf(second));
    rec_unregister_to_other_apps_cb(OnEventToo);
    // The next row's new database numbers its events from 1 again.
  }
}

// The recorder's own report of a stop: on the loop after rec_stop_recording
// returned, with the scenario's event and result and the stopped id.
TEST(RecorderEvent, AStopIsReportedOnTheLoopAfterTheCall) {
  tvtest::TempTv tv;
  nlohmann::json scenario = simtest::ReadScenario("two-recordings.json");
  scenario["recorder"] = {{"stop_report", {{"delay_ms", 0}, {"event", 1}, {"result", 0}}}};
  tv.Load(scenario);
  Heard heard;
  rec_service_init();
  ASSERT_EQ(0, rec_register_to_other_apps_cb(OnEvent, &heard));
  ASSERT_EQ(0, rec_stop_recording(8388610, 1, "org.norix.epg"));
  EXPECT_TRUE(heard.events.empty());  // not inside the call
  ASSERT_TRUE(simtest::PumpUntil([&] { return !heard.events.empty(); }, 10.0));
  EXPECT_EQ(std::vector<int>({1, 0, 8388610}),
            std::vector<int>({heard.events[0].event, heard.events[0].result, heard.events[0].data[0]}));
  rec_unregister_to_other_apps_cb(OnEvent);
  rec_service_destroy();
}
