#include "zolt41/rolodex/card_record.h"

#include <string>
#include <vector>

#include "zolt41/foundation/endian.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/with_memory.h"

namespace zolt {
namespace {

constexpr size_t kKeptBuffer = size_t{1024} * 1024;

}  // namespace

CardBody::CardBody(PCardStorage *card) : block_(card == nullptr ? nullptr : card->Get()) {
  good_ = block_ != nullptr && GetMemSize(block_) < kLargestFile - kEntrySize;
  if (!good_) SetFailure(Failure::full, "");
}

CardBody::~CardBody() {
  _DisposeMem(block_);
}

std::string_view CardBody::bytes() const {
  return {block_, GetMemSize(block_)};
}

uint32_t CardBody::record() const {
  return kEntrySize + GetMemSize(block_);
}

bool IsWholeList(std::string_view body) {
  if (body.size() < sizeof(uint32_t)) return true;
  PCardStorage card;
  card.Set(body.data(), static_cast<int32_t>(body.size()));
  return card.PropCount() == LoadLittle32(body.data());
}

CardEntry NewEntry(uint32_t id, uint32_t size, CardNames const &names,
                   unsigned char const *categories) {
  CardEntry entry = CardEntry::Cleared();
  entry.set_id(id);
  entry.set_size(size);
  entry.set_categories(CategoryBits(categories));
  char const *const texts[kCardNames] = {names.name1, names.name2, names.name3};
  for (uint32_t i = 0; i < kCardNames; i++)
    if (texts[i] != nullptr) entry.set_name(i, texts[i]);
  return entry;
}

bool HasRoom(RolodexState const &state, uint64_t growth) {
  uint64_t const size =
      state.end + growth + kEndMarkSize + IndexSize(state.index->count() + 1) + kTrailerSize;
  if (size <= kLargestFile) return true;
  SetFailure(Failure::full, "");
  return false;
}

std::string_view RecordBytes(RolodexState *state, Place const &place, CardEntry const &freeRecord,
                             CardEntry const &entry, std::string_view body) {
  std::string &record = state->writing;
  return WithMemory(std::string_view(), [&]() -> std::string_view {
    record.assign(entry.bytes(), kEntrySize);
    record += body;
    if (place.room == 0) {
      record += kStoredEndMark;
    } else if (place.room > entry.size()) {
      record.append(state->index->RestOf(place, freeRecord, entry.size()).bytes(), kEntrySize);
    }
    return record;
  });
}

void DropLargeBuffers(RolodexState *state) {
  if (state->writing.capacity() > kKeptBuffer) std::string().swap(state->writing);
  if (state->reading.capacity() > kKeptBuffer) std::vector<char>().swap(state->reading);
}

bool WriteRecord(RolodexState *state, Place const &place, CardEntry *entry, std::string_view body) {
  bool const append = place.room == 0;
  entry->set_position(append ? state->end : place.position);
  std::string_view const record =
      RecordBytes(state, place, append ? *entry : state->index->FreeAt(place), *entry, body);
  if (record.empty()) return false;
  bool const written = append ? state->file.Append(state->end, record)
                              : state->file.FillFree(state->end, place.position, record);
  DropLargeBuffers(state);
  return written;
}

void EnterRecord(RolodexState *state, Place const &place, CardEntry const &entry) {
  state->index->Enter(place, entry);
  if (place.room == 0) state->end += entry.size();
}

void TakeBackRecord(RolodexState *state, Place const &place, CardEntry const &entry) {
  FirstFailure first;
  first.Note();
  DatabaseFile &file = state->file;
  uint32_t const end = state->end;
  bool gone = false;
  if (file.broken()) return;
  if (place.room == 0) {
    gone = file.Put(end + entry.size(), end, kStoredEndMark) && file.Cut(end + kEndMarkSize);
  } else {
    std::string_view const freed =
        state->index->FreeAt(place).part(kIdOffset, kCategoriesOffset - kIdOffset);
    gone = file.Put(end, place.position + kIdOffset, freed);
  }
  if (!gone) file.Break();
}

}  // namespace zolt
