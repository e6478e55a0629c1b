// tvtour as a tester runs it: broken tour files are refused before anything
// runs, naming the file, the JSON pointer and the problem; a tour runs the
// real program and passes, or fails naming the step that failed.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>
#include <sstream>

#include "TempTv.h"

namespace {

std::string Tvtour() { return std::string(TV_BINARY_DIR) + "/tools/tvtour"; }

std::string Read(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

bool Exists(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0;
}

// A tour as someone who has not read the code would write it: keys, waits, a
// change made to the TV, an expectation and screenshots.
std::string TesterTour(int expectedAntenna) {
  return R"({
  "scenario": ")" +
         std::string(TV_SOURCE_DIR) + R"(/scenarios/sample.json",
  "steps": [
    {"wait": "frame", "text": "Air"},
    {"key": "Down"},
    {"wait": "frame", "text": "Cable", "timeout": 5},
    {"screenshot": "on-cable"},
    {"tvctl": "set", "key": "db/menu/system/accessibility/focuszoom", "value": 1},
    {"key": "Return"},
    {"wait": "exit", "status": 0},
    {"expect": "mode", "antenna": )" +
         std::to_string(expectedAntenna) + R"(, "service": 21},
    {"screenshot": "after"}
  ]
})";
}

}  // namespace

TEST(Tvtour, RefusesABrokenTourBeforeAnythingRunsNamingFilePointerAndProblem) {
  tvtest::TempTv tv;
  const std::string scenario = std::string(TV_SOURCE_DIR) + "/scenarios/sample.json";
  const std::string head = R"({"scenario": ")" + scenario + R"(", "steps": )";
  struct Row {
    std::string tour, pointer, problem;
  };
  const Row rows[] = {
      {"{\"steps\": [", "/", "not JSON"},
      {R"({"scenario": "nowhere.json", "steps": [{"key": "Down"}]})", "/scenario", "cannot read"},
      {R"({"scenario": {}, "steps": [], "extra": 1})", "/extra", "unknown member"},
      {head + R"([{"key": "Enter"}]})", "/steps/0/key", "unknown key \"Enter\""},
      {head + R"([{"key": "Down", "wait": "exit"}]})", "/steps/0", "one step, one kind"},
      {head + R"([{"expect": "running", "at": {"since": "later", "seconds": 1}}, {"key": "Up", "mark": "later"}]})",
       "/steps/0/at/since", "no earlier step sets the mark \"later\""},
      {head + R"([{"expect": "log", "pattern": "(unclosed"}]})", "/steps/0/pattern", "not a regular expression"},
      {head + R"([{"expect": "tuning_changes"}]})", "/steps/0", "count"},
      {head + R"([{"screenshot": "a"}, {"screenshot": "a"}]})", "/steps/1/screenshot", "taken twice"},
      {head + R"([{"tvctl": "fault", "add": {"op": "Frobnicate", "result": 1}}]})", "/steps/0/add/op",
       "unknown operation"},
      {R"({"scenario": ")" + scenario + R"(", "changes": {"tv_mode": {"antenna": 7}}, "steps": [{"key": "Up"}]})",
       "/changes/tv_mode/antenna", "out of range"},
      {R"({"scenario": {"services": [{"id": 1}]}, "steps": [{"key": "Up"}]})", "/scenario/services/0",
       "missing member"},
      {R"({"scenario": {}, "settings": {"language": "Arabic"}, "steps": [{"key": "Up"}]})", "/settings/language",
       "not a language"},
  };
  const std::string good = tv.Dir() + "/good.json";
  std::ofstream(good) << TesterTour(1);
  int n = 0;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.tour);
    const std::string file = tv.Dir() + "/bad" + std::to_string(++n) + ".json";
    std::ofstream(file) << row.tour;
    const std::string out = tv.Dir() + "/out" + std::to_string(n);
    std::string err;
    // The good tour comes first: nothing may run when a later file is refused.
    EXPECT_EQ(2, tv.Run(Tvtour() + " --xvfb --out " + out + " " + good + " " + file + " 2>&1 >/dev/null", &err));
    EXPECT_NE(std::string::npos, err.find("refused: " + file + ": " + row.pointer + ": ")) << err;
    EXPECT_NE(std::string::npos, err.find(row.problem)) << err;
    EXPECT_FALSE(Exists(out)) << "a report folder although nothing was to run";
  }
  std::string err;
  EXPECT_EQ(2, tv.Run(Tvtour() + " --repeat 0 " + good + " 2>&1 >/dev/null", &err));
  EXPECT_NE(std::string::npos, err.find("--repeat")) << err;
  EXPECT_EQ(0, tv.Run(Tvtour() + " --check " + good + " >/dev/null"));
}

TEST(Tvtour, RunsATesterTourAndFailsItForTheRightReasonNamingTheStep) {
  tvtest::TempTv tv;
  const std::string pass = tv.Dir() + "/right.json", fail = tv.Dir() + "/wrong.json";
  std::ofstream(pass) << TesterTour(1);
  std::ofstream(fail) << TesterTour(2);
  const std::string out = tv.Dir() + "/out";

  std::string output;
  EXPECT_EQ(0, tv.Run(Tvtour() + " --xvfb --out " + out + " " + pass + " 2>&1", &output)) << output;
  EXPECT_NE(std::string::npos, output.find("tour right: passed")) << output;
  // Pictures of the screen as the viewer saw it: PNG files, named in the report.
  const std::string report = Read(out + "/right/report.md");
  EXPECT_NE(std::string::npos, report.find("![01-on-cable.png](01-on-cable.png)")) << report;
  EXPECT_EQ("\x89PNG", Read(out + "/right/01-on-cable.png").substr(0, 4));
  EXPECT_NE(std::string::npos, report.find("`{\"antenna\":0,\"service\":21}` | `{\"antenna\":1,\"service\":21}`"))
      << report;
  EXPECT_NE(std::string::npos, report.find("end app_terminate")) << "the log is in the report";

  // Twice, to count the passes: the first run's TV does not leak into the second.
  EXPECT_EQ(1, tv.Run(Tvtour() + " --xvfb --quiet --repeat 2 --out " + out + " " + fail + " 2>&1", &output)) << output;
  EXPECT_NE(std::string::npos, output.find("step 8 (/steps/7) expect mode antenna 2 service 21: the TV's mode is "
                                           "{\"antenna\":1,\"service\":21}"))
      << output;
  EXPECT_NE(std::string::npos, output.find("0 of 2 runs passed")) << output;
  const std::string failed = Read(out + "/wrong/report.md");
  EXPECT_NE(std::string::npos, failed.find("| 9 | screenshot after | not run |")) << failed;
  const std::string junit = Read(out + "/junit.xml");
  EXPECT_NE(std::string::npos, junit.find("tests=\"2\" failures=\"2\"")) << junit;
  EXPECT_NE(std::string::npos, junit.find("<failure message=\"step 8 (/steps/7)")) << junit;
}
