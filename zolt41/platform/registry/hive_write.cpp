#include "zolt41/platform/registry/hive_guards.h"
#include "zolt41/platform/registry/hive_text.h"

namespace zolt {
namespace {

struct GiveRow {
  Failure failure;
  int32_t number;
};

constexpr GiveRow kGiveRows[] = {
    {Failure::none, ERROR_SUCCESS},
    {Failure::denied, ERROR_ACCESS_DENIED},
    {Failure::locked, ERROR_LOCK_VIOLATION},
    {Failure::timed_out, ERROR_LOCK_VIOLATION},
    {Failure::full, ERROR_DISK_FULL},
    {Failure::damaged, ERROR_REGISTRY_CORRUPT},
    {Failure::newer, ERROR_REVISION_MISMATCH},
    {Failure::io, ERROR_REGISTRY_IO_FAILED},
};

// How many values of one transaction are kept in the cache.
constexpr size_t kMostKept = 1024;

uint16_t Word(uint32_t index) {
  return static_cast<uint16_t>(index);
}

// Stands for the calling thread, without asking the system.
uint64_t ThreadMark() {
  static thread_local char mark;
  return reinterpret_cast<uint64_t>(&mark);
}

}  // namespace

int32_t Hive::Give(Failure failure) {
  if (failure == Failure::locked) LosePatience();
  for (GiveRow const &row : kGiveRows) {
    if (row.failure == failure) return row.number;
  }
  return ERROR_REGISTRY_IO_FAILED;
}

bool Hive::IsCallingThread(uint64_t owner) {
  return owner == ThreadMark();
}

// Runs statements that change what `words` guard (or, with `all`, anything). Outside a transaction
// they must be one statement, which is committed by itself.
template <typename Run>
int32_t Hive::Change(std::initializer_list<uint16_t> words, bool all, Run run) {
  Failure failure = Failure::none;
  if (OwnTransaction()) {
    // After some errors SQLite has rolled back by itself, and a statement would stand alone.
    if (sqlite3_get_autocommit(writer_.database()) != 0) transactionFailure_ = Failure::io;
    if (transactionFailure_ != Failure::none) {
      SetFailure(transactionFailure_, path_);
      return Give(transactionFailure_);
    }
    for (uint16_t const word : words) {
      if (!dirty_[word]) dirtyList_.push_back(word);
      dirty_.set(word);
    }
    dirtyAll_ = dirtyAll_ || all;
    changeSerial_++;
    failure = run();
    if (failure != Failure::none) transactionFailure_ = failure;
    return Give(failure);
  }
  if (kind_ == Kind::user) words_->BeginChange({words.begin(), words.size()}, all);
  failure = run();
  if (kind_ == Kind::user) {
    words_->SetLogState(writer_.LogState());
    words_->EndChange();
    if (failure == Failure::none) AfterCommit();
  }
  return Give(failure);
}

// What was written is read next, as likely as not: it is kept as if it had been read. Under the
// mutex nobody else can have changed it since; the machine's tree has no such moment.
void Hive::KeepWritten(HiveKey key, std::string_view name, uint32_t type, void const *data,
                       uint32_t size) {
  if (kind_ != Kind::user) return;
  bool const absent = size == ValueCache::kAbsent;
  if (OwnTransaction()) {
    bool const small = !absent && size <= ValueCache::kMaxDataSize;
    std::string_view const bytes(static_cast<char const *>(data), small ? size : 0);
    if (written_.size() <= kMostKept) {
      written_.push_back({key.id, std::string(name), type, std::string(bytes), size});
    }
    return;
  }
  uint32_t const word = ValueWord(key.id, name);
  Stamp stamp{};
  if (Vouched(word, &stamp)) cache_.Fill({index_, key.id, name}, word, stamp, type, data, size);
}

void Hive::FillWritten() {
  // The list is not complete, or a key went with all its values.
  if (written_.size() > kMostKept || dirtyAll_) return;
  // Of all that was written under one word, perhaps under one name in two spellings, only the last
  // is known to stand.
  for (auto value = written_.rbegin(); value != written_.rend(); ++value) {
    uint32_t const word = ValueWord(value->key, value->name);
    Stamp stamp{};
    if (!dirty_[word] || !Vouched(word, &stamp)) continue;
    dirty_.reset(word);
    cache_.Fill({index_, value->key, value->name}, word, stamp, value->type, value->data.data(),
                value->size);
  }
}

void Hive::AfterCommit() {
  if (kind_ != Kind::user || !words_->CountCommit()) return;
  words_->Checkpointed(writer_.Checkpoint(false));
  words_->SetLogState(writer_.LogState());
}

// Runs `body` in the transaction that is open, or in one of its own.
template <typename Body>
int32_t Hive::AsTransaction(Body body) {
  if (OwnTransaction()) return body();
  uint64_t serial = 0;
  if (int32_t const begun = Begin(&serial); begun != ERROR_SUCCESS) return begun;
  int32_t const result = body();
  if (result != ERROR_SUCCESS) {
    Rollback(serial);
    return result;
  }
  return Commit(serial);
}

int32_t Hive::Begin(uint64_t *serial) {
  auto writing = std::make_unique<Writing>(*this);
  if (Failure failure = writing->Enter(); failure != Failure::none) return Give(failure);
  if (OwnTransaction()) return ERROR_INVALID_PARAMETER;
  if (Failure failure = writer_.Run(Sql::begin); failure != Failure::none) return Give(failure);
  transaction_ = std::move(writing);
  transactionFailure_ = Failure::none;
  *serial = ++transactionSerial_;
  transactionOwner_.store(ThreadMark(), std::memory_order_relaxed);
  return ERROR_SUCCESS;
}

bool Hive::IsOpen(uint64_t serial) const {
  return OwnTransaction() && transactionSerial_ == serial;
}

int32_t Hive::Commit(uint64_t serial) {
  if (!IsOpen(serial)) return ERROR_INVALID_PARAMETER;
  Failure failure = transactionFailure_;
  if (failure == Failure::none) {
    if (kind_ == Kind::user) words_->BeginChange(dirtyList_, dirtyAll_);
    failure = writer_.Run(Sql::commit);
    if (kind_ == Kind::user) {
      words_->SetLogState(writer_.LogState());
      words_->EndChange();
    }
  }
  if (failure != Failure::none) {
    Rollback(serial);
    SetFailure(failure, path_);
    return Give(failure);
  }
  AfterCommit();
  FillWritten();
  EndTransaction();
  return ERROR_SUCCESS;
}

void Hive::Rollback(uint64_t serial) {
  if (IsOpen(serial)) Abandon();
}

void Hive::Abandon() {
  if (!OwnTransaction()) return;
  if (sqlite3_get_autocommit(writer_.database()) == 0) writer_.Run(Sql::rollback);
  EndTransaction();
}

void Hive::EndTransaction() {
  for (uint16_t const word : dirtyList_) dirty_.reset(word);
  dirtyList_.clear();
  dirtyAll_ = false;
  written_.clear();
  ownLists_.Forget();
  transactionOwner_.store(0, std::memory_order_relaxed);
  transaction_.reset();
}

int32_t Hive::WriteValue(HiveKey key, std::string_view name, uint32_t type, void const *data,
                         uint32_t size) {
  // The machine's tree has no mutex that would keep others from between two statements.
  if (kind_ == Kind::machine && !OwnTransaction()) {
    return AsTransaction([&] { return WriteValue(key, name, type, data, size); });
  }
  Writing writing(*this);
  if (Failure failure = writing.Enter(); failure != Failure::none) return Give(failure);
  if (Stale(key)) return kStaleKey;
  StoredName const stored(name);
  uint16_t const word = Word(ValueWord(key.id, name));
  auto write = [&](Sql sql) {
    Use use(writer_, sql);
    return use.Bind(key.id).Bind(stored.text()).Bind(int64_t{type}).Bind(data, size).Done();
  };
  // Nearly every write meets a value that is there, which leaves the list of values alone.
  int32_t const updated = Change({word}, false, [&] { return write(Sql::update_value); });
  if (updated != ERROR_SUCCESS || sqlite3_changes(writer_.database()) != 0) {
    if (updated == ERROR_SUCCESS) KeepWritten(key, name, type, data, size);
    return updated;
  }
  int32_t const inserted =
      Change({word, Word(ShapeWord(key.id))}, false, [&] { return write(Sql::insert_value); });
  if (inserted != ERROR_SUCCESS) return inserted;
  if (sqlite3_changes(writer_.database()) == 0) return ERROR_KEY_DELETED;
  KeepWritten(key, name, type, data, size);
  return ERROR_SUCCESS;
}

int32_t Hive::DeleteValue(HiveKey key, std::string_view name) {
  Writing writing(*this);
  if (Failure failure = writing.Enter(); failure != Failure::none) return Give(failure);
  if (Stale(key)) return kStaleKey;
  StoredName const stored(name);
  int32_t const result = Change(
      {Word(ValueWord(key.id, name)), Word(ShapeWord(key.id))}, false,
      [&] { return Use(writer_, Sql::delete_value).Bind(key.id).Bind(stored.text()).Done(); });
  if (result != ERROR_SUCCESS) return result;
  bool const existed = sqlite3_changes(writer_.database()) != 0;
  KeepWritten(key, name, 0, "", ValueCache::kAbsent);
  return existed ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

int32_t Hive::CreateKey(HiveKey parent, std::string_view name, HiveKey *key, bool *made) {
  return AsTransaction([&]() -> int32_t {
    if (Stale(parent)) return kStaleKey;
    key->incarnation = Incarnation();
    int32_t const found = LookUpKey(parent.id, name, &key->id);
    *made = found == ERROR_FILE_NOT_FOUND;
    if (!*made) return found;
    StoredName const stored(name);
    int32_t const inserted = Change({Word(kKeysWord), Word(ShapeWord(parent.id))}, false, [&] {
      return Use(writer_, Sql::insert_key).Bind(parent.id).Bind(stored.text()).Done();
    });
    if (inserted != ERROR_SUCCESS) return inserted;
    key->id = sqlite3_last_insert_rowid(writer_.database());
    return sqlite3_changes(writer_.database()) != 0 ? ERROR_SUCCESS : ERROR_KEY_DELETED;
  });
}

int32_t Hive::DeleteKey(HiveKey parent, std::string_view name) {
  return AsTransaction([&]() -> int32_t {
    int64_t key = 0;
    if (Stale(parent)) return kStaleKey;
    if (int32_t const found = LookUpKey(parent.id, name, &key); found != ERROR_SUCCESS)
      return found;
    {
      Use children(writer_, Sql::has_subkeys);
      children.Bind(key);
      if (children.Row()) return ERROR_ACCESS_DENIED;
      if (children.failure() != Failure::none) return Give(children.failure());
    }
    // The words of the key's values are too many to name.
    return Change({Word(kKeysWord), Word(ShapeWord(parent.id))}, true, [&] {
      Failure failure = Use(writer_, Sql::delete_values).Bind(key).Done();
      if (failure == Failure::none) failure = Use(writer_, Sql::delete_key).Bind(key).Done();
      return failure;
    });
  });
}

}  // namespace zolt
