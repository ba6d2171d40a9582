#include "zolt41/platform/registry/hive_guards.h"
#include "zolt41/platform/registry/hive_text.h"

namespace zolt {
namespace {

// By ValueCache::Result.
constexpr int32_t kResults[] = {ERROR_SUCCESS, ERROR_FILE_NOT_FOUND, ERROR_UNSUPPORTED_TYPE,
                                ERROR_MORE_DATA};

}  // namespace

bool Hive::Vouched(uint32_t word, Stamp *stamp) const {
  StampSource const *source = source_.load(std::memory_order_acquire);
  if (source == nullptr) return false;
  *stamp = source->Read(word);
  // The machine's counter has no resting state; a copy of it is good if it did not move.
  return kind_ == Kind::machine || ((stamp->word | stamp->epoch) & 1) == 0;
}

int32_t Hive::ReadValue(HiveKey key, std::string_view name, uint32_t *type, void *data,
                        uint32_t *size) {
  StampSource const *source = source_.load(std::memory_order_acquire);
  bool const own = OwnTransaction();
  if (source != nullptr && (!own || (!dirtyAll_ && !dirty_[ValueWord(key.id, name)]))) {
    auto const result = cache_.Find({index_, key.id, name}, *source, type, data, size);
    if (result != ValueCache::Result::miss) return kResults[static_cast<size_t>(result)];
  }
  return ReadFile(key, name, type, data, size);
}

int32_t Hive::ReadFile(HiveKey key, std::string_view name, uint32_t *type, void *data,
                       uint32_t *size) {
  Reading reading(*this);
  bool missing = false;
  if (Failure failure = reading.Enter(false, &missing); failure != Failure::none)
    return Give(failure);
  if (missing) return ERROR_FILE_NOT_FOUND;
  if (Stale(key)) return kStaleKey;
  uint32_t const word = ValueWord(key.id, name);
  bool const changed = OwnTransaction() && (dirtyAll_ || dirty_[word]);
  Stamp before{};
  bool const vouched = Vouched(word, &before) && !changed;
  StoredName const stored(name);
  Use row(Readable(), Sql::get_value);
  row.Bind(key.id).Bind(stored.text());
  bool const found = row.Row();
  if (row.failure() != Failure::none) return Give(row.failure());
  std::string_view const bytes = found ? row.Bytes(1) : std::string_view("");
  auto const foundType = found ? static_cast<uint32_t>(row.Number(0)) : 0;
  NoticeForeignEdit();
  Stamp after{};
  if (vouched && Vouched(word, &after) && after == before) {
    uint32_t const length = found ? static_cast<uint32_t>(bytes.size()) : ValueCache::kAbsent;
    cache_.Fill({index_, key.id, name}, word, after, foundType, bytes.data(), length);
  }
  if (!found) return ERROR_FILE_NOT_FOUND;
  auto const result = ValueCache::CopyOut(foundType, bytes.data(),
                                          static_cast<uint32_t>(bytes.size()), type, data, size);
  return kResults[static_cast<size_t>(result)];
}

HiveStatus Hive::Inspect() {
  HiveStatus status;
  Reading reading(*this);
  bool missing = false;
  status.failure = reading.Enter(true, &missing);
  status.path = status.failure == Failure::none ? path_ : failedPath_;
  status.present = !missing && status.failure == Failure::none;
  if (!status.present) return status;
  status.writable = writable_.load(std::memory_order_relaxed);
  Use layout(Readable(), Sql::get_layout);
  if (layout.Row()) {
    status.layout = static_cast<uint32_t>(layout.Number(0));
    status.codePage = static_cast<uint32_t>(layout.Number(1));
  }
  status.failure = layout.failure();
  return status;
}

void Hive::NoticeForeignEdit() {
  if (state_ != State::shared || OwnTransaction() || words_->ChangeNoted()) return;
  if (reader_.LogState() == words_->LogState() || !words_->Lock(0)) return;
  if (uint64_t const state = reader_.LogState(); state != words_->LogState()) {
    words_->FlushAll();
    words_->SetLogState(state);
  }
  words_->Unlock();
}

int32_t Hive::LookUpKey(int64_t parent, std::string_view name, int64_t *key) {
  StoredName const stored(name);
  if (!OwnTransaction()) {
    Stamp before{};
    Stamp after{};
    if (!Vouched(kKeysWord, &before) || !keys_.Current(before)) {
      if (Failure failure = keys_.Load(reader_); failure != Failure::none) return Give(failure);
      NoticeForeignEdit();
      if (Vouched(kKeysWord, &after) && after == before) keys_.Vouch(after);
    }
    KeyIndex::Result const result = keys_.Find(parent, stored.text(), key);
    if (result == KeyIndex::Result::found) return ERROR_SUCCESS;
    if (result == KeyIndex::Result::absent) return ERROR_FILE_NOT_FOUND;
  }
  Use row(Readable(), Sql::find_key);
  row.Bind(parent).Bind(stored.text());
  if (row.Row()) {
    *key = row.Number(0);
    return ERROR_SUCCESS;
  }
  return row.failure() == Failure::none ? ERROR_FILE_NOT_FOUND : Give(row.failure());
}

// What the list of keys says while the words vouch for it needs no look at the file.
KeyIndex::Result Hive::FindListedKey(int64_t parent, std::string_view name, int64_t *key) {
  if (OwnTransaction()) return KeyIndex::Result::unknown;
  Stamp now{};
  std::lock_guard const read(readLock_);
  if (!Vouched(kKeysWord, &now) || !keys_.Current(now)) return KeyIndex::Result::unknown;
  return keys_.Find(parent, StoredName(name).text(), key);
}

int32_t Hive::FindKey(HiveKey parent, std::string_view name, HiveKey *key) {
  key->incarnation = Incarnation();
  // Who comes from the root looks whether the file is still the same.
  if (parent.id != 0 && !Stale(parent) &&
      FindListedKey(parent.id, name, &key->id) == KeyIndex::Result::found) {
    return ERROR_SUCCESS;
  }
  Reading reading(*this);
  bool missing = false;
  if (Failure failure = reading.Enter(true, &missing); failure != Failure::none) {
    return Give(failure);
  }
  if (missing) return ERROR_FILE_NOT_FOUND;
  if (Stale(parent)) return kStaleKey;
  key->incarnation = Incarnation();
  return LookUpKey(parent.id, name, &key->id);
}

// What a list says while the words vouch for it needs no look at the file.
bool Hive::ListedNames(HiveKey key, NameLists::Kind kind, uint32_t index, HeldNames *held) {
  if (OwnTransaction()) return false;
  std::lock_guard const read(readLock_);
  if (Stale(key)) return false;
  StampSource const *source = source_.load(std::memory_order_acquire);
  uint32_t const word = ShapeWord(key.id);
  Stamp now{};
  if (!Vouched(word, &now)) return false;
  NameLists::List const &list = lists_.Get(key.id, kind, now);
  if (!list.Tells(index)) return false;
  *held = {list.names, source, word, now, key};
  return true;
}

int32_t Hive::NamesAt(HiveKey key, NameLists::Kind kind, uint32_t index, HeldNames *held) {
  if (ListedNames(key, kind, index, held)) return ERROR_SUCCESS;
  Reading reading(*this);
  bool missing = false;
  if (Failure failure = reading.Enter(false, &missing); failure != Failure::none)
    return Give(failure);
  if (missing) return ERROR_NO_MORE_ITEMS;
  if (Stale(key)) return kStaleKey;
  bool const own = OwnTransaction();
  StampSource const *source = own ? nullptr : source_.load(std::memory_order_acquire);
  uint32_t const word = ShapeWord(key.id);
  Stamp before{};
  // In a transaction a list is good until the transaction's next change.
  bool const vouched = own || Vouched(word, &before);
  if (own) before = {~uint64_t{0}, changeSerial_};
  NameLists::List &list = (own ? ownLists_ : lists_).Get(key.id, kind, before);
  if (!list.Tells(index)) {
    Failure const failure = NameLists::Load(Readable(), list, index);
    if (failure != Failure::none) return Give(failure);
  }
  NoticeForeignEdit();
  Stamp after{};
  if (!own && !(vouched && Vouched(word, &after) && after == before)) list.good = false;
  *held = {list.names, list.good ? source : nullptr, word, before, key};
  return ERROR_SUCCESS;
}

int32_t Hive::CountNames(HiveKey key, NameLists::Kind kind, uint32_t *count, uint32_t *longest) {
  *count = 0;
  *longest = 0;
  for (bool last = false; !last;) {
    HeldNames held;
    int32_t const result = NamesAt(key, kind, *count, &held);
    if (result == ERROR_NO_MORE_ITEMS) return ERROR_SUCCESS;
    if (result != ERROR_SUCCESS) return result;
    while (std::string const *const name = held.names->At(*count)) {
      *longest = std::max(*longest, static_cast<uint32_t>(name->size()));
      ++*count;
    }
    last = held.names->last;
  }
  return ERROR_SUCCESS;
}

}  // namespace zolt
