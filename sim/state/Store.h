// The simulated TV's state: one SQLite database file in WAL mode, shared by the
// running application and tvctl. Every change runs in a transaction.
#pragma once

#include <Ecore.h>
#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace tvsim {

// A failure of the database itself (cannot open, corrupt, I/O error, not the
// TV's file); the message names the file.
class StoreError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A prepared statement owned by the Store's cache, reset when this handle goes.
class Statement {
 public:
  Statement(sqlite3* db, sqlite3_stmt* stmt) : m_db(db), m_stmt(stmt) {}
  // Resetting at the end of use ends the statement's read transaction, so that
  // the connection sees other connections' commits at its next read.
  ~Statement() {
    if (m_stmt) sqlite3_reset(m_stmt);
  }
  Statement(Statement&& other) noexcept : m_db(other.m_db), m_stmt(other.m_stmt) { other.m_stmt = nullptr; }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  Statement& operator=(Statement&&) = delete;

  Statement& Bind(int index, int64_t value);
  Statement& Bind(int index, const std::string& value);
  Statement& Bind(int index, std::nullptr_t);
  Statement& BindOptional(int index, const std::optional<int64_t>& value);
  Statement& BindOptional(int index, const std::optional<std::string>& value);

  bool Step();  // true while a row is available
  void Run();   // steps to the end

  bool IsNull(int column) const;
  int64_t Int(int column) const;
  std::string Text(int column) const;
  std::optional<int64_t> OptionalInt(int column) const;
  std::optional<std::string> OptionalText(int column) const;

 private:
  sqlite3* m_db;
  sqlite3_stmt* m_stmt;
};

class Store {
 public:
  // The mark of the TV's files: SQLite's application_id ("TVsm") and user_version.
  static constexpr int32_t kApplicationId = 0x5456736d;
  static constexpr int kSchemaVersion = 3;

  // Opens (and creates, with its folder) the database at path; a TV's file of
  // an older schema version is brought up to date. A file that has tables but
  // not the TV's mark, or the mark of a schema version this build does not
  // know, is refused with StoreError before anything is written to it: the
  // simulator never adopts another program's database.
  explicit Store(const std::string& path);
  ~Store();
  Store(const Store&) = delete;
  Store& operator=(const Store&) = delete;

  const std::string& Path() const { return m_path; }
  // Opened for reading only (the file or its folder may not be written to):
  // every write fails with a StoreError naming the file.
  bool ReadOnly() const { return m_bReadOnly; }

  // A cached prepared statement, reset and with its bindings cleared.
  Statement Prepare(const std::string& sql);
  void Exec(const std::string& sql);

  // PRAGMA data_version: moves when another connection commits.
  int64_t DataVersion();

  // Inside a pass of the main loop: the reads until the loop goes idle share one
  // read transaction (one snapshot, one lock) instead of one each; a write
  // transaction ends it first. Outside the loop: nothing.
  void HoldReadsForPass();
  // The held read's number, unique in this process; 0 while none is held.
  uint64_t HeldReadPass() const { return m_bPassRead ? m_nPassRead : 0; }

  // One write transaction; rolls back unless Commit() was called.
  class Transaction {
   public:
    explicit Transaction(Store& store);
    ~Transaction();
    void Commit();

   private:
    Store& m_store;
    bool m_bDone = false;
  };

 private:
  // Reads the mark and the schema version: 0 for an empty file (to be made a TV),
  // the version of a TV's file this build can bring up to date; throws for any other file.
  int SchemaVersion();
  void Migrate();
  void Open(const char* name, int flags);
  void Close();
  void EndPassRead();
  static Eina_Bool OnPassEnd(void* data);

  std::string m_path;
  sqlite3* m_db = nullptr;
  bool m_bReadOnly = false;
  bool m_bPassRead = false;
  uint64_t m_nPassRead = 0;
  Ecore_Idle_Enterer* m_pPassEnd = nullptr;
  std::map<std::string, sqlite3_stmt*> m_statements;
};

// service ids are unsigned 64-bit; SQLite keeps them as the same bits in a signed integer.
inline int64_t IdToSql(uint64_t id) { return static_cast<int64_t>(id); }
inline uint64_t IdFromSql(int64_t value) { return static_cast<uint64_t>(value); }

}  // namespace tvsim
