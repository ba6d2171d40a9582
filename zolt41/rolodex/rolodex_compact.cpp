#include <string>
#include <string_view>
#include <utility>

#include "zolt41/platform/system/file_beside.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/record_window.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_state.h"
#include "zolt41/rolodex/sequential_writer.h"
#include "zolt41/rolodex/with_memory.h"

using namespace zolt;

namespace {

constexpr uint64_t kWorthFree = 50000;
constexpr uint64_t kWorthShare = 5;  // of what the cards take
constexpr uint32_t kBatch = 1024 * 1024;

// The head of a record with another position, without the marks that are in memory only.
std::string MovedHead(std::string_view stored, CardEntry const &entry, uint32_t position) {
  CardEntry moved(stored.data());
  moved.set_position(position);
  moved.set_id(entry.id());
  moved.set_size(entry.size());
  return {moved.bytes(), kEntrySize};
}

// Copies a record to where the writer stands.
bool CopyRecord(RecordWindow *window, CardEntry const &entry, SequentialWriter *writer) {
  std::string_view const head = window->At(entry.position(), kEntrySize);
  if (head.size() < kEntrySize) return false;
  writer->Add(MovedHead(head, entry, writer->position()));
  return CopyBytes(window, entry.position() + kEntrySize, static_cast<uint32_t>(entry.end()),
                   writer);
}

bool CopyFront(DatabaseFile const &file, SequentialWriter *writer) {
  std::string front(kCardArea, '\0');
  if (file.Read(0, front.data(), kCardArea) != 0) return false;
  writer->Add(front);
  return true;
}

// Cards in file order that are moved together, to `to`.
class Move {
 public:
  Move(DatabaseFile const &file, uint32_t to) : window_(file), to_(to) {}

  uint32_t size() const { return static_cast<uint32_t>(records_.size()); }
  bool empty() const { return records_.empty(); }
  bool Add(CardEntry const &entry) {
    std::string_view const record = window_.At(entry.position(), entry.size());
    if (record.size() < entry.size()) return false;
    records_ += MovedHead(record, entry, to_ + size());
    records_ += record.substr(kEntrySize);
    return true;
  }
  // Writes them, and a free record over the gap that they leave, up to `gapEnd`.
  bool Write(DatabaseFile *file, uint32_t end, uint32_t gapEnd) const {
    CardEntry gap = CardEntry::Cleared();
    gap.set_position(to_ + size());
    gap.set_size(gapEnd - gap.position());
    Piece const pieces[] = {{to_, records_}, {gap.position(), gap.part(0, kEntrySize)}};
    return file->PutPieces(end, pieces);
  }

 private:
  RecordWindow window_;
  uint32_t to_;
  std::string records_;
};

// The cards in file order, with the positions that they have once no gap is left.
CardEntries CompactedEntries(RolodexIndex const &index) {
  CardEntries entries;
  uint32_t position = kCardArea;
  index.ForEach([&](uint32_t slot) {
    CardEntry entry = index.at(slot);
    if (entry.free()) return;
    entry.set_position(position);
    position += entry.size();
    entries.push_back(entry);
  });
  return entries;
}

// The index as a compaction has left it that could not go on: the cards that were moved, the gap
// behind them, and what still lies where it lay.
RolodexIndex IndexWithGap(CardEntries moved, uint32_t end, uint32_t behind,
                          RolodexIndex const &index) {
  CardEntry gap = CardEntry::Cleared();
  gap.set_position(end);
  gap.set_size(behind - end);
  moved.push_back(gap);
  index.ForEach([&](uint32_t slot) {
    if (index.at(slot).position() >= behind) moved.push_back(index.at(slot));
  });
  return {std::move(moved), index.lastId()};
}

}  // namespace

bool Rolodex::PaysToCompact(int32_t force) {
  uint64_t freeBytes = 0;
  uint64_t liveBytes = 0;
  uint32_t freeCount = 0;
  uint32_t liveCount = 0;
  RolodexIndex const &index = *state_->index;
  index.ForEach([&](uint32_t slot) {
    CardEntry const &entry = index.at(slot);
    (entry.free() ? freeBytes : liveBytes) += entry.size();
    (entry.free() ? freeCount : liveCount)++;
  });
  return ((force & 1) != 0 && freeBytes != 0) || freeCount >= liveCount ||
         (freeBytes >= kWorthFree && freeBytes >= liveBytes / kWorthShare);
}

bool Rolodex::CompactIntoNewFile() {
  RolodexState &state = *state_;
  FileBeside beside(state.file.handle());
  if (!beside.good()) return false;
  SequentialWriter writer(beside.handle(), 0);
  RecordWindow window(state.file);
  bool good = CopyFront(state.file, &writer);
  state.index->ForEach([&](uint32_t slot) {
    CardEntry const &entry = state.index->at(slot);
    good = good && (entry.free() || CopyRecord(&window, entry, &writer));
  });
  uint32_t const end = writer.position();
  writer.Add(kStoredEndMark);
  if (!good || !writer.Finish() || !beside.Commit()) return false;
  state.file.ForgetCopy();
  state.end = end;
  return true;
}

// From front to back. After each batch the records fill the card area again.
bool Rolodex::CompactInPlace() {
  RolodexState &state = *state_;
  DatabaseFile &file = state.file;
  if (!GiveUpIndex()) return false;
  CardEntries live;
  state.index->ForEach([&](uint32_t slot) {
    if (!state.index->at(slot).free()) live.push_back(state.index->at(slot));
  });
  uint32_t end = kCardArea;
  size_t done = 0;
  while (done < live.size() && live[done].position() == end) end += live[done++].size();
  uint32_t behind = end;  // of the gap
  bool good = true;
  while (good && done < live.size()) {
    Move move(file, end);
    size_t next = done;
    do {
      good = move.Add(live[next++]);
    } while (good && next < live.size() && move.size() + live[next].size() <= kBatch);
    uint32_t const gapEnd = next < live.size() ? live[next].position() : state.end;
    good = good && move.Write(&file, state.end, gapEnd);
    if (!good) break;
    behind = gapEnd;
    for (; done < next; done++) {
      live[done].set_position(end);
      end += live[done].size();
    }
  }
  good = good && (end == state.end || file.Put(state.end, end, kStoredEndMark));
  if (!good && !file.broken() && behind != end) {
    live.resize(done);
    state.index = IndexWithGap(std::move(live), end, behind, *state.index);
  }
  if (!good) return false;
  if (!file.Cut(end + kEndMarkSize) || !file.Sync()) return file.Break();
  state.end = end;
  return true;
}

int32_t Rolodex::Compact(int32_t force) {
  if (!BeginChange() || !PaysToCompact(force)) return 0;
  auto const compact = [this] {
    CardEntries entries = CompactedEntries(*state_->index);
    uint32_t const lastId = state_->index->lastId();
    bool const renewed = CompactIntoNewFile();
    ClearFailure();
    if (!renewed && !CompactInPlace()) return false;
    dirty_ = 1;
    state_->index.emplace(std::move(entries), lastId);
    return true;
  };
  return ChangeWithMemory(&state_->file, false, compact) ? 1 : 0;
}
