// The database is the TV's or it is refused: tvctl and the application's port
// functions never adopt another program's SQLite file, refuse it before writing
// a byte, and every database error names the file.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <sstream>

#include "Platform.h"
#include "ServiceHub.h"
#include "SimTestUtil.h"
#include "Store.h"
#include "TempTv.h"

namespace {

std::string Bytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

void Sql(const std::string& path, const std::string& sql) {
  sqlite3* db = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &db));
  EXPECT_EQ(SQLITE_OK, sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr)) << sqlite3_errmsg(db);
  sqlite3_close(db);
}

int64_t Pragma(const std::string& path, const std::string& name) {
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(db, ("PRAGMA " + name).c_str(), -1, &statement, nullptr);
  const int64_t value = sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_int64(statement, 0) : -1;
  sqlite3_finalize(statement);
  sqlite3_close(db);
  return value;
}

// True when the application's port functions can use the database at path.
bool PortsOpen(const std::string& path) {
  setenv("TVSIM_DB", path.c_str(), 1);
  tvsim::ReopenPlatform();
  Navigator* navigator = nullptr;
  return ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &navigator) == 0 && navigator != nullptr;
}

}  // namespace

TEST(StoreOwnership, AFileWithTablesButNotTheTvsMarkIsRefusedBeforeAnythingIsWritten) {
  tvtest::TempTv tv;
  const std::string tvctl = simtest::Tvctl();
  struct Row { const char* name; std::function<void(const std::string&)> make; const char* problem; } rows[] = {
      {"another program's tables", [](const std::string& f) { Sql(f, "CREATE TABLE notes(text); INSERT INTO notes VALUES('x')"); },
       "has tables but not the TV's mark"},
      {"another program's mark", [](const std::string& f) { Sql(f, "PRAGMA application_id=1234"); },
       "not a TV database (SQLite application_id 0x000004d2"},
      {"the TV's mark, another schema version",
       [&](const std::string& f) {
         tv.Run(tvctl + " --db " + f + " reset");
         Sql(f, "PRAGMA user_version=7");
       },
       "schema version 7; this build reads versions 2 to 3"},
      {"a text file", [](const std::string& f) { std::ofstream(f) << std::string(200, 'x'); }, "file is not a database"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string file = tv.Dir() + "/foreign-" + std::to_string(&row - rows) + ".db";
    row.make(file);
    const std::string before = Bytes(file);
    for (const std::string& verb : {std::string("show"), std::string("reset"), std::string("set system_info/18 2"),
                                    std::string("tune 1 21"), "load " + std::string(TV_SOURCE_DIR) + "/scenarios/sample.json"}) {
      std::string err;
      EXPECT_EQ(1, tv.Run(tvctl + " --db " + file + " " + verb + " 2>&1", &err)) << verb;
      EXPECT_NE(std::string::npos, err.find(file + ": ")) << err;
      EXPECT_NE(std::string::npos, err.find(row.problem)) << err;
    }
    EXPECT_FALSE(PortsOpen(file));
    EXPECT_EQ(before, Bytes(file));
    EXPECT_NE(0, access((file + "-wal").c_str(), F_OK)) << "the journal mode was changed";
  }

  // A new or empty file becomes the TV's, and carries the mark from then on.
  const std::string empty = tv.Dir() + "/empty.db";
  std::ofstream(empty).close();
  for (const std::string& file : {empty, tv.Dir() + "/new/tv.db"}) {
    SCOPED_TRACE(file);
    EXPECT_EQ(0, tv.Run(tvctl + " --db " + file + " show >/dev/null"));
    EXPECT_EQ(tvsim::Store::kApplicationId, Pragma(file, "application_id"));
    EXPECT_EQ(tvsim::Store::kSchemaVersion, Pragma(file, "user_version"));
    EXPECT_TRUE(PortsOpen(file));
  }
  // A TV of the previous schema version is brought up to date, its state kept.
  const std::string older = tv.Dir() + "/older.db";
  ASSERT_EQ(0, tv.Run(tvctl + " --db " + older + " load " + TV_SOURCE_DIR + "/scenarios/sample.json"));
  Sql(older, "DROP TABLE mode_number_formats; ALTER TABLE faults DROP COLUMN keep_outputs; PRAGMA user_version=2");
  std::string shown;
  EXPECT_EQ(0, tv.Run(tvctl + " --db " + older + " show tv_mode services", &shown));
  EXPECT_EQ(tvsim::Store::kSchemaVersion, Pragma(older, "user_version"));
  EXPECT_EQ(19u, nlohmann::json::parse(shown)["services"].size());
  EXPECT_EQ(0, tv.Run(tvctl + " --db " + older + " fault add GetServiceCount --result 7 --keep-outputs"));
  setenv("TVSIM_DB", tv.DbPath().c_str(), 1);
  tvsim::ReopenPlatform();
}

TEST(StoreOwnership, EveryDatabaseErrorNamesTheFile) {
  tvtest::TempTv tv;
  const std::string tvctl = simtest::Tvctl();
  const std::string damaged = tv.Dir() + "/damaged.db";
  ASSERT_EQ(0, tv.Run(tvctl + " --db " + damaged + " load " + TV_SOURCE_DIR + "/scenarios/sample.json"));
  {
    // Everything after the first page turned to garbage: the tables are unreadable.
    std::string bytes = Bytes(damaged);
    ASSERT_GT(bytes.size(), 8192u);
    for (size_t i = 4096; i < bytes.size(); ++i) bytes[i] = static_cast<char>(0xa5 ^ i);
    std::ofstream(damaged, std::ios::binary | std::ios::trunc) << bytes;
  }
  const std::string full = tv.Dir() + "/full.db";
  struct Row { std::string command, file, problem; } rows[] = {
      {tvctl + " --db " + damaged + " show", damaged, "malformed"},
      {tvctl + " --db " + damaged + " set system_info/18 2", damaged, "malformed"},
      // A file size limit makes the database's writes fail half way.
      {"sh -c \"trap '' XFSZ; ulimit -f 64; exec " + tvctl + " --db " + full + " load " + TV_SOURCE_DIR +
           "/scenarios/many-services.json\"",
       full, "error"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.command);
    std::string err;
    EXPECT_EQ(1, tv.Run(row.command + " 2>&1", &err));
    EXPECT_EQ(0u, err.find("tvctl: " + row.file + ": ")) << err;
    EXPECT_NE(std::string::npos, err.find(row.problem)) << err;
  }
}

namespace {

// chattr +i: not even root may write the file (or create files in the folder).
struct Immutable {
  explicit Immutable(const std::string& path) : path(path) {
    ok = std::system(("chattr +i '" + path + "'").c_str()) == 0;
  }
  ~Immutable() { std::system(("chattr -i '" + path + "'").c_str()); }
  std::string path;
  bool ok = false;
};

TvMode MainMode() {
  Navigator* navigator = nullptr;
  TvMode mode;
  if (ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &navigator) != 0 || navigator == nullptr) return mode;
  navigator->GetTvMode(mode);
  return mode;
}

}  // namespace

// A TV that may only be read is read: by tvctl show and by the application's port
// calls, whose call log cannot be written; writes fail and name the file.
TEST(StoreOwnership, ATvThatMayOnlyBeReadIsReadAndRefusesWrites) {
  const std::string tvctl = simtest::Tvctl();
  for (bool folder : {false, true}) {
    SCOPED_TRACE(folder ? "folder may not be written to" : "file may not be written to");
    tvtest::TempTv tv;
    tv.LoadFile("sample.json");
    tvsim::ReopenPlatform();
    Immutable locked(folder ? tv.Dir() : tv.DbPath());
    ASSERT_TRUE(locked.ok) << "needs root and a file system with the immutable attribute (chattr)";
    std::string out;
    EXPECT_EQ(0, tv.Run(tvctl + " show tv_mode 2>&1", &out)) << out;
    EXPECT_NE(std::string::npos, out.find("\"antenna\": 0")) << out;
    EXPECT_EQ(1, tv.Run(tvctl + " tune 1 21 2>&1", &out));
    EXPECT_EQ(0u, out.find("tvctl: " + tv.DbPath() + ": ")) << out;
    EXPECT_EQ(TvMode(ANTENNA_MODE_0, static_cast<ServiceMode>(21)), MainMode());
    Navigator* navigator = nullptr;
    ServiceHub::OpenNavigator(PROFILE_MAIN, 0, &navigator);
    ASSERT_NE(nullptr, navigator);
    EXPECT_NE(1, navigator->SetTvMode(TvMode(ANTENNA_MODE_1, static_cast<ServiceMode>(21)), ""));
  }
}

// A TV file replaced while the application runs is opened anew; a deleted one
// answers nothing and is not made again as an empty TV.
TEST(StoreOwnership, AReplacedTvIsOpenedAnewAndADeletedOneIsNotRemade) {
  tvtest::TempTv tv;
  tv.LoadFile("sample.json");
  tvsim::ReopenPlatform();
  EXPECT_EQ(0, MainMode().antennaMode);
  const std::string next = tv.Dir() + "/next.db";
  ASSERT_EQ(0, tv.Run(simtest::Tvctl() + " --db " + next + " load " + TV_SOURCE_DIR + "/scenarios/sample.json"));
  ASSERT_EQ(0, tv.Run(simtest::Tvctl() + " --db " + next + " tune 1 21"));
  ASSERT_EQ(0, std::rename(next.c_str(), tv.DbPath().c_str()));
  EXPECT_EQ(1, MainMode().antennaMode);  // the new file's mode
  for (const char* suffix : {"", "-wal", "-shm"}) std::remove((tv.DbPath() + suffix).c_str());
  EXPECT_EQ(-1, MainMode().antennaMode);
  EXPECT_NE(0, access(tv.DbPath().c_str(), F_OK));
}
