// The built program on a real X display (an Xvfb of the test's own), as a
// viewer and the system meet it: a start without a display, signals that end
// it in the list and while it waits for the recorder.
#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Desktop.h"
#include "TempTv.h"

using nlohmann::json;

namespace {

json Scenario(const char* name, const json& patch = json::object()) {
  std::ifstream in(std::string(TV_SOURCE_DIR) + "/scenarios/" + name);
  json scenario = json::parse(in);
  scenario.merge_patch(patch);
  return scenario;
}

bool LoggedFromPlatform(const tvtest::TempTv& tv, const std::string& text) {
  for (const tvtest::LogLine& line : tv.Logs()) {
    if (line.tag == "tvsim" && line.buffer == 2 && line.priority == 6 && line.message.find(text) != std::string::npos) {
      return true;
    }
  }
  return false;
}

// True once the platform's frame probe saw a frame with list row `row` (from 1)
// focused and on screen: keys sent earlier would not find the current row.
bool RowFocused(const std::string& probe, int row, std::streamoff from = 0) {
  std::ifstream in(probe);
  in.seekg(from);
  // "frame TIME ROW SHOWN [TEXT]"
  std::string line;
  while (std::getline(in, line)) {
    std::istringstream fields(line);
    std::string kind;
    long long time = 0;
    int focused = 0, shown = 0;
    if (fields >> kind >> time >> focused >> shown && kind == "frame" && focused == row && shown == 1) return true;
  }
  return false;
}

bool Lived(const tvtest::TempTv& tv, const char* message) {
  const std::vector<std::string> messages = tv.AppMessages();
  return std::find(messages.begin(), messages.end(), message) != messages.end();
}

}  // namespace

TEST(Program, WithoutADisplayItEndsAtOnceAndTheNextStartWithOneShowsThePopup) {
  tvtest::Xvfb xvfb;
  ASSERT_TRUE(xvfb.Running());
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  const std::string nobody = tvtest::UnservedDisplay();
  struct Row { const char* name; std::string display; std::string logged; } rows[] = {
      {"no DISPLAY", "", "no window can be made: DISPLAY is not set"},
      {"nobody serves the display", nobody, "display \"" + nobody + "\" cannot be opened"},
      {"nobody serves the screen", nobody + ".1", "display \"" + nobody + ".1\" cannot be opened"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tv.ClearLogs();
    tvtest::Child app(tv, tvtest::ProgramPath(), {{"DISPLAY", row.display}, {"ELM_ENGINE", ""}, {"WAYLAND_DISPLAY", ""}});
    EXPECT_EQ(3, app.Wait(10));
    EXPECT_TRUE(LoggedFromPlatform(tv, row.logged));
    EXPECT_TRUE(Lived(tv, "app_efl_main() is failed. err=3"));
  }
  // The next start on that TV, with a display, is the TV's application and shows the popup.
  tv.ClearLogs();
  tvtest::Child app(tv, tvtest::ProgramPath(), {{"DISPLAY", xvfb.Display()}, {"ELM_ENGINE", ""}});
  EXPECT_NE("", tvtest::FocusAppWindow(xvfb.Display()));
  EXPECT_TRUE(tvtest::WaitFor([&] { return Lived(tv, "end app_resume"); }));
  EXPECT_TRUE(tvtest::Xdotool(xvfb.Display(), "key Escape"));
  EXPECT_EQ(0, app.Wait(20));
  EXPECT_TRUE(tv.Show()["tuning_changes"].empty());
}

TEST(Program, SighupEndsItLikeSigtermInTheListAndWhileWaitingForTheStopReport) {
  tvtest::Xvfb xvfb;
  ASSERT_TRUE(xvfb.Running());
  // One recording on the only recordable tuner, and a recorder that never reports the stop.
  const json scenario = Scenario("one-recording.json", {{"recorder", {{"stop_report", {{"never", true}}}}}});
  struct Row { const char* name; int signal; bool waiting; } rows[] = {
      {"SIGHUP in the list", SIGHUP, false}, {"SIGTERM in the list", SIGTERM, false},
      {"SIGHUP while waiting", SIGHUP, true}, {"SIGTERM while waiting", SIGTERM, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    tvtest::TempTv tv;
    tv.Load(scenario);
    const json before = tv.Show();
    const std::string probe = tv.Dir() + "/frames";
    tvtest::Child app(tv, tvtest::ProgramPath(),
                      {{"DISPLAY", xvfb.Display()}, {"ELM_ENGINE", ""}, {"TVSIM_FRAME_PROBE", probe}});
    ASSERT_NE("", tvtest::FocusAppWindow(xvfb.Display()));
    ASSERT_TRUE(tvtest::WaitFor([&] { return RowFocused(probe, 1); }));
    if (row.waiting) {
      // Cable, then agree to stop the recording: the switch waits for the report.
      ASSERT_TRUE(tvtest::Xdotool(xvfb.Display(), "key Down Return"));
      ASSERT_TRUE(tvtest::WaitFor([&] { return Lived(tv, "bMsgBoxVisible:1"); }));
      ASSERT_TRUE(tvtest::Xdotool(xvfb.Display(), "key Left Return"));
      ASSERT_TRUE(tvtest::WaitFor([&] { return !tv.Show()["recorder_requests"].empty(); }));
    }
    ASSERT_TRUE(app.Signal(row.signal));
    EXPECT_EQ(0, app.Wait(10));
    EXPECT_TRUE(Lived(tv, "end app_terminate"));
    const json after = tv.Show();
    EXPECT_EQ(before["tv_mode"], after["tv_mode"]);
    EXPECT_TRUE(after["tuning_changes"].empty());
    EXPECT_EQ(row.waiting ? 1u : 0u, after["recorder_requests"].size());
  }
}

TEST(Program, BrokenResourcesLeaveListsTheViewerCanWorkAndSayWhichFile) {
  namespace fs = std::filesystem;
  tvtest::Xvfb xvfb;
  ASSERT_TRUE(xvfb.Running());
  const std::string theme = std::string(TV_TEST_RES_DIR) + "/edje/antenna-selection.edj";
  const std::string icon = std::string(TV_TEST_RES_DIR) + "/images/epg_icon_body_recording.png";
  const std::string goodTheme = std::string(TV_RES_DIR) + "/edje/antenna-selection.edj";
  const std::string goodIcon = std::string(TV_RES_DIR) + "/images/epg_icon_body_recording.png";
  auto copy = [](const std::string& from, const std::string& to, size_t bytes = std::string::npos) {
    std::ifstream in(from, std::ios::binary);
    std::string data((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::ofstream(to, std::ios::binary) << data.substr(0, bytes);
  };
  enum Theme { kGood, kMissing, kEmpty, kCut, kOther, kPartless };
  struct Row { const char* name; Theme theme; const char* icon; } rows[] = {  // icon: "good", "missing" or text
      {"theme missing", kMissing, "good"}, {"theme empty", kEmpty, "good"}, {"theme cut short", kCut, "good"},
      {"another program's theme", kOther, "good"}, {"the groups without their parts", kPartless, "good"},
      {"icon missing", kGood, "missing"},
      {"icon corrupt", kGood, "not a picture"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    fs::remove_all(TV_TEST_RES_DIR);
    fs::create_directories(fs::path(theme).parent_path());
    fs::create_directories(fs::path(icon).parent_path());
    if (row.theme == kGood) copy(goodTheme, theme);
    if (row.theme == kEmpty) std::ofstream(theme).close();
    if (row.theme == kCut) copy(goodTheme, theme, fs::file_size(goodTheme) / 2);
    if (row.theme == kOther) copy(std::string(TV_BINARY_DIR) + "/platform/tv-platform.edj", theme);
    if (row.theme == kPartless) {
      const std::string edc = std::string(TV_TEST_RES_DIR) + "/partless.edc";
      std::ofstream(edc) << "collections { group { name: \"genlist.layout\"; parts { part { name: \"x\"; type: RECT; } } }\n"
                            "group { name: \"change.antenna.layout\"; parts { part { name: \"x\"; type: RECT; } } } }\n";
      ASSERT_EQ(0, std::system(("edje_cc '" + edc + "' '" + theme + "' >/dev/null 2>&1").c_str()));
    }
    if (std::string(row.icon) == "good") {
      copy(goodIcon, icon);
    } else if (std::string(row.icon) != "missing") {
      std::ofstream(icon) << row.icon;
    }
    tvtest::TempTv tv;
    tv.LoadFile("two-recordings.json");
    const std::string probe = tv.Dir() + "/frames";
    tvtest::Child app(tv, TV_TEST_RES_PROGRAM,
                      {{"DISPLAY", xvfb.Display()}, {"ELM_ENGINE", ""}, {"TVSIM_FRAME_PROBE", probe}});
    ASSERT_NE("", tvtest::FocusAppWindow(xvfb.Display()));
    // The antenna list shows its rows, the current one focused; Cable is picked.
    ASSERT_TRUE(tvtest::WaitFor([&] { return RowFocused(probe, 1); }));
    const std::streamoff shown = static_cast<std::streamoff>(fs::file_size(probe));
    ASSERT_TRUE(tvtest::Xdotool(xvfb.Display(), "key Down Return"));
    // The stop-recording popup shows its items, the first focused; it is chosen.
    ASSERT_TRUE(tvtest::WaitFor([&] { return RowFocused(probe, 1, shown); }));
    ASSERT_TRUE(tvtest::Xdotool(xvfb.Display(), "key Return"));
    EXPECT_EQ(0, app.Wait(20));
    const json after = tv.Show();
    ASSERT_EQ(1u, after["tuning_changes"].size());
    EXPECT_EQ(json({1, 21}), json({after["tuning_changes"][0]["antenna"], after["tuning_changes"][0]["service"]}));
    ASSERT_EQ(1u, after["recorder_requests"].size());
    EXPECT_EQ(7340034u, after["recorder_requests"][0]["service_id"].get<uint64_t>());
    const bool broken = row.theme != kGood;
    EXPECT_EQ(broken, Lived(tv, ("cannot use genlist.layout from " + theme + ", the list is shown without it").c_str()));
    EXPECT_EQ(broken, Lived(tv, ("cannot use change.antenna.layout from " + theme +
                                 ", the choices are shown without it").c_str()));
  }
  fs::remove_all(TV_TEST_RES_DIR);
}

TEST(Program, ScreenAndTimeScaleBeyondTheirLimitsGetAWarningAndTheDefault) {
  tvtest::Xvfb xvfb;
  ASSERT_TRUE(xvfb.Running());
  const std::pair<const char*, const char*> rows[] = {  // variable, value
      {"TVSIM_SCREEN", "100000x100000"}, {"TVSIM_SCREEN", "7681x4320"}, {"TVSIM_SCREEN", "1920x1080x1"},
      {"TVSIM_TIME_SCALE", "1e308"}, {"TVSIM_TIME_SCALE", "inf"}, {"TVSIM_TIME_SCALE", "1001"},
  };
  for (const auto& [variable, value] : rows) {
    SCOPED_TRACE(std::string(variable) + "=" + value);
    tvtest::TempTv tv;
    tv.LoadFile("sample.json");
    const std::string errors = tv.Dir() + "/stderr";
    tvtest::Child app(tv, tvtest::ProgramPath(), {{"DISPLAY", xvfb.Display()}, {"ELM_ENGINE", ""}, {variable, value}},
                      errors);
    // The popup comes up on a 1920x1080 screen and stays: its 30 s time-out is 30 s again.
    std::string geometry;
    const std::string window = tvtest::FocusAppWindow(xvfb.Display());
    ASSERT_NE("", window);
    EXPECT_TRUE(tvtest::Xdotool(xvfb.Display(), "getwindowgeometry " + window, &geometry));
    EXPECT_NE(std::string::npos, geometry.find("Geometry: 1920x1080")) << geometry;
    ASSERT_TRUE(tvtest::WaitFor([&] { return Lived(tv, "end app_resume"); }));
    EXPECT_FALSE(tvtest::WaitFor([&] { return Lived(tv, "enter_t_OnTimeOut"); }, 1.0));
    EXPECT_EQ(-1, app.Wait(0));
    ASSERT_TRUE(tvtest::Xdotool(xvfb.Display(), "key Escape"));
    EXPECT_EQ(0, app.Wait(20));
    std::ifstream in(errors);
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_NE(std::string::npos, text.find(std::string("tvsim: ") + variable + "=" + value + " is not")) << text;
  }
}
