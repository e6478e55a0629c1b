// Loading scenarios: what is loaded comes back out, what is wrong is refused
// with file, JSON pointer and problem, and a refused load changes nothing.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <functional>

#include "Control.h"
#include "Errors.h"
#include "ServiceHub.h"
#include "SimTestUtil.h"
#include "TempTv.h"

using nlohmann::json;

namespace {

std::string WriteFile(const tvtest::TempTv& tv, const std::string& name, const std::string& text) {
  const std::string path = tv.Dir() + "/" + name;
  std::ofstream(path) << text;
  return path;
}

std::string Repeat(const std::string& text, int times) {
  std::string repeated;
  for (int i = 0; i < times; ++i) repeated += text;
  return repeated;
}

int CountOf(int antenna, int service, int navigation = NAVIGATION_MODE_ALL) {
  Navigator* navigator = nullptr;
  if (ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &navigator) != 0 || navigator == nullptr) return -100;
  ServiceQuery query;
  if (navigation >= 0) NavigationQueries::GetNavigationCriteria(static_cast<NavigationMode>(navigation), query,
                                                                NAVIGATION_SORT_MODE_DEFAULT);
  int count = -1;
  const TvMode mode(static_cast<AntennaMode>(antenna), static_cast<ServiceMode>(service));
  return navigator->GetServiceCount(query, count, mode, 0) > 0 ? count : -200;
}

// Loading path is refused with its file, the pointer and the problem, and changes nothing.
void ExpectRefused(tvsim::Control& control, const std::string& path, const std::string& pointer,
                   const std::string& problem) {
  const json before = control.Show();
  try {
    control.LoadFile(path);
    ADD_FAILURE() << "accepted";
  } catch (const tvsim::ScenarioError& e) {
    EXPECT_EQ(path, e.File());
    EXPECT_EQ(pointer, e.Pointer());
    EXPECT_NE(std::string::npos, e.Problem().find(problem)) << e.Problem();
    EXPECT_NE(std::string::npos, std::string(e.what()).find(path)) << e.what();
  }
  EXPECT_EQ(before, control.Show());
}

}  // namespace

TEST(Scenario, WhatIsLoadedComesBackAndLoadsAgainUnchanged) {
  tvtest::TempTv tv;
  const json sample = simtest::ReadScenario("sample.json");
  tvsim::Control control(tv.DbPath());
  control.Load(sample, "sample.json");
  const json shown = control.Show(true);

  for (const char* member : {"tv_mode", "screens", "settings", "profiles", "recordings", "number_formats", "recorder"})
    EXPECT_EQ(sample[member], shown[member]) << member;
  ASSERT_EQ(sample["services"].size(), shown["services"].size());
  for (const json& service : sample["services"]) {
    SCOPED_TRACE(service.dump());
    json expected = service;
    if (!expected.contains("navigation")) expected["navigation"] = {1};
    bool found = false;
    for (const json& got : shown["services"]) found = found || got == expected;
    EXPECT_TRUE(found);
  }

  control.Load(shown, "shown");
  EXPECT_EQ(shown, control.Show(true));
}

TEST(Scenario, RefusalsNameFilePointerAndProblemAndChangeNothing) {
  struct Row { const char* name; std::function<void(json&)> spoil; const char *pointer, *problem; } rows[] = {
      {"unknown member", [](json& s) { s["channels"] = json::array(); }, "/channels", "unknown member"},
      {"wrong type", [](json& s) { s["services"][0]["major"] = "5"; }, "/services/0/major", "expected an integer"},
      {"out of range", [](json& s) { s["tv_mode"]["antenna"] = 3; }, "/tv_mode/antenna", "out of range"},
      {"duplicate id", [](json& s) { s["services"][1]["id"] = s["services"][0]["id"]; }, "/services/1",
       "duplicate service id 7340033"},
      {"id inside a range",
       [](json& s) { s["service_ranges"] = {{{"antenna", 2}, {"service", 40}, {"first_id", 7340030}, {"count", 10}}}; },
       "/services/0", "duplicate service id 7340033 (also at /service_ranges/0)"},
      {"numbers past 65535",
       [](json& s) {
         s["service_ranges"] = {
             {{"antenna", 2}, {"service", 40}, {"first_id", 1}, {"count", 10}, {"first_major", 65530}}};
       },
       "/service_ranges/0/count", "past 65535"},
      {"profile missing a field", [](json& s) { s["profiles"][1].erase("logo_path"); }, "/profiles/1",
       "missing member \"logo_path\""},
      {"known key of the wrong type", [](json& s) { s["settings"]["system_info/18"] = true; },
       "/settings/system_info~118", "is a int setting"},
      {"unknown fault operation", [](json& s) { s["faults"] = {{{"op", "Tune"}, {"result", 1}}}; },
       "/faults/0/op", "unknown operation"},
      {"fault with two effects", [](json& s) { s["faults"] = {{{"op", "GetTvMode"}, {"result", 1}, {"nth", 0}}}; },
       "/faults/0/nth", "out of range"},
      {"null for a plain call", [](json& s) { s["faults"] = {{{"op", "GetTvMode"}, {"null", true}}}; },
       "/faults/0/null", "hands out no object"},
      {"recording twice", [](json& s) { s["recordings"] = {5, 5}; }, "/recordings/1", "recorded twice"},
  };
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  tvsim::Control control(tv.DbPath());
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    json scenario = simtest::ReadScenario("sample.json");
    row.spoil(scenario);
    ExpectRefused(control, WriteFile(tv, "bad.json", scenario.dump()), row.pointer, row.problem);
  }
  // Files that are not scenarios at all are refused whole.
  for (const std::string& path : {WriteFile(tv, "array.json", "[1, 2]"), tv.Dir() + "/missing.json"}) {
    SCOPED_TRACE(path);
    ExpectRefused(control, path, "", "");
  }
}

TEST(Scenario, OnlyASmallRegularFileOfStrictJsonIsRead) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  const std::string dir = tv.Dir();
  ASSERT_EQ(0, mkfifo((dir + "/fifo.json").c_str(), 0644));
  // Devices that end (/dev/null): one that does not would fill the memory should the check break.
  ASSERT_EQ(0, symlink("/dev/null", (dir + "/device.json").c_str()));
  const std::string large = dir + "/large.json";  // sparse: nothing is written
  ASSERT_EQ(0, truncate(WriteFile(tv, "large.json", "{}").c_str(), 32 * 1024 * 1024 + 1));
  const std::string digits(400, '7');
  struct Row { std::string file, text, pointer, problem; } rows[] = {
      {dir, "", "/", "is a directory"}, {"/dev/null", "", "/", "is a character device"},
      {dir + "/fifo.json", "", "/", "is a FIFO"}, {dir + "/device.json", "", "/", "is a character device"},
      {large, "", "/", "has 33554433 bytes; a scenario has at most 33554432"},
      {"over.json", R"({"playback": {"playing": 1e400}})", "/playback/playing", "(line 1 column 30): number overflow"},
      {"digits.json", R"({"recordings": [1, )" + digits + "]}", "/recordings/1", "number overflow"},
      {"two-modes.json", "{\"tv_mode\": {\"antenna\": 0, \"service\": 21},\n \"tv_mode\": {\"antenna\": 1, \"service\": 21}}",
       "/tv_mode", "member \"tv_mode\" given twice (line 2 column 10, first at line 1 column 10)"},
      {"two-ids.json", R"({"services": [{"id": 1, "antenna": 0, "service": 1, "major": 1, "name": "A", "id": 2}]})",
       "/services/0/id", "member \"id\" given twice"},
      {"nul-name.json", R"({"antenna_names": [{"antenna": 0, "name": "Air\u0000"}]})", "/antenna_names/0/name", "NUL"},
      {"nul-key.json", R"({"settings": {"db/x\u0000y": 1}})", "/settings", "NUL character inside a member name"},
      {"deep.json", std::string(1000, '[') + std::string(1000, ']'), Repeat("/0", 64), "nested deeper than 64 levels"},
  };
  const json before = tv.Show();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.file);
    const std::string path = row.text.empty() ? row.file : WriteFile(tv, row.file, row.text);
    std::string err;
    // A time limit, so that a FIFO opened without looking first fails the test instead of hanging it.
    EXPECT_EQ(2, tv.Run("timeout 20 " + simtest::Tvctl() + " load '" + path + "' 2>&1", &err));
    EXPECT_NE(std::string::npos, err.find("refused: " + path + ": " + row.pointer + ": ")) << err;
    EXPECT_NE(std::string::npos, err.find(row.problem)) << err;
  }
  EXPECT_EQ(before, tv.Show());
  // The same members once each load.
  ASSERT_EQ(0, tv.Run(simtest::Tvctl() + " load '" +
                      WriteFile(tv, "once.json", R"({"tv_mode": {"antenna": 1, "service": 21}, "settings": {"a/b": 2}})") +
                      "'"));
  EXPECT_EQ(json({{"antenna", 1}, {"service", 21}}), tv.Show()["tv_mode"]);
}

TEST(Scenario, GeneratedServiceRangesAreCountedByTheDatabase) {
  tvtest::TempTv tv;
  tv.LoadFile("many-services.json");  // 52 satellite service modes of 10,000 services each
  for (int mode : {1, 2, 19, 27, 52}) {
    SCOPED_TRACE(mode);
    EXPECT_EQ(10000, CountOf(2, mode));
  }
  EXPECT_EQ(0, CountOf(2, 53));
  EXPECT_EQ(0, CountOf(0, 21));
  EXPECT_EQ(0, CountOf(2, 5, 0));  // generated services are listed in navigation mode 1 only
  EXPECT_EQ(10000, CountOf(2, 5, -1));

  ServiceStore* store = nullptr;
  ASSERT_EQ(0, ServiceHub::OpenServiceStore(&store));
  ServiceQuery query;
  query.Where(ATTR_SERVICE_ID, 5200010000ull);
  ServiceData data;
  ASSERT_EQ(1, store->FindService(query, &data, 1));
  EXPECT_EQ(10000, data.GetAttributeTable()->GetAttribute(ATTR_MAJOR_NUMBER)->GetUint16());

}
