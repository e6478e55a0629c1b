// The database under writers that die or race: tvctl killed with SIGKILL in
// the middle of loading a large scenario leaves exactly the old TV or exactly
// the new one, never a mix, and an intact file; tvctl writing in a loop never
// makes a read of the application's port functions fail or come out torn.
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Control.h"
#include "Settings.h"
#include "SimTestUtil.h"
#include "TempTv.h"
#include "Util.h"

extern char** environ;

using nlohmann::json;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kRanges = 5;
constexpr int kPerRange = 20000;  // 100,000 services: some 8 MB of WAL before the commit
constexpr uint64_t kFirstId(int range) { return static_cast<uint64_t>(range + 3) * 1000000 + 1; }

// What tells one TV from another: sizes of every part and a few rows.
using Fingerprint = std::vector<std::string>;

Fingerprint Take(tvsim::Control& control) {
  tvsim::Store& store = control.GetStore();
  Fingerprint f;
  auto add = [&](const std::string& sql) {
    auto s = store.Prepare(sql);
    std::string row;
    if (s.Step()) {
      for (int column = 0; column < 3; ++column) row += s.IsNull(column) ? "null," : s.Text(column) + ",";
    }
    s.Run();
    f.push_back(row);
  };
  add("SELECT COUNT(*), MIN(id), MAX(id) FROM services");
  add("SELECT COUNT(DISTINCT service), MIN(major), MAX(major) FROM services");
  add("SELECT antenna, service, COUNT(*) FROM screens WHERE screen = 0");
  add("SELECT COUNT(*), MIN(key), MAX(key) FROM settings");
  add("SELECT COUNT(*), MIN(position), MAX(position) FROM profiles");
  add("SELECT COUNT(*), MIN(service_id), MAX(service_id) FROM recordings");
  add("SELECT COUNT(*), MIN(name), MAX(name) FROM antenna_names");
  add("SELECT name, programme, major FROM services WHERE id = 7340033");
  for (int range = 0; range < kRanges; ++range) {
    add("SELECT name, programme, major FROM services WHERE id = " + std::to_string(kFirstId(range) + kPerRange - 1));
  }
  return f;
}

std::string IntegrityCheck(tvsim::Control& control) {
  auto s = control.GetStore().Prepare("PRAGMA integrity_check");
  std::string result;
  while (s.Step()) result += s.Text(0);
  return result;
}

std::string WriteLargeScenario(const std::string& dir) {
  json ranges = json::array();
  for (int range = 0; range < kRanges; ++range) {
    ranges.push_back({{"antenna", 2}, {"service", range + 3}, {"first_id", kFirstId(range)}, {"count", kPerRange},
                      {"name", "Sat " + std::to_string(range + 3) + "-{n}"}, {"programme", "Programme {n}"}});
  }
  const json scenario = {{"tv_mode", {{"antenna", 2}, {"service", 5}}},
                         {"service_ranges", ranges},
                         {"antenna_names", {{{"antenna", 2}, {"name", "Satellite"}}}},
                         {"settings", {{"system_settings/57", 36}, {"system_info/18", 3}}},
                         {"recordings", {kFirstId(0)}}};
  const std::string path = dir + "/large.json";
  std::ofstream(path) << scenario.dump();
  return path;
}

pid_t Spawn(const std::vector<std::string>& args) {
  std::vector<char*> argv;
  for (const std::string& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
  argv.push_back(nullptr);
  pid_t pid = -1;
  if (posix_spawn(&pid, argv[0], nullptr, nullptr, argv.data(), environ) != 0) return -1;
  return pid;
}

double Seconds(Clock::time_point since) { return std::chrono::duration<double>(Clock::now() - since).count(); }

// Polls until ready() while the child runs. Returns true when ready() held
// with the child still alive; false when the child ended first (its status in
// *status) or the deadline passed (*status then -1).
bool RunUntil(pid_t pid, const std::function<bool()>& ready, double deadline_s, int* status) {
  const auto start = Clock::now();
  *status = -1;
  while (Seconds(start) < deadline_s) {
    if (waitpid(pid, status, WNOHANG) == pid) return false;
    if (ready()) return true;
    sched_yield();
  }
  return false;
}

off_t FileSize(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 ? info.st_size : 0;
}

TEST(StoreIntegrity, AKilledLoadLeavesTheOldTvOrTheNewOneAndAnIntactFile) {
  tvtest::TempTv tv;
  const std::string large = WriteLargeScenario(tv.Dir());
  const std::string sample = std::string(TV_SOURCE_DIR) + "/scenarios/sample.json";
  const std::vector<std::string> load = {simtest::Tvctl(), "--db", tv.DbPath(), "load", large};
  const std::string wal = tv.DbPath() + "-wal";

  // The two states a kill may leave, and how long a whole load takes here.
  tvsim::Control(tv.DbPath()).LoadFile(sample);
  const Fingerprint oldTv = [&] { tvsim::Control c(tv.DbPath()); return Take(c); }();
  const auto started = Clock::now();
  const pid_t measured = Spawn(load);
  ASSERT_GT(measured, 0);
  int status = -1;
  EXPECT_FALSE(RunUntil(measured, [] { return false; }, 120, &status));
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the uninterrupted load failed";
  const double whole = Seconds(started);
  const Fingerprint newTv = [&] { tvsim::Control c(tv.DbPath()); return Take(c); }();
  ASSERT_NE(oldTv, newTv);
  ASSERT_EQ(std::to_string(kRanges * kPerRange) + "," + std::to_string(kFirstId(0)) + "," +
                std::to_string(kFirstId(kRanges - 1) + kPerRange - 1) + ",",
            newTv[0]);

  struct KillPoint {
    const char* name;
    std::function<bool(Clock::time_point)> ready;
    bool midWrite;  // the kill must come while the transaction is open
  } points[] = {
      {"at once", [](Clock::time_point) { return true; }, false},
      {"WAL past 1 MiB", [&](Clock::time_point) { return FileSize(wal) > (1 << 20); }, true},
      {"WAL past 4 MiB", [&](Clock::time_point) { return FileSize(wal) > (4 << 20); }, true},
      {"half way", [&](Clock::time_point t) { return Seconds(t) >= whole / 2; }, false},
  };
  int leftOld = 0;
  for (const KillPoint& point : points) {
    SCOPED_TRACE(point.name);
    tvsim::Control(tv.DbPath()).LoadFile(sample);
    ASSERT_LT(FileSize(wal), 1 << 20) << "the size kill points need a small WAL to start from";
    const auto t = Clock::now();
    const pid_t pid = Spawn(load);
    ASSERT_GT(pid, 0);
    const bool killed = RunUntil(pid, [&] { return point.ready(t); }, 120, &status);
    if (killed) {
      kill(pid, SIGKILL);
      waitpid(pid, &status, 0);
    }
    if (point.midWrite) {
      EXPECT_TRUE(killed) << "the load ended before the kill point";
    }

    tvsim::Control control(tv.DbPath());
    EXPECT_EQ("ok", IntegrityCheck(control));
    const Fingerprint now = Take(control);
    const bool isOld = now == oldTv;
    const bool isNew = now == newTv;
    EXPECT_TRUE(isOld || isNew) << "a mix of the two TVs: " << ::testing::PrintToString(now);
    if (point.midWrite) {
      EXPECT_TRUE(isOld) << "a load killed before its commit left the new TV";
    }
    leftOld += isOld;
  }
  EXPECT_GE(leftOld, 2) << "no kill landed before the commit";
}

TEST(StoreIntegrity, ReadsNeverFailOrTearWhileTvctlWrites) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  tv.Tune(1, 21);
  tv.Set("system_info/238", "1");
  const std::string tvctl = simtest::Tvctl() + " --db '" + tv.DbPath() + "'";
  const std::string loop = "set -e; i=0; while [ $i -lt 10 ]; do " + tvctl + " tune 2 5; " + tvctl +
                           " set system_info/238 2; " + tvctl + " tune 1 21; " + tvctl +
                           " set system_info/238 1; i=$((i+1)); done";
  const pid_t writer = Spawn({"/bin/sh", "-c", loop});
  ASSERT_GT(writer, 0);

  std::set<std::pair<int, int>> modes;
  std::set<int> tuners;
  int reads = 0, failures = 0;
  int status = -1;
  const auto start = Clock::now();
  while (waitpid(writer, &status, WNOHANG) != writer && Seconds(start) < 300) {
    // Each port call also writes its call-log row, so this process writes as well.
    const TvMode mode = Util::GetTvMode();
    modes.emplace(mode.antennaMode, mode.serviceMode);
    int recordable = -1;
    if (system_info_get_value_int(SYSTEM_INFO_KEY_RECORDABLE_TUNER_COUNT, &recordable) != 0) ++failures;
    tuners.insert(recordable);
    if (!Util::ExistChannelByTvMode(mode)) ++failures;
    ++reads;
  }
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "tvctl failed or the loop did not end";
  EXPECT_EQ(0, failures);
  EXPECT_EQ((std::set<std::pair<int, int>>{{1, 21}, {2, 5}}), modes) << "a mode nobody set, or no change seen";
  EXPECT_EQ((std::set<int>{1, 2}), tuners);
  EXPECT_GT(reads, 100);
}

}  // namespace
