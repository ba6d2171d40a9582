#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "zolt41/foundation/endian.h"
#include "zolt41/platform/system/file.h"
#include "zolt41/platform/system/file_beside.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/record_walk.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_state.h"
#include "zolt41/rolodex/sequential_writer.h"

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
bool Rolodex::RebuildIndex() {
  DatabaseFile &file = state_->file;
  if (file.Size() > kLargestFile) {
    SetFailure(Failure::full, "");
    return false;
  }
  if (!file.Redo()) return false;
  auto const size = static_cast<uint32_t>(file.Size());
  RecordChain chain = WalkRecords(file, size);
  if (!chain.read) return false;
  if (chain.broken && !KeepLost(file, chain.end, size)) return false;
  // What was known of the file does not hold for one that was cut.
  state_->index.reset();
  bool const marked = chain.marked && file.Cut(chain.end + kEndMarkSize);
  if (!marked && !(file.Cut(chain.end) && file.Write(chain.end, kStoredEndMark))) {
    return file.Break();
  }
  uint32_t lastId = 0;
  for (CardEntry const &entry : chain.entries) lastId = std::max(lastId, entry.id());
  state_->end = chain.end;
  state_->index.emplace(std::move(chain.entries), lastId);
  dirty_ = 1;
  if (!FreeDoubles()) {
    state_->index.reset();
    return file.Break();
  }
  Flush();
  return true;
}

// A card that was being saved is there twice. Either is whole; the first is kept.
bool Rolodex::FreeDoubles() {
  std::vector<uint32_t> const doubles = state_->index->doubles();
  return std::ranges::all_of(
      doubles, [this](uint32_t slot) { return FreeRecord(slot, state_->index->PlanFree(slot)); });
}

void Rolodex::Rebuild() {
  ClearFailure();
  if (state_ && readOnly_ == 0) RebuildIndex();
}
