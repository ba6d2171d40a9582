#include "zolt41/platform/registry/connection.h"

#include <cerrno>

#include "zolt41/platform/system/codepage.h"

namespace zolt {
namespace {

constexpr int kLayout = 1;
// Marks the file as a hive, for the program `file` and for us.
constexpr char kApplicationId[] = "PRAGMA application_id=0x5A4F4C54";

// Numbers of keys rise with their making and never come back: their order is the order of first
// writing, and a handle on a key that was deleted meets no later key. `place` orders the values of
// one key in the same way.
constexpr char kTables[] = R"sql(
CREATE TABLE hive(layout INTEGER NOT NULL, code_page INTEGER NOT NULL);
CREATE TABLE key(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL,
                 name TEXT NOT NULL COLLATE NOCASE, UNIQUE(parent, name));
CREATE INDEX key_order ON key(parent);
CREATE TABLE value(key INTEGER NOT NULL, name TEXT NOT NULL COLLATE NOCASE,
                   place INTEGER NOT NULL, type INTEGER NOT NULL, data BLOB NOT NULL,
                   PRIMARY KEY(key, name)) WITHOUT ROWID;
CREATE INDEX value_order ON value(key, place);
)sql";

constexpr std::array<char const *, static_cast<size_t>(Sql::count)> kStatements = {
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
    "SELECT layout,code_page FROM hive",
    "SELECT id,parent,name FROM key LIMIT ?1",
    "SELECT id FROM key WHERE parent=?1 AND name=?2",
    "INSERT INTO key(parent,name) SELECT ?1,?2"
    " WHERE ?1=0 OR EXISTS(SELECT 1 FROM key WHERE id=?1)",
    "DELETE FROM key WHERE id=?1",
    "SELECT 1 FROM key WHERE parent=?1 LIMIT 1",
    "SELECT type,data FROM value WHERE key=?1 AND name=?2",
    "UPDATE value SET type=?3,data=?4 WHERE key=?1 AND name=?2",
    "INSERT INTO value(key,name,type,data,place) SELECT ?1,?2,?3,?4,"
    "COALESCE((SELECT MAX(place) FROM value WHERE key=?1),0)+1"
    " WHERE ?1=0 OR EXISTS(SELECT 1 FROM key WHERE id=?1)",
    "DELETE FROM value WHERE key=?1 AND name=?2",
    "DELETE FROM value WHERE key=?1",
    "SELECT place,name FROM value WHERE key=?1 ORDER BY place LIMIT ?3 OFFSET ?2",
    "SELECT place,name FROM value WHERE key=?1 AND place>?2 ORDER BY place LIMIT ?3",
    "SELECT id,name FROM key WHERE parent=?1 AND name<>'' ORDER BY id LIMIT ?3 OFFSET ?2",
    "SELECT id,name FROM key WHERE parent=?1 AND id>?2 AND name<>'' ORDER BY id LIMIT ?3",
};

struct ResultRow {
  int result;
  Failure failure;
};

constexpr ResultRow kResultRows[] = {
    {SQLITE_PERM, Failure::denied},
    {SQLITE_READONLY, Failure::denied},
    {SQLITE_AUTH, Failure::denied},
    {SQLITE_BUSY, Failure::locked},
    {SQLITE_LOCKED, Failure::locked},
    {SQLITE_PROTOCOL, Failure::locked},
    {SQLITE_FULL, Failure::full},
    {SQLITE_NOMEM, Failure::full},
    {SQLITE_CORRUPT, Failure::damaged},
    {SQLITE_NOTADB, Failure::damaged},
    {SQLITE_SCHEMA, Failure::damaged},
    {SQLITE_ERROR, Failure::damaged},  // our own statements are right, so the tables are not ours
    {SQLITE_MISMATCH, Failure::damaged},
};

Failure FailureOf(int result, int systemError) {
  if (result == SQLITE_IOERR_CORRUPTFS) return Failure::damaged;
  int const primary = result & 0xFF;
  if (primary == SQLITE_IOERR || primary == SQLITE_CANTOPEN) {
    return systemError == 0 ? Failure::io : FailureFromErrno(systemError);
  }
  for (ResultRow const &row : kResultRows) {
    if (row.result == primary) return row.failure;
  }
  return Failure::io;
}

// The system's reason for the last failure: SQLite keeps it with the connection, or only with the
// file that was written to.
int SystemError(sqlite3 *database) {
  if (database == nullptr) return 0;
  int error = sqlite3_system_errno(database);
  for (int const part : {SQLITE_FCNTL_JOURNAL_POINTER, SQLITE_FCNTL_FILE_POINTER}) {
    sqlite3_file *file = nullptr;
    if (error == 0 && sqlite3_file_control(database, "main", part, &file) == SQLITE_OK &&
        file->pMethods != nullptr) {
      file->pMethods->xFileControl(file, SQLITE_FCNTL_LAST_ERRNO, &error);
    }
  }
  return error;
}

}  // namespace

Failure Connection::Fail(int result) {
  Failure const failure = FailureOf(result, SystemError(database_));
  SetFailure(failure, path_);
  return failure;
}

Failure Connection::Open(std::string const &path, Mode mode, Journal journal, uint32_t wait) {
  Close();
  unfilled_ = false;
  logged_ = false;
  path_ = path;
  int const access = mode == Mode::read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  int const result = sqlite3_open_v2(path.c_str(), &database_,
                                     access | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
  Failure failure = Failure::none;
  if (result != SQLITE_OK) {
    failure = Fail(result);
  } else {
    SetWait(wait);
    sqlite3_db_config(database_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    sqlite3_db_config(database_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(database_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_wal_autocheckpoint(database_, 0);
    if (mode == Mode::copy) failure = Execute("PRAGMA locking_mode=EXCLUSIVE");
    if (failure == Failure::none) failure = CheckLayout(mode, journal);
    bool const writes = mode == Mode::write || mode == Mode::create;
    if (failure == Failure::none && writes && !unfilled_ && journal == Journal::log) {
      failure = SwitchLogOn();
    }
    bool const shares = mode != Mode::copy && journal == Journal::log && !unfilled_;
    if (failure == Failure::none && shares) shortcuts_.Install(database_);
  }
  if (failure != Failure::none) Close();
  return failure;
}

Failure Connection::ReadLayout(bool *found) {
  Use layout(*this, Sql::get_layout);
  *found = layout.Row();
  if (*found && layout.Number(0) > kLayout) {
    SetFailure(Failure::newer, path_);
    return Failure::newer;
  }
  return layout.failure();
}

Failure Connection::CheckLayout(Mode mode, Journal journal) {
  bool found = false;
  Failure const failure = ReadLayout(&found);
  if (found || (failure != Failure::none && failure != Failure::damaged)) return failure;
  sqlite3_stmt *tables = nullptr;
  int result =
      sqlite3_prepare_v2(database_, "SELECT 1 FROM sqlite_schema LIMIT 1", -1, &tables, nullptr);
  if (result == SQLITE_OK) result = sqlite3_step(tables);
  sqlite3_finalize(tables);
  if (result == SQLITE_DONE) {
    unfilled_ = mode != Mode::create;
    return unfilled_ ? Failure::none : Fill(journal);
  }
  if (result != SQLITE_ROW) return Fail(result);
  // Only a file without any table is ours to fill. Another process may have filled it since we
  // looked; anything else is somebody's data.
  Failure const second = ReadLayout(&found);
  bool const known = second != Failure::none && second != Failure::damaged;
  return found || known ? second : Fail(SQLITE_CORRUPT);
}

Failure Connection::Fill(Journal journal) {
  Failure const making = MakeTables(journal);
  if (making == Failure::none) return making;
  // Another process may have filled it just before us.
  bool found = false;
  if (ReadLayout(&found) == Failure::none && found) return Failure::none;
  SetFailure(making, path_);
  return making;
}

// A foreign program may have switched it off. A commit survives the end of the process at once, and
// a power cut from the next checkpoint on.
Failure Connection::SwitchLogOn() {
  auto const keep = [](void *to, int, char **columns, char **) {
    *static_cast<bool *>(to) = columns[0] != nullptr && std::string_view(columns[0]) == "wal";
    return 0;
  };
  int result = sqlite3_exec(database_, "PRAGMA journal_mode=WAL", keep, &logged_, nullptr);
  if (result == SQLITE_OK) {
    result = sqlite3_exec(database_, "PRAGMA synchronous=NORMAL", nullptr, nullptr, nullptr);
  }
  return result == SQLITE_OK ? Failure::none : Fail(result);
}

Failure Connection::MakeTables(Journal journal) {
  if (journal == Journal::log) {
    if (Failure failure = Execute("PRAGMA journal_mode=WAL"); failure != Failure::none)
      return failure;
  }
  std::string const text = std::string("BEGIN IMMEDIATE;") + kApplicationId + ";" + kTables +
                           "INSERT INTO hive VALUES(" + std::to_string(kLayout) + "," +
                           std::to_string(LocalCodePage()) + ");COMMIT;";
  Failure const failure = Execute(text.c_str());
  if (failure != Failure::none) sqlite3_exec(database_, "ROLLBACK", nullptr, nullptr, nullptr);
  return failure;
}

void Connection::Close() {
  for (sqlite3_stmt *&statement : statements_) {
    sqlite3_finalize(statement);
    statement = nullptr;
  }
  sqlite3_close(database_);
  database_ = nullptr;
  file_ = nullptr;
}

Failure Connection::Execute(char const *text) {
  int const result = sqlite3_exec(database_, text, nullptr, nullptr, nullptr);
  return result == SQLITE_OK ? Failure::none : Fail(result);
}

Failure Connection::Run(Sql sql) {
  return Use(*this, sql).Done();
}

sqlite3_stmt *Connection::Prepare(Sql sql) {
  auto const index = static_cast<size_t>(sql);
  sqlite3_stmt *&statement = statements_[index];
  if (statement == nullptr) {
    int const result = sqlite3_prepare_v3(database_, kStatements[index], -1,
                                          SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    if (result != SQLITE_OK) Fail(result);
  }
  return statement;
}

uint64_t Connection::LogState() {
  // Without a log SQLite would make an index for it here and never take it away.
  if (!logged_) return 0;
  // The head of the log's index, in SQLite's own mapping of it; the third word counts commits, and
  // the salt two words of the log tell one log from the next.
  if (file_ == nullptr) {
    sqlite3_file_control(database_, "main", SQLITE_FCNTL_FILE_POINTER, &file_);
    if (file_ == nullptr || file_->pMethods == nullptr || file_->pMethods->iVersion < 2) {
      file_ = nullptr;
      return 0;
    }
  }
  void volatile *region = nullptr;
  if (file_->pMethods->xShmMap(file_, 0, 32768, 0, &region) != SQLITE_OK || region == nullptr)
    return 0;
  auto const *words = static_cast<uint32_t const volatile *>(region);
  return static_cast<uint64_t>(words[8]) << 32 | words[2];
}

bool Connection::Checkpoint(bool empty) {
  SetWait(0);
  int const mode = empty ? SQLITE_CHECKPOINT_TRUNCATE : SQLITE_CHECKPOINT_RESTART;
  int const result = sqlite3_wal_checkpoint_v2(database_, nullptr, mode, nullptr, nullptr);
  SetWait(LockWait());
  return result == SQLITE_OK;
}

Use &Use::Bind(int64_t number) {
  if (statement_ != nullptr) sqlite3_bind_int64(statement_, ++bound_, number);
  return *this;
}

Use &Use::Bind(std::string_view text) {
  if (statement_ != nullptr) {
    sqlite3_bind_text(statement_, ++bound_, text.data(), static_cast<int>(text.size()),
                      SQLITE_STATIC);
  }
  return *this;
}

Use &Use::Bind(void const *data, uint32_t size) {
  // A null pointer would bind NULL and not an empty blob.
  if (statement_ != nullptr) {
    sqlite3_bind_blob64(statement_, ++bound_, size == 0 ? "" : data, size, SQLITE_STATIC);
  }
  return *this;
}

bool Use::Row() {
  if (statement_ == nullptr) {
    failure_ = static_cast<Failure>(ZOLTLastFailure(nullptr, 0));
    return false;
  }
  int const result = sqlite3_step(statement_);
  if (result == SQLITE_ROW) return true;
  if (result != SQLITE_DONE) failure_ = connection_.Fail(result);
  return false;
}

Failure Use::Done() {
  while (Row()) {
  }
  return failure_;
}

std::string_view Use::Text(int column) const {
  auto const *text = reinterpret_cast<char const *>(sqlite3_column_text(statement_, column));
  if (text == nullptr) return {};
  return {text, static_cast<size_t>(sqlite3_column_bytes(statement_, column))};
}

std::string_view Use::Bytes(int column) const {
  auto const *bytes = static_cast<char const *>(sqlite3_column_blob(statement_, column));
  if (bytes == nullptr) return "";
  return {bytes, static_cast<size_t>(sqlite3_column_bytes(statement_, column))};
}

}  // namespace zolt
