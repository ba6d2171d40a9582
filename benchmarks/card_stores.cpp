#include "benchmarks/card_stores.h"

#include <leveldb/db.h>
#include <leveldb/write_batch.h>
#include <lmdb.h>
#include <sqlite3.h>

#include <cstdio>
#include <cstring>

#include "benchmarks/measure.h"

namespace zolt::bench {
namespace {

constexpr uint32_t kLists = 100;
constexpr uint32_t kInOne = 10'000;  // cards in a transaction of many
constexpr size_t kNames = 96;

std::string KeyOf(uint32_t id) {
  std::string key(4, '\0');
  for (int i = 0; i < 4; i++) key[static_cast<size_t>(i)] = static_cast<char>(id >> (24 - 8 * i));
  return key;
}

std::string RecordOf(CardWork const &work, uint32_t id) {
  std::string record = work.name(id);
  record.resize(kNames);
  return record + work.list(id);
}

void Fill(PCardStorage *card, void const *list, size_t size) {
  card->Set(static_cast<char const *>(list), static_cast<int32_t>(size));
}

}  // namespace

CardWork::CardWork() {
  for (uint32_t i = 0; i < kLists; i++) {
    PCardStorage &card = *cards_.emplace_back(std::make_unique<CallCard>());
    std::string const number = std::to_string(1000 + i);
    card.SetStrProp("FN", 0, 0, ("Ada Lovelace " + number).c_str());
    card.SetStrProp("ORG", 0, 0, "The Analytical Engine Company");
    std::string const mail = "ada." + number + "@example.org";
    card.AddProp("EMAIL", PropertyAscii, PropertyHome, mail.c_str(),
                 static_cast<int32_t>(mail.size()) + 1);
    for (uint32_t const flags : {PropertyHome, PropertyWork}) {
      card.AddProp("TEL", PropertyAscii, flags, "+44 20 7946 0000", 17);
      card.SetStrProp("LABEL", flags, 0, "12 St James's Square, London SW1Y 4JH");
    }
    std::string const note(500 + i, 'n');
    card.AddProp("NOTE", PropertyAscii, 0, note.c_str(), static_cast<int32_t>(note.size()) + 1);
    char *const list = card.Get();
    lists_.emplace_back(list, GetMemSize(list));
    _DisposeMem(list);
  }
}

char const *CardWork::name(uint32_t number) const {
  std::snprintf(name_, sizeof name_, "Ada Lovelace %08u", number);
  return name_;
}

struct SqliteCards::Statements {
  sqlite3 *database = nullptr;
  sqlite3_stmt *insert = nullptr;
  sqlite3_stmt *load = nullptr;
  sqlite3_stmt *remove = nullptr;
  sqlite3_stmt *byId = nullptr;
  sqlite3_stmt *byName = nullptr;
  sqlite3_stmt *like = nullptr;
  sqlite3_stmt *likeInTable = nullptr;

  void Check(int result) const {
    if (result != SQLITE_OK) Fail(std::string("SQLite: ") + sqlite3_errmsg(database));
  }
  static void Fail(std::string const &what) { bench::Fail(what); }
  void Execute(char const *text) const {
    Check(sqlite3_exec(database, text, nullptr, nullptr, nullptr));
  }
  void Prepare(sqlite3_stmt **statement, char const *text) const {
    Check(sqlite3_prepare_v3(database, text, -1, SQLITE_PREPARE_PERSISTENT, statement, nullptr));
  }
  void Run(sqlite3_stmt *statement) const {
    if (sqlite3_step(statement) != SQLITE_DONE) Fail(sqlite3_errmsg(database));
    Check(sqlite3_reset(statement));
  }
  static void RequireRow(sqlite3_stmt *statement) {
    Require(sqlite3_step(statement) == SQLITE_ROW, "SQLite has no such card");
  }
  static uint32_t Count(sqlite3_stmt *like, char const *text);
};

SqliteCards::SqliteCards(std::string const &path, CardWork const &work)
    : work_(work), statements_(std::make_unique<Statements>()) {
  Statements &all = *statements_;
  all.Check(sqlite3_open(path.c_str(), &all.database));
  all.Execute("PRAGMA journal_mode=WAL");
  all.Execute("PRAGMA synchronous=NORMAL");
  all.Execute(
      "CREATE TABLE IF NOT EXISTS card(id INTEGER PRIMARY KEY, name1 TEXT NOT NULL COLLATE NOCASE,"
      " name2 TEXT NOT NULL, name3 TEXT NOT NULL, categories BLOB NOT NULL, list BLOB NOT NULL)");
  all.Execute("CREATE INDEX IF NOT EXISTS by_name ON card(name1)");
  all.Prepare(&all.insert, "INSERT INTO card VALUES(?1,?2,'','',zeroblob(16),?3)");
  all.Prepare(&all.load, "SELECT list FROM card WHERE id=?1");
  all.Prepare(&all.remove, "DELETE FROM card WHERE id=?1");
  all.Prepare(&all.byId, "SELECT name1,name2,name3 FROM card WHERE id=?1");
  all.Prepare(&all.byName, "SELECT id FROM card WHERE name1=?1");
  all.Prepare(&all.like, "SELECT id FROM card WHERE name1 LIKE '%'||?1||'%'");
  all.Prepare(&all.likeInTable, "SELECT id FROM card NOT INDEXED WHERE name1 LIKE '%'||?1||'%'");
}

SqliteCards::~SqliteCards() {
  Statements const &all = *statements_;
  for (sqlite3_stmt *statement :
       {all.insert, all.load, all.remove, all.byId, all.byName, all.like, all.likeInTable}) {
    sqlite3_finalize(statement);
  }
  sqlite3_close(all.database);
}

void SqliteCards::Insert(uint32_t id) {
  Statements const &all = *statements_;
  std::string const &list = work_.list(id);
  sqlite3_bind_int64(all.insert, 1, id);
  sqlite3_bind_text(all.insert, 2, work_.name(id), -1, SQLITE_STATIC);
  sqlite3_bind_blob(all.insert, 3, list.data(), static_cast<int>(list.size()), SQLITE_STATIC);
  all.Run(all.insert);
}

void SqliteCards::InsertAll(uint32_t first, uint32_t count) {
  statements_->Execute("BEGIN IMMEDIATE");
  for (uint32_t i = 0; i < count; i++) Insert(first + i);
  statements_->Execute("COMMIT");
}

void SqliteCards::Load(uint32_t id, PCardStorage *card) {
  sqlite3_stmt *const load = statements_->load;
  sqlite3_bind_int64(load, 1, id);
  Statements::RequireRow(load);
  Fill(card, sqlite3_column_blob(load, 0), static_cast<size_t>(sqlite3_column_bytes(load, 0)));
  sqlite3_reset(load);
}

void SqliteCards::Delete(uint32_t id) {
  sqlite3_bind_int64(statements_->remove, 1, id);
  statements_->Run(statements_->remove);
}

void SqliteCards::FindById(uint32_t id) {
  sqlite3_stmt *const find = statements_->byId;
  sqlite3_bind_int64(find, 1, id);
  Statements::RequireRow(find);
  char names[3][32];
  for (int i = 0; i < 3; i++)
    std::memcpy(names[i], sqlite3_column_text(find, i),
                static_cast<size_t>(sqlite3_column_bytes(find, i)) + 1);
  sqlite3_reset(find);
}

uint32_t SqliteCards::FindByName(char const *name) {
  sqlite3_stmt *const find = statements_->byName;
  sqlite3_bind_text(find, 1, name, -1, SQLITE_STATIC);
  Statements::RequireRow(find);
  auto const id = static_cast<uint32_t>(sqlite3_column_int64(find, 0));
  sqlite3_reset(find);
  return id;
}

uint32_t SqliteCards::Statements::Count(sqlite3_stmt *like, char const *text) {
  uint32_t count = 0;
  sqlite3_bind_text(like, 1, text, -1, SQLITE_STATIC);
  while (sqlite3_step(like) == SQLITE_ROW) count++;
  sqlite3_reset(like);
  return count;
}

uint32_t SqliteCards::CountLike(char const *text) {
  return Statements::Count(statements_->like, text);
}

uint32_t SqliteCards::CountLikeInTable(char const *text) {
  return Statements::Count(statements_->likeInTable, text);
}

namespace {

class LmdbCards : public CardStore {
 public:
  LmdbCards(std::string const &path, CardWork const &work, bool sync) : work_(work) {
    Check(mdb_env_create(&environment_));
    Check(mdb_env_set_mapsize(environment_, size_t{1} << 33));
    unsigned int const flags = MDB_NOSUBDIR | MDB_NOTLS | (sync ? 0U : unsigned{MDB_NOSYNC});
    Check(mdb_env_open(environment_, path.c_str(), flags, 0600));
    Begin();
    Check(mdb_dbi_open(writer_, nullptr, 0, &database_));
    Commit();
    Check(mdb_txn_begin(environment_, nullptr, MDB_RDONLY, &reader_));
    mdb_txn_reset(reader_);
  }
  ~LmdbCards() override {
    mdb_txn_abort(reader_);
    mdb_env_close(environment_);
  }

  void Insert(uint32_t id) override { InsertAll(id, 1); }
  void InsertAll(uint32_t first, uint32_t count) override {
    for (uint32_t i = 0; i < count; i++) {
      if (i % kInOne == 0) Begin();
      Put(first + i);
      if (i % kInOne == kInOne - 1 || i + 1 == count) Commit();
    }
  }
  void Load(uint32_t id, PCardStorage *card) override {
    std::string key = KeyOf(id);
    MDB_val keyValue = {key.size(), key.data()};
    MDB_val value;
    // As a program does that sees what others have written.
    Check(mdb_txn_renew(reader_));
    Check(mdb_get(reader_, database_, &keyValue, &value));
    Fill(card, static_cast<char *>(value.mv_data) + kNames, value.mv_size - kNames);
    mdb_txn_reset(reader_);
  }
  void Delete(uint32_t id) override {
    std::string key = KeyOf(id);
    MDB_val keyValue = {key.size(), key.data()};
    Begin();
    Check(mdb_del(writer_, database_, &keyValue, nullptr));
    Commit();
  }

 private:
  static void Check(int result) {
    if (result != MDB_SUCCESS) Fail(std::string("LMDB: ") + mdb_strerror(result));
  }
  void Begin() { Check(mdb_txn_begin(environment_, nullptr, 0, &writer_)); }
  void Commit() { Check(mdb_txn_commit(writer_)); }
  void Put(uint32_t id) {
    std::string key = KeyOf(id);
    std::string record = RecordOf(work_, id);
    MDB_val keyValue = {key.size(), key.data()};
    MDB_val value = {record.size(), record.data()};
    Check(mdb_put(writer_, database_, &keyValue, &value, 0));
  }

  CardWork const &work_;
  MDB_env *environment_ = nullptr;
  MDB_dbi database_ = 0;
  MDB_txn *reader_ = nullptr;
  MDB_txn *writer_ = nullptr;
};

class LevelCards : public CardStore {
 public:
  LevelCards(std::string const &path, CardWork const &work) : work_(work) {
    leveldb::Options options;
    options.create_if_missing = true;
    leveldb::DB *opened = nullptr;
    Check(leveldb::DB::Open(options, path, &opened));
    database_.reset(opened);
  }

  void Insert(uint32_t id) override { Check(database_->Put({}, KeyOf(id), RecordOf(work_, id))); }
  void InsertAll(uint32_t first, uint32_t count) override {
    leveldb::WriteBatch batch;
    for (uint32_t i = 0; i < count; i++) {
      batch.Put(KeyOf(first + i), RecordOf(work_, first + i));
      if (i % kInOne != kInOne - 1 && i + 1 < count) continue;
      Check(database_->Write({}, &batch));
      batch.Clear();
    }
  }
  void Load(uint32_t id, PCardStorage *card) override {
    std::string record;
    Check(database_->Get({}, KeyOf(id), &record));
    Fill(card, record.data() + kNames, record.size() - kNames);
  }
  void Delete(uint32_t id) override { Check(database_->Delete({}, KeyOf(id))); }

 private:
  static void Check(leveldb::Status const &status) {
    if (!status.ok()) Fail("LevelDB: " + status.ToString());
  }

  CardWork const &work_;
  std::unique_ptr<leveldb::DB> database_;
};

}  // namespace

std::unique_ptr<CardStore> OpenLmdb(std::string const &path, CardWork const &work, bool sync) {
  return std::make_unique<LmdbCards>(path, work, sync);
}

std::unique_ptr<CardStore> OpenLevel(std::string const &path, CardWork const &work) {
  return std::make_unique<LevelCards>(path, work);
}

}  // namespace zolt::bench
