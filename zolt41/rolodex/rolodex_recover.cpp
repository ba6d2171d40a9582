#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "zolt41/foundation/endian.h"
#include "zolt41/platform/system/file.h"
#include "zolt41/platform/system/file_beside.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/replaced_file.h"
#include "zolt41/rolodex/card_record.h"
#include "zolt41/rolodex/record_walk.h"
#include "zolt41/rolodex/record_window.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_state.h"
#include "zolt41/rolodex/sequential_writer.h"
#include "zolt41/rolodex/with_memory.h"

namespace zolt {
namespace {

constexpr uint32_t kLostFiles = 10000;

// The same bytes at the same positions, so that a record that is among them still stands where it
// says.
bool CopyFrom(DatabaseFile const &file, uint32_t from, uint32_t size, uint32_t to) {
  RecordWindow window(file);
  SequentialWriter writer(to, from);
  return CopyBytes(&window, from, size, &writer) && writer.Finish() && FlushFileBuffers(to) != 0;
}

}  // namespace

bool KeepLost(DatabaseFile const &file, uint32_t from, uint32_t size) {
  for (uint32_t number = 1; number <= kLostFiles; number++) {
    std::string const ending = ".lost-" + std::to_string(number);
    bool exists = false;
    uint32_t const made = CreateFileBeside(file.handle(), ending, &exists);
    if (exists) continue;
    if (made == INVALID_HANDLE_VALUE) return false;
    bool const kept = CopyFrom(file, from, size, made);
    // The name is on the disk, too, before what it keeps goes elsewhere.
    if (kept) SyncDirectoryOf(PathOf(DescriptorOf(made)));
    CloseHandle(made);
    if (!kept) RemoveFileBeside(file.handle(), ending);
    if (kept) ClearFailure();
    return kept;
  }
  return false;
}

}  // namespace zolt

using namespace zolt;

// The chain of records is what counts: up to the first that is broken they become the index.
bool Rolodex::IndexRecords() {
  DatabaseFile &file = state_->file;
  if (file.Size() > kLargestFile) {
    SetFailure(Failure::full, "");
    return false;
  }
  if (!file.Redo()) return false;
  auto const size = static_cast<uint32_t>(file.Size());
  RecordChain chain = WalkRecords(file, size, false);
  if (!chain.read) return false;
  if (chain.broken && !KeepLost(file, chain.end, size)) return false;
  // What was known of the file does not hold for one that was cut.
  state_->index.reset();
  if (!EndFile(&file, chain)) return file.Break();
  state_->end = chain.end;
  state_->index.emplace(std::move(chain.entries), chain.lastId);
  dirty_ = 1;
  if (!FreeDoubles()) return file.Break();
  Flush();
  return true;
}

bool Rolodex::RebuildIndex() {
  bool const done = ChangeWithMemory(&state_->file, false, [this] { return IndexRecords(); });
  if (state_->file.broken()) state_->index.reset();
  return done;
}

// A card that was being saved is there twice. The first is kept, unless the power went and only the
// second is whole.
bool Rolodex::FreeDoubles() {
  RolodexIndex &index = *state_->index;
  std::vector<uint32_t> const doubles = index.doubles();
  RecordWindow window(state_->file);
  auto const isWhole = [&](uint32_t slot) {
    CardEntry const &entry = index.at(slot);
    uint32_t const size = entry.size() - kEntrySize;
    std::string_view const body = window.At(entry.position() + kEntrySize, size);
    return body.size() == size && IsWholeList(body);
  };
  return std::ranges::all_of(doubles, [&](uint32_t slot) {
    uint32_t const first = index.Find(index.at(slot).id());
    bool const second = !isWhole(first) && isWhole(slot);
    if (window.failed()) return false;
    if (second) index.Prefer(slot);
    uint32_t const freed = second ? first : slot;
    return FreeRecord(freed, index.PlanFree(freed));
  });
}

void Rolodex::Rebuild() {
  ClearFailure();
  if (state_ && readOnly_ == 0) RebuildIndex();
}
