// The recorder's stop report: on the main loop after rec_stop_recording has
// returned, with the scenario's event and result, after its delay or never;
// rec_service_destroy cancels a pending one.
#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "Recorder.h"
#include "SimTestUtil.h"
#include "TempTv.h"

using nlohmann::json;

namespace {

void OnReport(rec_result result, void* data) {
  static_cast<std::vector<rec_result>*>(data)->push_back(result);
}

json WithReport(json stopReport) {
  json tv = simtest::ReadScenario("two-recordings.json");
  tv["recorder"] = {{"stop_report", stopReport}};
  return tv;
}

}  // namespace

TEST(RecorderReport, ComesOnTheLoopAfterTheCallWithTheScenariosEventAndResult) {
  struct Row { const char* name; json stopReport; int event, result; } rows[] = {{"defaults", json::object(), 1, 1},
                      {"a failed stop", {{"event", 1}, {"result", 0}, {"delay_ms", 20}}, 1, 0},
                      {"another event", {{"event", 2}, {"result", 1}}, 2, 1}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load(WithReport(row.stopReport));
    std::vector<rec_result> reports;
    ASSERT_EQ(1, rec_service_init());
    ASSERT_EQ(0, rec_register_to_other_apps_cb(OnReport, &reports));
    ASSERT_EQ(0, rec_stop_recording(8388610, 1, "org.norix.epg"));
    EXPECT_TRUE(reports.empty());  // not inside the call
    ASSERT_TRUE(simtest::PumpUntil([&] { return !reports.empty(); }, 10.0));
    const rec_result& got = reports[0];
    EXPECT_EQ(std::tuple(row.event, row.result, 8388610), std::tuple(got.event, got.result, got.data[0]));
    EXPECT_EQ(0, rec_unregister_to_other_apps_cb(OnReport));
    EXPECT_EQ(0, rec_service_destroy());
  }
}

TEST(RecorderReport, NeverComesWhenSaidSoOrAfterDestroy) {
  struct Row { const char* name; json stopReport; void (*after)(); } rows[] = {
      {"never", {{"never", true}}, [] {}},
      {"destroyed while pending", {{"delay_ms", 50}}, [] { rec_service_destroy(); }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load(WithReport(row.stopReport));
    std::vector<rec_result> reports, witness;
    rec_service_init();
    rec_register_to_other_apps_cb(OnReport, &reports);
    ASSERT_EQ(0, rec_stop_recording(8388610, 1, "org.norix.epg"));
    row.after();
    // A second stop with the same delay, heard by a fresh registration: the first
    // report, had it survived, would have reached that registration before it.
    rec_service_init();
    tv.Load(WithReport({{"delay_ms", 50}}));
    rec_register_to_other_apps_cb(OnReport, &witness);
    ASSERT_EQ(0, rec_stop_recording(7340034, 1, "org.norix.epg"));
    ASSERT_TRUE(simtest::PumpUntil([&] { return !witness.empty(); }, 10.0));
    EXPECT_TRUE(reports.empty());
    ASSERT_EQ(1u, witness.size());
    EXPECT_EQ(7340034, witness[0].data[0]);
    rec_service_destroy();
  }
}
