#ifndef ZOLT41_PLATFORM_REGISTRY_CONNECTION_H_
#define ZOLT41_PLATFORM_REGISTRY_CONNECTION_H_

#include <sqlite3.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "zolt41/platform/registry/log_shortcuts.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt {

// The statements that a hive is read and written with, made at their first use.
enum class Sql : uint32_t {
  begin,
  commit,
  rollback,
  get_layout,
  all_keys,
  find_key,
  insert_key,
  delete_key,
  has_subkeys,
  get_value,
  update_value,
  insert_value,
  delete_value,
  delete_values,
  values_from,
  values_after,
  keys_from,
  keys_after,
  count,
};

// One connection to a hive's file. Every call leaves the reason of a failure for ZOLTLastFailure,
// with the path of the file. Not safe against a second thread.
class Connection {
 public:
  // For reading only; for reading and writing; for that, making the tables if the file is empty; or
  // for reading a copy that nobody else has.
  enum class Mode { read, write, create, copy };
  enum class Journal { log, rollback };

  Connection() = default;
  ~Connection() { Close(); }
  Connection(Connection const &) = delete;
  Connection &operator=(Connection const &) = delete;

  // A file without any table, which a maker that failed may have left, is opened but is unfilled:
  // only another opening, with Mode::create, can use it. `wait` is how long, in milliseconds,
  // SQLite waits for its own locks.
  Failure Open(std::string const &path, Mode mode, Journal journal, uint32_t wait);
  // Never moves the log into the file.
  void Close();
  bool open() const { return database_ != nullptr; }
  bool unfilled() const { return unfilled_; }
  sqlite3 *database() const { return database_; }

  void SetWait(uint32_t wait) {
    if (database_ != nullptr) sqlite3_busy_timeout(database_, static_cast<int>(wait));
  }

  // Runs a statement that gives no row.
  Failure Run(Sql sql);
  Failure Execute(char const *text);

  // A statement with nothing bound and not yet stepped, or null with the failure set.
  sqlite3_stmt *Prepare(Sql sql);

  // Turns a result of SQLite into a failure and leaves it for ZOLTLastFailure.
  Failure Fail(int result);

  // A number that changes with every commit to the log, whoever made it.
  uint64_t LogState();

  // Moves the log into the file and lets it begin anew; with `empty` it also gives its space back,
  // so the next one to open the hive has no log to read. False if a reader or an error held it
  // back.
  bool Checkpoint(bool empty);

 private:
  Failure Fill(Journal journal);
  Failure MakeTables(Journal journal);
  Failure CheckLayout(Mode mode, Journal journal);
  Failure ReadLayout(bool *found);
  Failure SwitchLogOn();

  sqlite3 *database_ = nullptr;
  sqlite3_file *file_ = nullptr;
  LogShortcuts shortcuts_;
  bool unfilled_ = false;
  bool logged_ = false;
  std::string path_;
  std::array<sqlite3_stmt *, static_cast<size_t>(Sql::count)> statements_{};
};

// A prepared statement for the length of one use: what it is given to bind stays the caller's and
// must live as long. It is reset at the end.
class Use {
 public:
  Use(Connection &connection, Sql sql)
      : connection_(connection), statement_(connection.Prepare(sql)) {}
  ~Use() {
    if (statement_ != nullptr) sqlite3_reset(statement_);
  }
  Use(Use const &) = delete;
  Use &operator=(Use const &) = delete;

  Use &Bind(int64_t number);
  Use &Bind(std::string_view text);
  Use &Bind(void const *data, uint32_t size);

  // Takes the next step: true for a row; false at the end and for a failure, which then is set.
  bool Row();
  // Runs to the end.
  Failure Done();
  Failure failure() const { return failure_; }

  int64_t Number(int column) const { return sqlite3_column_int64(statement_, column); }
  std::string_view Text(int column) const;
  std::string_view Bytes(int column) const;

 private:
  Connection &connection_;
  sqlite3_stmt *statement_;
  int bound_ = 0;
  Failure failure_ = Failure::none;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_CONNECTION_H_
