#include <array>
#include <string_view>

#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_state.h"
#include "zolt41/rolodex/with_memory.h"

using namespace zolt;

// The entry that stands where that of the id would if no card had ever been deleted.
CardEntry const *Rolodex::GuessEntry(uint32_t id) {
  RolodexState &state = *state_;
  if (state.index || state.guesses == 0 || id > state.stored.count) return nullptr;
  state.guesses--;
  auto const at = static_cast<uint32_t>(state.end + kEndMarkSize + IndexSize(id - 1));
  bool const read = state.file.Read(at, &state.guessed, kEntrySize) == 0;
  return read && state.guessed.id() == id ? &state.guessed : nullptr;
}

// The head of a card, if it is there and lies in the card area; good until the next call.
CardEntry const *Rolodex::EntryOf(uint32_t id) {
  if (!state_ || id == 0) return nullptr;
  if (state_->file.broken()) {
    SetFailure(Failure::io, "");
    return nullptr;
  }
  CardEntry const *entry = GuessEntry(id);
  if (entry == nullptr) {
    if (!LoadIndex()) return nullptr;
    uint32_t const slot = state_->index->Find(id);
    if (slot == RolodexIndex::kNone) return nullptr;
    entry = &state_->index->at(slot);
  }
  bool const lies =
      entry->position() >= kCardArea && entry->size() >= kEntrySize && entry->end() <= state_->end;
  if (!lies) SetFailure(Failure::damaged, "");
  return lies ? entry : nullptr;
}

int32_t Rolodex::CardIndex(uint32_t id) {
  if (!state_ || id == 0 || !LoadIndex()) return -1;
  uint32_t const slot = state_->index->Find(id);
  return slot == RolodexIndex::kNone ? -1 : static_cast<int32_t>(state_->index->NumberOf(slot));
}

// Writes a part of a head. What lies in between, such as marks, has to be part of it.
bool Rolodex::ChangeHead(uint32_t slot, CardEntry const &entry, uint32_t offset, uint32_t count) {
  uint32_t const position = entry.position() + offset;
  return ChangeWithMemory(&state_->file, false, [&] {
    if (!GiveUpIndex() || !state_->file.Put(state_->end, position, entry.part(offset, count))) {
      return false;
    }
    state_->index->Replace(slot, entry);
    return true;
  });
}

void Rolodex::WriteCardHeader(uint32_t index) {
  if (!BeginChange() || index >= state_->index->count()) return;
  uint32_t const slot = state_->index->SlotAt(index);
  CardEntry const entry = state_->index->at(slot);
  if (GiveUpIndex()) state_->file.Put(state_->end, entry.position(), entry.part(0, kEntrySize));
}

void Rolodex::SetCardName(uint32_t id, char const *name1, char const *name2, char const *name3) {
  if (!BeginChange()) return;
  uint32_t const slot = state_->index->Find(id);
  if (slot == RolodexIndex::kNone) return;
  CardEntry entry = state_->index->at(slot);
  std::array const names = {name1, name2, name3};
  for (uint32_t i = 0; i < kCardNames; i++)
    if (names[i] != nullptr) entry.set_name(i, names[i]);
  ChangeHead(slot, entry, kCategoriesOffset, kEntrySize - kCategoriesOffset);
}

int32_t Rolodex::GetCardName(uint32_t id, char *name1, char *name2, char *name3) {
  ClearFailure();
  CardEntry const *const entry = EntryOf(id);
  if (entry == nullptr) return 0;
  std::array const names = {name1, name2, name3};
  for (uint32_t i = 0; i < kCardNames; i++) {
    std::string_view const name = entry->name(i);
    if (names[i] != nullptr) names[i][name.copy(names[i], name.size())] = '\0';
  }
  return 1;
}

uint32_t Rolodex::FindCard(char const *name1, char const *name2, char const *name3,
                           uint32_t *cursor) {
  ClearFailure();
  if (!state_ || !LoadIndex()) return 0;
  RolodexIndex &index = *state_->index;
  return WithMemory(uint32_t{0}, [&]() -> uint32_t {
    uint32_t const slot = index.FindNames({name1, name2, name3}, cursor == nullptr ? 0 : *cursor);
    if (slot == RolodexIndex::kNone) return 0;
    if (cursor != nullptr) *cursor = index.NumberOf(slot) + 1;
    return index.at(slot).id();
  });
}
