// tvctl, run as people and scripts run it: exit codes, refusals that change
// nothing, and each verb's effect on the database.
#include <gtest/gtest.h>
#include <sys/stat.h>

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

  struct Row {
    const char* args;
    int status;
    const char* message;  // on stderr
  };
  const Row rows[] = {
      {"", 2, "missing verb"},
      {"frobnicate", 2, "unknown verb"},
      {"load", 2, "missing arguments"},
      {"load bad.json", 2, "/services/0: missing member \"name\""},
      {"load fault.json", 2, "not JSON"},
      {"load missing.json", 2, "cannot read"},
      {"set db/no/such/key 1", 2, "unknown settings key"},
      {"set db/menu/picture/pip/onoff on", 2, "not a 32-bit integer"},
      {"set system_info/18", 2, "missing arguments"},
      {"tune 7 1", 2, "antenna 7"},
      {"tune 1", 2, "missing arguments"},
      {"tune 1 x", 2, "not a number"},
      {"fault add Tune --result 1", 2, "unknown operation"},
      {"fault add GetTvMode", 2, "exactly one effect"},
      {"fault add GetTvMode --result", 2, "needs a value"},
      {"fault add GetTvMode --bogus", 2, "unknown option"},
      {"fault clear 99", 2, "no fault with id 99"},
      {"recording stop 5", 2, "not being recorded"},
      {"recording start 7340034", 2, "already being recorded"},
      {"recording pause 5", 2, "expected start or stop"},
      {"show no_such_member", 2, "no member"},
      {"reset extra", 2, "too many arguments"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.args);
    std::string err;
    EXPECT_EQ(row.status, tv.Run("cd " + tv.Dir() + " && " + tvctl + " " + row.args + " 2>&1 >/dev/null", &err));
    EXPECT_NE(std::string::npos, err.find(row.message)) << err;
    EXPECT_EQ(before, ShowThroughTvctl(tv));
  }
  for (const char* help : {"--help", "load --help", "show --help", "set --help", "reset --help", "tune --help",
                           "fault --help", "recording --help", "playback --help"}) {
    SCOPED_TRACE(help);
    std::string out;
    EXPECT_EQ(0, tv.Run(tvctl + " " + help, &out));
    EXPECT_NE(std::string::npos, out.find("usage: tvctl")) << out;
  }
  EXPECT_EQ(before, ShowThroughTvctl(tv));
}

TEST(Tvctl, FailsWithOneWhenTheDatabaseCannotBeUsed) {
  tvtest::TempTv tv;
  const std::string tvctl = simtest::Tvctl();
  std::ofstream(tv.Dir() + "/garbage.db") << "this is not a database, just some text that fills the header..........";
  EXPECT_EQ(1, tv.Run(tvctl + " --db " + tv.Dir() + "/garbage.db show 2>/dev/null"));
  mkdir((tv.Dir() + "/dir.db").c_str(), 0755);
  EXPECT_EQ(1, tv.Run(tvctl + " --db " + tv.Dir() + "/dir.db reset 2>/dev/null"));
}

TEST(Tvctl, VerbsChangeTheTvTheApplicationSees) {
  tvtest::TempTv tv;
  const std::string tvctl = simtest::Tvctl();
  const std::string other = tv.Dir() + "/other.db";
  ASSERT_EQ(0, tv.Run(tvctl + " load " + TV_SOURCE_DIR + "/scenarios/one-recording.json"));
  ASSERT_EQ(0, tv.Run(tvctl + " set system_info/238 2"));
  ASSERT_EQ(0, tv.Run(tvctl + " set db/menu/system/language de_DE"));
  ASSERT_EQ(0, tv.Run(tvctl + " tune 1 21"));
  ASSERT_EQ(0, tv.Run(tvctl + " tune 2 7 --screen 1"));
  ASSERT_EQ(0, tv.Run(tvctl + " recording start 8388609"));
  ASSERT_EQ(0, tv.Run(tvctl + " recording stop 7340034"));
  ASSERT_EQ(0, tv.Run(tvctl + " playback 1"));
  std::string id;
  ASSERT_EQ(0, tv.Run(tvctl + " fault add vconf_get_int --result -3 --target db/mls/mls_focus --nth 2", &id));
  ASSERT_EQ(0, tv.Run(tvctl + " --db " + other + " set db/menu/picture/pip/onoff 1"));  // another TV

  const json shown = ShowThroughTvctl(tv);
  EXPECT_EQ(2, shown["settings"]["system_info/238"]);
  EXPECT_EQ("de_DE", shown["settings"]["db/menu/system/language"]);
  EXPECT_EQ(0, shown["settings"]["db/menu/picture/pip/onoff"]);
  EXPECT_EQ(json({{"antenna", 1}, {"service", 21}}), shown["tv_mode"]);
  EXPECT_EQ(json::array({{{"screen", 1}, {"antenna", 2}, {"service", 7}}}), shown["screens"]);
  EXPECT_EQ(json({8388609}), shown["recordings"]);
  EXPECT_EQ(1, shown["playback"]["playing"]);
  EXPECT_TRUE(shown["tuning_changes"].empty());  // tvctl is not the application
  ASSERT_EQ(2u, shown["settings_writes"].size());
  EXPECT_EQ("system_info/238", shown["settings_writes"][0]["key"]);
  EXPECT_EQ(2, shown["settings_writes"][0]["value"]);
  ASSERT_EQ(1u, shown["faults"].size());
  EXPECT_EQ(std::stoll(id), shown["faults"][0]["id"]);
  EXPECT_EQ("db/mls/mls_focus", shown["faults"][0]["target"]);
  for (const char* member : {"tv_mode", "screens", "services", "profiles", "recordings", "playback", "settings",
                             "kpi_events", "tuning_changes", "recorder_requests", "settings_writes", "faults", "calls"}) {
    EXPECT_TRUE(shown.contains(member)) << member;
  }

  std::string scenario;
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
