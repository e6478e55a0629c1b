#include "Store.h"

#include <Ecore.h>

#include <sys/stat.h>

#include <cctype>
#include <cerrno>
#include <cstdio>

namespace tvsim {

namespace {

// Schema version 3. Services are indexed by mode and navigation mask; the count
// per mode comes from service_counts (one row per mode and navigation mask, kept
// by the loader), so that it costs the same for ten services as for a million.
const char* const kSchema = R"sql(
CREATE TABLE screens(screen INTEGER PRIMARY KEY, antenna INTEGER NOT NULL, service INTEGER NOT NULL);
CREATE TABLE antenna_names(antenna INTEGER NOT NULL, service INTEGER, name TEXT NOT NULL);
CREATE TABLE number_formats(kind INTEGER PRIMARY KEY, format TEXT NOT NULL);
CREATE TABLE mode_number_formats(antenna INTEGER NOT NULL, service INTEGER, kind INTEGER NOT NULL,
  format TEXT NOT NULL);
CREATE TABLE services(id INTEGER PRIMARY KEY, antenna INTEGER NOT NULL, service INTEGER NOT NULL,
  major INTEGER NOT NULL, minor INTEGER, kind INTEGER, name TEXT NOT NULL, navigation INTEGER NOT NULL,
  programme TEXT, current INTEGER NOT NULL DEFAULT 0);
CREATE INDEX services_by_mode ON services(antenna, service, navigation);
CREATE INDEX services_by_number ON services(antenna, service, current DESC, major, minor);
CREATE TABLE service_counts(antenna INTEGER NOT NULL, service INTEGER NOT NULL, navigation INTEGER NOT NULL,
  count INTEGER NOT NULL, PRIMARY KEY(antenna, service, navigation)) WITHOUT ROWID;
CREATE TABLE profiles(position INTEGER PRIMARY KEY, data TEXT NOT NULL);
CREATE TABLE settings(key TEXT PRIMARY KEY, type TEXT NOT NULL CHECK(type IN ('int', 'bool', 'string')), value);
CREATE TABLE recordings(position INTEGER PRIMARY KEY AUTOINCREMENT, service_id INTEGER NOT NULL UNIQUE);
CREATE TABLE config(key TEXT PRIMARY KEY, value INTEGER NOT NULL);
CREATE TABLE faults(id INTEGER PRIMARY KEY AUTOINCREMENT, op TEXT NOT NULL, target TEXT, nth INTEGER,
  result INTEGER, is_null INTEGER NOT NULL DEFAULT 0, no_table INTEGER NOT NULL DEFAULT 0,
  no_attribute INTEGER, calls INTEGER NOT NULL DEFAULT 0, keep_outputs INTEGER NOT NULL DEFAULT 0);
CREATE INDEX faults_by_op ON faults(op);
CREATE TABLE kpi_events(seq INTEGER PRIMARY KEY AUTOINCREMENT, time TEXT NOT NULL, pid INTEGER NOT NULL,
  status INTEGER NOT NULL, event TEXT NOT NULL, code TEXT NOT NULL, desc TEXT NOT NULL);
CREATE TABLE tuning_changes(seq INTEGER PRIMARY KEY AUTOINCREMENT, time TEXT NOT NULL, pid INTEGER NOT NULL,
  screen INTEGER NOT NULL, antenna INTEGER NOT NULL, service INTEGER NOT NULL);
CREATE TABLE recorder_requests(seq INTEGER PRIMARY KEY AUTOINCREMENT, time TEXT NOT NULL, pid INTEGER NOT NULL,
  op TEXT NOT NULL, service_id INTEGER, caller TEXT);
CREATE TABLE settings_writes(seq INTEGER PRIMARY KEY AUTOINCREMENT, time TEXT NOT NULL, pid INTEGER NOT NULL,
  key TEXT NOT NULL, value TEXT NOT NULL);
CREATE TABLE calls(seq INTEGER PRIMARY KEY AUTOINCREMENT, time TEXT NOT NULL, pid INTEGER NOT NULL,
  op TEXT NOT NULL, args TEXT NOT NULL, result TEXT NOT NULL);
CREATE TABLE recorder_events(seq INTEGER PRIMARY KEY AUTOINCREMENT, time TEXT NOT NULL,
  event INTEGER NOT NULL, result INTEGER NOT NULL, data TEXT NOT NULL);
)sql";

// From version 2: number formats per tuning mode, and result faults that keep
// the call's real outputs.
const char* const kUpgradeFrom2 = R"sql(
CREATE TABLE mode_number_formats(antenna INTEGER NOT NULL, service INTEGER, kind INTEGER NOT NULL,
  format TEXT NOT NULL);
ALTER TABLE faults ADD COLUMN keep_outputs INTEGER NOT NULL DEFAULT 0;
)sql";
const int kOldestUpgradable = 2;

std::string Hex(int64_t value) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%08llx", static_cast<unsigned long long>(static_cast<uint32_t>(value)));
  return text;
}

void MakeParents(const std::string& path) {
  for (size_t pos = path.find('/', 1); pos != std::string::npos; pos = path.find('/', pos + 1)) {
    const std::string dir = path.substr(0, pos);
    if (mkdir(dir.c_str(), 0755) != 0 && errno != EEXIST) return;  // sqlite3_open reports the rest
  }
}

// Every error names the file: several TVs (and tests) run side by side.
void Check(sqlite3* db, int rc, const std::string& what) {
  if (rc != SQLITE_OK && rc != SQLITE_ROW && rc != SQLITE_DONE) {
    const char* file = db ? sqlite3_db_filename(db, "main") : nullptr;
    throw StoreError((file && *file ? std::string(file) + ": " : std::string()) + what + ": " +
                     (db ? sqlite3_errmsg(db) : sqlite3_errstr(rc)));
  }
}

}  // namespace

Statement& Statement::Bind(int index, int64_t value) {
  Check(m_db, sqlite3_bind_int64(m_stmt, index, value), "bind");
  return *this;
}

Statement& Statement::Bind(int index, const std::string& value) {
  Check(m_db, sqlite3_bind_text(m_stmt, index, value.data(), static_cast<int>(value.size()), SQLITE_TRANSIENT),
        "bind");
  return *this;
}

Statement& Statement::Bind(int index, std::nullptr_t) {
  Check(m_db, sqlite3_bind_null(m_stmt, index), "bind");
  return *this;
}

Statement& Statement::BindOptional(int index, const std::optional<int64_t>& value) {
  return value ? Bind(index, *value) : Bind(index, nullptr);
}

Statement& Statement::BindOptional(int index, const std::optional<std::string>& value) {
  return value ? Bind(index, *value) : Bind(index, nullptr);
}

bool Statement::Step() {
  const int rc = sqlite3_step(m_stmt);
  if (rc == SQLITE_ROW) return true;
  Check(m_db, rc, "step");
  return false;
}

void Statement::Run() {
  while (Step()) {
  }
}

bool Statement::IsNull(int column) const { return sqlite3_column_type(m_stmt, column) == SQLITE_NULL; }

int64_t Statement::Int(int column) const { return sqlite3_column_int64(m_stmt, column); }

std::string Statement::Text(int column) const {
  const auto* text = sqlite3_column_text(m_stmt, column);
  const int size = sqlite3_column_bytes(m_stmt, column);
  return text ? std::string(reinterpret_cast<const char*>(text), static_cast<size_t>(size)) : std::string();
}

std::optional<int64_t> Statement::OptionalInt(int column) const {
  if (IsNull(column)) return std::nullopt;
  return Int(column);
}

std::optional<std::string> Statement::OptionalText(int column) const {
  if (IsNull(column)) return std::nullopt;
  return Text(column);
}

namespace {

// "file:" URI of a path, for the open flags only URIs carry.
std::string FileUri(const std::string& path, const char* query) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string uri = "file:";
  for (unsigned char c : path) {
    if (std::isalnum(c) || c == '/' || c == '.' || c == '-' || c == '_' || c == '~') {
      uri += static_cast<char>(c);
    } else {
      uri += '%';
      uri += kHex[c >> 4];
      uri += kHex[c & 15];
    }
  }
  return uri + "?" + query;
}

}  // namespace

Store::Store(const std::string& path) : m_path(path) {
  MakeParents(path);
  Open(path.c_str(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  try {
    // The application and tvctl write at the same time: wait for each other's locks.
    sqlite3_busy_timeout(m_db, 5000);
    m_bReadOnly = sqlite3_db_readonly(m_db, "main") == 1;
    // Only reads until the file is known to be the TV's (or empty): changing the
    // journal mode already writes to it. A TV's file is in WAL mode for good.
    int nVersion = 0;
    try {
      nVersion = SchemaVersion();
    } catch (const StoreError&) {
      // A file we may only read, in a folder we may not write to: WAL's shared
      // memory file cannot be made there, so read it as it lies.
      if (sqlite3_errcode(m_db) != SQLITE_CANTOPEN) throw;
      Close();
      Open(FileUri(path, "immutable=1").c_str(), SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
      m_bReadOnly = true;
      nVersion = SchemaVersion();
    }
    if (nVersion != kSchemaVersion) {
      if (m_bReadOnly) {
        throw StoreError(m_path + (nVersion == 0 ? ": an empty file that may only be read is no TV"
                                                 : ": a TV of schema version " + std::to_string(nVersion) +
                                                       " that may only be read cannot be brought to version " +
                                                       std::to_string(kSchemaVersion)));
      }
      if (nVersion == 0) Exec("PRAGMA journal_mode=WAL");
      Migrate();
    }
    Exec("PRAGMA synchronous=NORMAL");
  } catch (...) {
    Close();
    throw;
  }
}

void Store::Open(const char* name, int flags) {
  const int rc = sqlite3_open_v2(name, &m_db, flags, nullptr);
  if (rc == SQLITE_OK) return;
  const std::string message = m_db ? sqlite3_errmsg(m_db) : sqlite3_errstr(rc);
  sqlite3_close(m_db);
  m_db = nullptr;
  throw StoreError("cannot open " + m_path + ": " + message);
}

void Store::Close() {
  // The cached statements first: a connection with live statements does not close.
  for (auto& entry : m_statements) sqlite3_finalize(entry.second);
  m_statements.clear();
  sqlite3_close(m_db);
  m_db = nullptr;
}

Store::~Store() {
  // The loop may have stopped before it went idle: the pass's end must not
  // come to a store that is gone. The reference taken with it keeps Ecore up.
  if (m_pPassEnd != nullptr) {
    ecore_idle_enterer_del(m_pPassEnd);
    ecore_shutdown();
  }
  Close();
}

int Store::SchemaVersion() {
  auto read = [&](const std::string& sql) {
    auto statement = Prepare(sql);
    statement.Step();
    const int64_t value = statement.Int(0);
    statement.Run();
    return value;
  };
  const int64_t id = read("PRAGMA application_id");
  const int64_t version = read("PRAGMA user_version");
  const int64_t objects = read("SELECT COUNT(*) FROM sqlite_master");
  if (id == kApplicationId) {
    if (version >= kOldestUpgradable && version <= kSchemaVersion) return static_cast<int>(version);
    throw StoreError(m_path + ": a TV database of schema version " + std::to_string(version) +
                     "; this build reads versions " + std::to_string(kOldestUpgradable) + " to " +
                     std::to_string(kSchemaVersion));
  }
  if (id != 0) {
    throw StoreError(m_path + ": not a TV database (SQLite application_id " + Hex(id) + ", the TV's is " +
                     Hex(kApplicationId) + "); refused, nothing written");
  }
  if (objects > 0) {
    throw StoreError(m_path + ": has tables but not the TV's mark (SQLite application_id " + Hex(kApplicationId) +
                     "); refused, nothing written. Another program's database, or one made before the "
                     "mark: give the TV a file of its own");
  }
  return 0;
}

void Store::Migrate() {
  Transaction transaction(*this);
  // Again inside the write lock: another process may have done it meanwhile.
  const int nVersion = SchemaVersion();
  if (nVersion == kSchemaVersion) return;
  if (nVersion == 0) {
    Exec(kSchema);
    Exec("PRAGMA application_id=" + std::to_string(kApplicationId));
  } else {
    Exec(kUpgradeFrom2);
  }
  Exec("PRAGMA user_version=" + std::to_string(kSchemaVersion));
  transaction.Commit();
}

Statement Store::Prepare(const std::string& sql) {
  auto it = m_statements.find(sql);
  if (it == m_statements.end()) {
    sqlite3_stmt* stmt = nullptr;
    Check(m_db, sqlite3_prepare_v2(m_db, sql.c_str(), -1, &stmt, nullptr), "prepare " + sql);
    it = m_statements.emplace(sql, stmt).first;
  }
  sqlite3_reset(it->second);
  sqlite3_clear_bindings(it->second);
  return Statement(m_db, it->second);
}

void Store::Exec(const std::string& sql) {
  char* error = nullptr;
  if (sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK) {
    const std::string message = error ? error : "unknown error";
    sqlite3_free(error);
    throw StoreError(m_path + ": " + message);
  }
}

int64_t Store::DataVersion() {
  auto statement = Prepare("PRAGMA data_version");
  statement.Step();
  const int64_t version = statement.Int(0);
  statement.Run();
  return version;
}

void Store::HoldReadsForPass() {
  if (m_bPassRead || ecore_main_loop_nested_get() == 0) return;
  // A read that cannot be held this way is simply not held.
  if (sqlite3_exec(m_db, "BEGIN", nullptr, nullptr, nullptr) != SQLITE_OK) return;
  static uint64_t s_lastPass = 0;  // across stores: a reopened store starts no number again
  m_bPassRead = true;
  m_nPassRead = ++s_lastPass;
  if (m_pPassEnd == nullptr) {
    ecore_init();  // held while the pass's end is pending, however the program ends
    m_pPassEnd = ecore_idle_enterer_add(OnPassEnd, this);
    if (m_pPassEnd == nullptr) ecore_shutdown();
  }
}

void Store::EndPassRead() {
  if (!m_bPassRead) return;
  m_bPassRead = false;
  sqlite3_exec(m_db, "COMMIT", nullptr, nullptr, nullptr);  // a read: nothing to fail
}

Eina_Bool Store::OnPassEnd(void* data) {
  auto* self = static_cast<Store*>(data);
  self->m_pPassEnd = nullptr;
  self->EndPassRead();
  ecore_shutdown();  // not the last reference: the loop that called this holds one
  return ECORE_CALLBACK_CANCEL;
}

Store::Transaction::Transaction(Store& store) : m_store(store) {
  m_store.EndPassRead();  // a write starts from the newest state
  m_store.Exec("BEGIN IMMEDIATE");
}

Store::Transaction::~Transaction() {
  if (!m_bDone) sqlite3_exec(m_store.m_db, "ROLLBACK", nullptr, nullptr, nullptr);
}

void Store::Transaction::Commit() {
  m_store.Exec("COMMIT");
  m_bDone = true;
}

}  // namespace tvsim
