#include <cstring>
#include <string>
#include <utility>

#include "zolt41/foundation/afs_file.h"
#include "zolt41/foundation/endian.h"
#include "zolt41/platform/system/file_beside.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/category_table.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_state.h"
#include "zolt41/rolodex/stored_index.h"
#include "zolt41/rolodex/with_memory.h"

using namespace zolt;

namespace {

constexpr int32_t kNotPossible = -1;

int32_t Fail(Failure failure) {
  SetFailure(failure, "");
  return kNotPossible;
}

}  // namespace

Rolodex::Rolodex() : categories_{} {}

Rolodex::~Rolodex() {
  Close();
}

int32_t Rolodex::Create(char const *path) {
  AFS_LZCreateFile(path, 0x52444558, 0x52444558);
  uint32_t file = 0;
  if (int32_t const code = AFS_LZOpenFile(path, 3, &file); code != 0) return code;
  DatabaseFile database(file, false);
  auto const fill = [&] { return database.Cut(0) && database.Write(0, EmptyDatabase()); };
  return WithMemory(false, fill) ? 0 : kNotPossible;
}

int32_t Rolodex::Open(char const *path, int32_t readOnly) {
  return OpenFile(path, readOnly, false);
}

int32_t Rolodex::OpenDurable(char const *path) {
  return OpenFile(path, 0, true);
}

int32_t Rolodex::OpenFile(char const *path, int32_t readOnly, bool durable) {
  if (state_) return kNotPossible;
  readOnly_ = readOnly;
  dirty_ = 0;
  uint32_t file = 0;
  bool opened = false;
  int32_t const code = WithMemory(kNotPossible, [&] {
    int32_t const failed = AFS_LZOpenFile(path, readOnly != 0 ? 1 : 3, &file);
    if (failed != 0) return failed;
    opened = true;
    state_ = std::make_unique<RolodexState>(file, durable);
    return OpenContent();
  });
  if (opened && !state_) AFS_CloseFile(file);
  if (code != 0) state_.reset();
  return code;
}

int32_t Rolodex::OpenContent() {
  DatabaseFile &file = state_->file;
  char head[kRolodexHead];
  if (int32_t const code = file.Read(0, head, sizeof head); code != 0) return code;
  uint32_t const magic = LoadLittle32(head);
  uint32_t const version = LoadLittle32(head + 4);
  bool const swapped = magic == Swapped32(kRolodexMagic);
  if (magic != kRolodexMagic && !swapped) return Fail(Failure::damaged);
  if (version != 0) return Fail(Failure::newer);
  if (swapped && readOnly_ != 0) return Fail(Failure::denied);
  if (swapped) return SwapFile() ? 0 : kNotPossible;
  if (int32_t const code = ReadCategories(); code != 0) return code;
  if (readOnly_ == 0) FileBeside::RemoveRemains(file.handle());
  int32_t const code = FindStoredIndex(file, &state_->stored);
  state_->end = state_->stored.end;
  if (code != kNotClosed) return code;
  if (readOnly_ != 0) return Fail(Failure::damaged);
  // A redo block may have had other ones.
  return RebuildIndex() && ReadCategories() == 0 ? 0 : kNotPossible;
}

int32_t Rolodex::ReadCategories() {
  std::string table(kCategoryTableSize, '\0');
  int32_t const code = state_->file.Read(kRolodexHead, table.data(), kCategoryTableSize);
  if (code == 0) ReadCategoryTable(table, categories_);
  return code;
}

// An index that does not fit the card area is made anew, where that may be done.
bool Rolodex::LoadIndex() {
  RolodexState &state = *state_;
  if (state.index) return true;
  if (state.file.broken()) return Fail(Failure::io) == 0;
  return WithMemory(false, [&] {
    CardEntries entries;
    if (!ReadStoredIndex(state.file, state.stored, &entries)) return false;
    RolodexIndex index(std::move(entries), state.stored.lastId);
    bool const fits = index.Fits(state.end);
    if (!fits && readOnly_ == 0) return RebuildIndex();
    if (!fits) index.set_unordered();
    state.index = std::move(index);
    return true;
  });
}

void Rolodex::Close() {
  if (!state_) return;
  Flush();
  state_.reset();
}

bool Rolodex::GiveUpIndex() {
  if (dirty_ != 0) return true;
  if (!state_->file.Cut(state_->end + kEndMarkSize)) return false;
  dirty_ = 1;
  return state_->file.Sync();
}

void Rolodex::Modify() {
  if (BeginChange()) GiveUpIndex();
}

// What has to hold before a change; the caller looks whether there is something to change, and then
// gives up the index.
bool Rolodex::BeginChange() {
  ClearFailure();
  if (!state_) return false;
  if (readOnly_ != 0) return Fail(Failure::denied) == 0;
  if (state_->file.broken()) return Fail(Failure::io) == 0;
  return LoadIndex();
}

void Rolodex::Flush() {
  if (!state_ || dirty_ == 0 || readOnly_ != 0 || state_->file.broken()) return;
  auto const write = [this] {
    return WriteStoredIndex(&state_->file, state_->end, *state_->index);
  };
  if (WithMemory(false, write)) {
    dirty_ = 0;
  } else {
    FirstFailure first;
    first.Note();
    state_->file.Cut(state_->end + kEndMarkSize);
  }
}
