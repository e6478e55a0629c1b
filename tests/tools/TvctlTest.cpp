// tvctl, run as people and scripts run it: exit codes, refusals that change
// nothing, and each verb's effect on the database.
#include <gtest/gtest.h>

#include <fstream>

#include "../sim/SimTestUtil.h"
#include "TempTv.h"

using nlohmann::json;

namespace {

json ShowThroughTvctl(const tvtest::TempTv& tv) {
  std::string out;
  EXPECT_EQ(0, tv.Run(simtest::Tvctl() + " show", &out));
  return json::parse(out);
}

}  // namespace

TEST(Tvctl, ExitsZeroOnSuccessTwoOnBadUsageAndChangesNothingThen) {
  tvtest::TempTv tv;
  const std::string tvctl = simtest::Tvctl();
  const std::string scenarios = std::string(TV_SOURCE_DIR) + "/scenarios/";
  ASSERT_EQ(0, tv.Run(tvctl + " load " + scenarios + "sample.json"));
  std::ofstream(tv.Dir() + "/bad.json") << R"({"services": [{"id": 1, "antenna": 0, "service": 1, "major": 1}]})";
  std::ofstream(tv.Dir() + "/fault.json") << "not json";
  const json before = ShowThroughTvctl(tv);

  const std::pair<const char*, const char*> rows[] = {  // arguments and the message on stderr; all exit with 2
      {"", "missing verb"}, {"frobnicate", "unknown verb"},
      {"load", "missing arguments"}, {"load bad.json", "/services/0: missing member \"name\""},
      {"load fault.json", "not JSON"}, {"load missing.json", "cannot read"},
      {"set db/no/such/key 1", "unknown settings key"}, {"set db/menu/picture/pip/onoff on", "not a 32-bit integer"},
      {"tune 7 1", "antenna 7"}, {"tune 1 x", "not a number"},
      {"fault add Tune --result 1", "unknown operation"}, {"fault add GetTvMode", "exactly one effect"},
      {"fault add GetTvMode --result", "needs a value"}, {"fault add GetTvMode --bogus", "unknown option"},
      {"fault clear 99", "no fault with id 99"}, {"recording stop 5", "not being recorded"},
      {"recording start 7340034", "already being recorded"}, {"recording pause 5", "expected start or stop"},
      {"show no_such_member", "no member"}, {"reset extra", "too many arguments"},
      {"recorder-event x 1", "not a number"},
      {"recorder-event 1 1 4294967296", "not a 32-bit word"}, {"recorder-event 1 1 -2147483649", "not a 32-bit word"},
      {"recorder-event 1 1 1 2 3 4 5 6", "too many arguments"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.first);
    std::string err;
    EXPECT_EQ(2, tv.Run("cd " + tv.Dir() + " && " + tvctl + " " + row.first + " 2>&1 >/dev/null", &err));
    EXPECT_NE(std::string::npos, err.find(row.second)) << err;
    EXPECT_EQ(before, ShowThroughTvctl(tv));
  }
  std::string out;
  EXPECT_EQ(0, tv.Run(tvctl + " fault --help", &out));
  EXPECT_NE(std::string::npos, out.find("usage: tvctl")) << out;
  EXPECT_EQ(before, ShowThroughTvctl(tv));
}

TEST(Tvctl, ChecksEveryNumberAtFullWidthAndEveryValueAsTheDocsDefineIt) {
  tvtest::TempTv tv;
  const std::string tvctl = simtest::Tvctl();
  ASSERT_EQ(0, tv.Run(tvctl + " load " + std::string(TV_SOURCE_DIR) + "/scenarios/sample.json"));
  const json before = ShowThroughTvctl(tv);
  const std::pair<const char*, const char*> refused[] = {  // all exit with 2 and change nothing
      {"tune 1 21 --screen 4294967296", "screen 4294967296"}, {"tune 4294967298 4294967301", "antenna 4294967298"},
      {"tune 1 21 --screen -1", "screen -1"}, {"tune 0 256", "service mode 256"}, {"tune 0 -2", "service mode -2"},
      {"tune 1 +21", "not a number"}, {"tune 1 21 --screen 0x1", "not a number"},
      {"playback 2", "out of range 0..1"}, {"playback -1", "out of range 0..1"}, {"playback '1 '", "not a number"},
      {"set kpi/filter_detail 1", "not true or false"}, {"set com.velmora/featureconf/pvr.pvr_support yes", "not true"},
      {"set system_info/18 '2 '", "not a 32-bit integer"}, {"set system_info/18 2147483648", "not a 32-bit integer"},
      {"set db/menu/system/language '\xc3'", "not UTF-8"}, {"set db/menu/system/language '\xed\xa0\x80'", "not UTF-8"},
      {"recording start 18446744073709551616", "past 2^64-1"}, {"fault clear 0", "out of range"},
      {"fault add GetTvMode --result ' 1'", "not a number"}, {"recorder-event 1 1 0x10", "not a number"},
      {"--db a.db --db b.db show", "--db given twice"}, {"--db= show", "--db needs a path"},
      {"tune 1 21 --screen 1 --screen 2", "--screen given twice"},
      {"fault add GetTvMode --result 1 --result 2", "--result given twice"},
      {"fault add GetTvMode --null --target 0 --target 1", "--target given twice"},
  };
  for (const auto& [args, message] : refused) {
    SCOPED_TRACE(args);
    std::string err;
    EXPECT_EQ(2, tv.Run("cd " + tv.Dir() + " && " + tvctl + " " + args + " 2>&1 >/dev/null", &err));
    EXPECT_NE(std::string::npos, err.find(message)) << err;
  }
  EXPECT_EQ(before, ShowThroughTvctl(tv));
  EXPECT_FALSE(std::ifstream(tv.Dir() + "/a.db").good());

  // The edges of each range are taken.
  for (const char* args : {"tune -1 -1", "tune 2 255 --screen 15", "playback 0", "set kpi/filter_detail false",
                           "recording start 18446744073709551615", "recorder-event -2147483648 4294967295"}) {
    EXPECT_EQ(0, tv.Run(tvctl + " " + args)) << args;
  }
  const json after = ShowThroughTvctl(tv);
  EXPECT_EQ(json({{"antenna", -1}, {"service", -1}}), after["tv_mode"]);
  EXPECT_EQ(json({{"screen", 15}, {"antenna", 2}, {"service", 255}}), after["screens"].back());
  EXPECT_EQ(18446744073709551615ull, after["recordings"].back().get<uint64_t>());
  EXPECT_EQ(json({-2147483648, -1}), json({after["recorder_events"][0]["event"], after["recorder_events"][0]["result"]}));
}

TEST(Tvctl, VerbsChangeTheTvTheApplicationSees) {
  tvtest::TempTv tv;
  const std::string tvctl = simtest::Tvctl();
  const std::string other = tv.Dir() + "/other.db";
  for (const std::string& args : {"load " + std::string(TV_SOURCE_DIR) + "/scenarios/one-recording.json",
                                   std::string("set system_info/238 2"), std::string("set db/menu/system/language de_DE"),
                                   std::string("tune 1 21"), std::string("tune 2 7 --screen 1"),
                                   std::string("recording start 8388609"), std::string("recording stop 7340034"),
                                   std::string("playback 1"), "--db " + other + " set db/menu/picture/pip/onoff 1"}) {
    ASSERT_EQ(0, tv.Run(tvctl + " " + args)) << args;  // the last one changes another TV
  }
  std::string id;
  ASSERT_EQ(0, tv.Run(tvctl + " fault add vconf_get_int --result -3 --target db/mls/mls_focus --nth 2", &id));
  // Recorder events keep their words as given: signed, or as unsigned bits.
  ASSERT_EQ(0, tv.Run(tvctl + " recorder-event 1 1 8388610 -1 4294967295"));
  ASSERT_EQ(0, tv.Run(tvctl + " recorder-event -7 0"));

  const json shown = ShowThroughTvctl(tv);
  const json& settings = shown["settings"];
  EXPECT_EQ(json({2, "de_DE", 0}), json({settings["system_info/238"], settings["db/menu/system/language"],
                                         settings["db/menu/picture/pip/onoff"]}));
  EXPECT_EQ(json({{"antenna", 1}, {"service", 21}}), shown["tv_mode"]);
  EXPECT_EQ(json::array({{{"screen", 1}, {"antenna", 2}, {"service", 7}}}), shown["screens"]);
  EXPECT_EQ(json({8388609}), shown["recordings"]);
  EXPECT_EQ(1, shown["playback"]["playing"]);
  EXPECT_TRUE(shown["tuning_changes"].empty());  // tvctl is not the application
  ASSERT_EQ(2u, shown["settings_writes"].size());
  EXPECT_EQ(json({"system_info/238", 2}), json({shown["settings_writes"][0]["key"], shown["settings_writes"][0]["value"]}));
  ASSERT_EQ(1u, shown["faults"].size());
  EXPECT_EQ(json({std::stoll(id), "db/mls/mls_focus"}), json({shown["faults"][0]["id"], shown["faults"][0]["target"]}));
  const json& events = shown["recorder_events"];
  ASSERT_EQ(2u, events.size());
  EXPECT_EQ(json({1, 1, json({8388610, -1, -1, 0, 0})}), json({events[0]["event"], events[0]["result"], events[0]["data"]}));
  EXPECT_EQ(json({-7, 0, json({0, 0, 0, 0, 0})}), json({events[1]["event"], events[1]["result"], events[1]["data"]}));
  EXPECT_LT(events[0]["seq"].get<int64_t>(), events[1]["seq"].get<int64_t>());
  for (const char* member : {"tv_mode", "screens", "services", "profiles", "recordings", "playback", "settings",
                             "kpi_events", "tuning_changes", "recorder_requests", "settings_writes", "faults", "calls"}) {
    EXPECT_TRUE(shown.contains(member)) << member;
  }

  ASSERT_EQ(0, tv.Run(tvctl + " show --scenario > " + tv.Dir() + "/saved.json"));
  ASSERT_EQ(0, tv.Run(tvctl + " reset"));
  EXPECT_TRUE(ShowThroughTvctl(tv)["services"].empty());
  ASSERT_EQ(0, tv.Run(tvctl + " load " + tv.Dir() + "/saved.json"));
  const json reloaded = ShowThroughTvctl(tv);
  EXPECT_EQ(shown["services"], reloaded["services"]);
  EXPECT_EQ(shown["settings"], reloaded["settings"]);
  EXPECT_EQ(shown["faults"][0]["target"], reloaded["faults"][0]["target"]);
  EXPECT_TRUE(reloaded["settings_writes"].empty());  // a load starts the records afresh

  ASSERT_EQ(0, tv.Run(tvctl + " fault clear"));
  EXPECT_TRUE(ShowThroughTvctl(tv)["faults"].empty());
}
