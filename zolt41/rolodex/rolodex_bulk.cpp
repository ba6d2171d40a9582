#include <string>
#include <utility>

#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/card_record.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_state.h"
#include "zolt41/rolodex/with_memory.h"

using namespace zolt;

namespace {

constexpr size_t kBatch = size_t{1024} * 1024;

// Cards that go behind the last one, gathered for one write.
class Batch {
 public:
  explicit Batch(RolodexState *state) : state_(state) {}

  bool full() const { return records_.size() >= kBatch; }
  uint64_t size() const { return records_.size(); }
  uint32_t count() const { return static_cast<uint32_t>(entries_.size()); }

  void Add(CardEntry entry, std::string_view body) {
    entry.set_position(state_->end + static_cast<uint32_t>(records_.size()));
    entries_.push_back(entry);
    records_.append(entry.bytes(), kEntrySize);
    records_ += body;
  }

  // All of them or none.
  bool WriteOut() {
    if (entries_.empty()) return true;
    records_ += kStoredEndMark;
    bool const written = state_->file.Append(state_->end, records_);
    for (CardEntry const &entry : entries_)
      if (written) EnterRecord(state_, {}, entry);
    entries_.clear();
    records_.clear();
    return written;
  }

 private:
  RolodexState *state_;
  CardEntries entries_;
  std::string records_;
};

}  // namespace

uint32_t Rolodex::CreateCards(uint32_t count, PCardStorage *const *cards, CardNames const *names,
                              unsigned char const *const *categories, uint32_t *ids) {
  if (!BeginChange() || count == 0) return 0;
  RolodexState &state = *state_;
  Batch batch(&state);
  uint32_t const lastId = state.index->lastId();
  uint32_t done = 0;
  auto const writeOut = [&](uint32_t upTo) {
    if (!batch.WriteOut()) return false;
    done = upTo;
    return true;
  };
  ChangeWithMemory(&state.file, false, [&] {
    bool good = true;
    for (uint32_t i = 0; good && i < count; i++) {
      CardBody const body(cards[i]);
      uint32_t const id = lastId + i + 1;
      if (id <= lastId) SetFailure(Failure::full, "");
      if (!body.good() || id <= lastId) break;
      CardEntry entry = NewEntry(id, body.record(), names == nullptr ? CardNames{} : names[i],
                                 categories == nullptr ? nullptr : categories[i]);
      Place const place = state.index->FindPlace(entry.size());
      uint64_t const growth = batch.size() + uint64_t{batch.count()} * kEntrySize;
      good = HasRoom(state, growth + (place.room == 0 ? entry.size() : 0)) && GiveUpIndex();
      if (good && place.room == 0) {
        batch.Add(entry, body.bytes());
        if (batch.full()) good = writeOut(i + 1);
      } else if (good) {
        good = writeOut(i) && AddRecord(&entry, body.bytes());
        if (good) done = i + 1;
      }
    }
    return writeOut(done + batch.count());
  });
  state.index->set_lastId(lastId + done);
  for (uint32_t i = 0; ids != nullptr && i < done; i++) ids[i] = lastId + i + 1;
  return done;
}
