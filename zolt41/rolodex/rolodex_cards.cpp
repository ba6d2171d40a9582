#include <algorithm>
#include <new>
#include <string_view>
#include <vector>

#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/card_record.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_state.h"
#include "zolt41/rolodex/with_memory.h"

using namespace zolt;

bool Rolodex::AddRecord(CardEntry *entry, std::string_view body) {
  Place const place = state_->index->FindPlace(entry->size());
  if (!HasRoom(*state_, place.room == 0 ? entry->size() : 0) || !GiveUpIndex()) return false;
  if (!WriteRecord(state_.get(), place, entry, body)) return false;
  EnterRecord(state_.get(), place, *entry);
  return true;
}

int32_t Rolodex::AddCard(PCardStorage *card, uint32_t id, char const *name1, char const *name2,
                         char const *name3, unsigned char const *categories) {
  if (id == 0 || !BeginChange()) return -1;
  CardBody const body(card);
  if (!body.good()) return -1;
  CardEntry entry = NewEntry(id, body.record(), {name1, name2, name3}, categories);
  auto const add = [&] { return AddRecord(&entry, body.bytes()); };
  if (!ChangeWithMemory(&state_->file, false, add)) return -1;
  state_->index->set_lastId(std::max(id, state_->index->lastId()));
  return 0;
}

uint32_t Rolodex::CreateCard(PCardStorage *card, char const *name1, char const *name2,
                             char const *name3, unsigned char const *categories) {
  if (!BeginChange()) return 0;
  uint32_t const id = state_->index->lastId() + 1;
  if (id == 0) {
    SetFailure(Failure::full, "");
    return 0;
  }
  return AddCard(card, id, name1, name2, name3, categories) == 0 ? id : 0;
}

int32_t Rolodex::LoadCard(uint32_t id, PCardStorage *card) {
  ClearFailure();
  CardEntry const *const entry = EntryOf(id);
  if (entry == nullptr) return 0;
  uint32_t const from = entry->position() + kEntrySize;
  uint32_t const size = entry->size() - kEntrySize;
  bool const loaded = WithMemory(false, [&] {
    std::vector<char> &buffer = state_->reading;
    if (buffer.size() < size) buffer.resize(size);
    if (state_->file.ReadBody(from, buffer.data(), size) != 0) return false;
    if (!card->TakeCopy(buffer.data(), static_cast<int32_t>(size))) throw std::bad_alloc();
    return true;
  });
  DropLargeBuffers(state_.get());
  return loaded ? 1 : 0;
}

bool Rolodex::FreeRecord(uint32_t slot, FreedRecord const &freed) {
  CardEntry head = state_->index->at(freed.head);
  head.set_id(0);
  head.set_size(freed.size);
  std::string_view const changed = head.part(kIdOffset, kNamesOffset - kIdOffset);
  if (!state_->file.Put(state_->end, freed.position + kIdOffset, changed)) return false;
  state_->index->Free(slot, freed);
  return true;
}

int32_t Rolodex::DeleteCard(uint32_t id) {
  if (!BeginChange()) return 0;
  uint32_t const slot = state_->index->Find(id);
  if (slot == RolodexIndex::kNone) return 0;
  auto const free = [&] {
    FreedRecord const freed = state_->index->PlanFree(slot);
    return GiveUpIndex() && FreeRecord(slot, freed);
  };
  return ChangeWithMemory(&state_->file, false, free) ? 1 : 0;
}

// Gives a card another body, where it would come to lie after it had been deleted.
bool Rolodex::Replace(uint32_t slot, std::string_view body) {
  RolodexState &state = *state_;
  RolodexIndex &index = *state.index;
  CardEntry entry = index.at(slot);
  entry.set_size(kEntrySize + static_cast<uint32_t>(body.size()));
  FreedRecord const freed = index.PlanFree(slot);
  Place const place = index.FindPlaceWith(freed, entry.size());
  if (!HasRoom(state, place.room == 0 ? entry.size() : 0) || !GiveUpIndex()) return false;
  if (place.room == 0 || place.position != freed.position) {
    // Between the two steps the card is there twice, which opening settles.
    if (!WriteRecord(&state, place, &entry, body)) return false;
    uint32_t const end = state.end;
    if (place.room == 0) state.end += entry.size();
    bool const done = FreeRecord(slot, freed);
    state.end = end;
    if (!done) TakeBackRecord(&state, place, entry);
    if (!done) return false;
  } else {
    entry.set_position(place.position);
    Piece const record = {place.position,
                          RecordBytes(&state, place, index.at(freed.head), entry, body)};
    if (record.bytes.empty() || !state.file.PutPieces(state.end, {&record, 1})) return false;
    index.Free(slot, freed);
  }
  EnterRecord(&state, place, entry);
  return true;
}

int32_t Rolodex::SaveCard(uint32_t id, PCardStorage *card) {
  if (!BeginChange()) return 0;
  uint32_t const slot = state_->index->Find(id);
  if (slot == RolodexIndex::kNone) return 0;
  CardBody const body(card);
  auto const replace = [&] { return body.good() && Replace(slot, body.bytes()); };
  if (!ChangeWithMemory(&state_->file, false, replace)) return 0;
  card->SetModified(0);
  return 1;
}
