#ifndef ZOLT41_BENCH_SQLITE_STORE_H_
#define ZOLT41_BENCH_SQLITE_STORE_H_

#include <sqlite3.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks/measure.h"
#include "benchmarks/work.h"

namespace zolt::bench {

// A table of values in a SQLite file, as a program would write it for itself: one connection,
// statements prepared once, a log beside the file (WAL, synchronous NORMAL), and one checkpoint for
// every 500 commits, which is how often the library makes one.
class SqliteStore {
 public:
  explicit SqliteStore(std::vector<std::string> names = Names(kValues),
                       std::string const &path = WorkFile("peer.sqlite"))
      : names_(std::move(names)) {
    Check(sqlite3_open(path.c_str(), &database_));
    sqlite3_busy_timeout(database_, 5000);
    Execute("PRAGMA journal_mode=WAL");
    Execute("PRAGMA synchronous=NORMAL");
    sqlite3_wal_autocheckpoint(database_, 0);
    Execute(
        "CREATE TABLE IF NOT EXISTS value(section TEXT NOT NULL, name TEXT NOT NULL,"
        " value TEXT NOT NULL, PRIMARY KEY(section,name)) WITHOUT ROWID");
    Prepare(&select_, "SELECT value FROM value WHERE section=?1 AND name=?2");
    Prepare(&walk_, "SELECT name FROM value WHERE section=?1");
    Prepare(&upsert_,
            "INSERT INTO value VALUES(?1,?2,?3)"
            " ON CONFLICT(section,name) DO UPDATE SET value=excluded.value");
    Prepare(&begin_, "BEGIN IMMEDIATE");
    Prepare(&commit_, "COMMIT");
  }
  ~SqliteStore() {
    for (sqlite3_stmt *statement : {select_, walk_, upsert_, begin_, commit_})
      sqlite3_finalize(statement);
    sqlite3_close(database_);
  }
  SqliteStore(SqliteStore const &) = delete;
  SqliteStore &operator=(SqliteStore const &) = delete;

  void Fill() {
    BeginWrite();
    for (size_t i = 0; i < names_.size(); i++) Write(i);
    EndWrite();
  }

  void Read(size_t index, char *buffer) {
    BindKey(select_, index);
    Require(sqlite3_step(select_) == SQLITE_ROW, "SQLite has no such value");
    auto const size = static_cast<size_t>(sqlite3_column_bytes(select_, 0));
    std::memcpy(buffer, sqlite3_column_text(select_, 0), size + 1);
    sqlite3_reset(select_);
  }

  // The names of all values, in their order; gives how many there are.
  size_t Walk() {
    size_t count = 0;
    char name[kTextSize];
    sqlite3_bind_text(walk_, 1, kSectionName, sizeof kSectionName - 1, SQLITE_STATIC);
    for (; sqlite3_step(walk_) == SQLITE_ROW; count++) {
      auto const size = static_cast<size_t>(sqlite3_column_bytes(walk_, 0));
      std::memcpy(name, sqlite3_column_text(walk_, 0), size + 1);
    }
    sqlite3_reset(walk_);
    return count;
  }

  void Write(size_t index) {
    BindKey(upsert_, index);
    sqlite3_bind_text(upsert_, 3, NextText(names_[index]), -1, SQLITE_STATIC);
    Step(upsert_);
    if (sqlite3_get_autocommit(database_) != 0) CountCommit();
  }

  void BeginWrite() { Step(begin_); }
  void EndWrite() {
    Step(commit_);
    CountCommit();
  }

  std::vector<std::string> const &names() const { return names_; }

 private:
  void Check(int result) {
    if (result != SQLITE_OK) Fail(std::string("SQLite: ") + sqlite3_errmsg(database_));
  }
  void Execute(char const *text) {
    Check(sqlite3_exec(database_, text, nullptr, nullptr, nullptr));
  }
  void Prepare(sqlite3_stmt **statement, char const *text) {
    Check(sqlite3_prepare_v2(database_, text, -1, statement, nullptr));
  }
  void BindKey(sqlite3_stmt *statement, size_t index) {
    std::string const &name = names_[index];
    sqlite3_bind_text(statement, 1, kSectionName, sizeof kSectionName - 1, SQLITE_STATIC);
    sqlite3_bind_text(statement, 2, name.c_str(), static_cast<int>(name.size()), SQLITE_STATIC);
  }
  void Step(sqlite3_stmt *statement) {
    if (sqlite3_step(statement) != SQLITE_DONE) Check(sqlite3_errcode(database_));
    sqlite3_reset(statement);
  }
  void CountCommit() {
    if (++commits_ % 500 != 0) return;
    Check(
        sqlite3_wal_checkpoint_v2(database_, nullptr, SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr));
  }

  std::vector<std::string> names_;
  sqlite3 *database_ = nullptr;
  sqlite3_stmt *select_ = nullptr;
  sqlite3_stmt *walk_ = nullptr;
  sqlite3_stmt *upsert_ = nullptr;
  sqlite3_stmt *begin_ = nullptr;
  sqlite3_stmt *commit_ = nullptr;
  unsigned commits_ = 0;
};

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_SQLITE_STORE_H_
