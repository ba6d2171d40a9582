#include "zolt41/rolodex/rolodex_index.h"

namespace zolt {
namespace {

Place PlaceOf(uint64_t key) {
  return {NumberSet::Lower(key), NumberSet::Upper(key)};
}

}  // namespace

Place RolodexIndex::FindPlace(uint32_t size) const {
  uint64_t const *const exact = free_.NotBelow(NumberSet::Of(size, 0));
  if (exact != nullptr && NumberSet::Upper(*exact) == size) return PlaceOf(*exact);
  // A rest of a head alone is none.
  uint64_t const *const larger = free_.NotBelow(NumberSet::Of(size + kEntrySize + 1, 0));
  return larger == nullptr ? Place{} : PlaceOf(*larger);
}

Place RolodexIndex::FindPlaceWith(FreedRecord const &freed, uint32_t size) {
  std::vector<uint64_t> swallowed;
  for (uint64_t const *key = Order().NotBelow(NumberSet::Of(freed.position, 0));
       key != nullptr && NumberSet::Upper(*key) < freed.position + freed.size;
       key = Order().NotBelow(*key + 1)) {
    CardEntry const &entry = entries_[NumberSet::Lower(*key)];
    if (entry.free()) swallowed.push_back(NumberSet::Of(entry.size(), entry.position()));
  }
  uint64_t const whole = NumberSet::Of(freed.size, freed.position);
  for (uint64_t const key : swallowed) free_.Erase(key);
  free_.Insert(whole);
  Place const place = FindPlace(size);
  free_.Erase(whole);
  for (uint64_t const key : swallowed) free_.Insert(key);
  return place;
}

FreedRecord RolodexIndex::PlanFree(uint32_t slot) {
  uint64_t const key = NumberSet::Of(entries_[slot].position(), slot);
  FreedRecord freed = {slot, entries_[slot].position(), entries_[slot].size()};
  for (uint64_t const *next = Order().NotBelow(key + 1); next != nullptr;
       next = Order().NotBelow(*next + 1)) {
    CardEntry const &entry = entries_[NumberSet::Lower(*next)];
    if (!entry.free()) break;
    freed.size += entry.size();
  }
  uint64_t const *const before = Order().Below(key);
  if (before != nullptr && entries_[NumberSet::Lower(*before)].free()) {
    freed.head = NumberSet::Lower(*before);
    freed.position = entries_[freed.head].position();
    freed.size += entries_[freed.head].size();
  }
  return freed;
}

CardEntry RolodexIndex::RestOf(Place const &place, CardEntry const &freeRecord,
                               uint32_t size) const {
  CardEntry rest = freeRecord;
  rest.set_id(0);
  rest.set_position(place.position + size);
  rest.set_size(place.room - size);
  return rest;
}

CardEntry const &RolodexIndex::FreeAt(Place const &place) {
  return entries_[SlotAtPosition(place.position)];
}

uint32_t RolodexIndex::NewSlot(CardEntry const &entry) {
  auto slot = static_cast<uint32_t>(entries_.size());
  if (unused_.empty()) {
    entries_.emplace_back();
  } else {
    slot = unused_.back();
    unused_.pop_back();
  }
  SetEntry(slot, entry);
  return slot;
}

void RolodexIndex::DropSlot(uint32_t slot) {
  // Whoever walks the slots takes it for a free record.
  SetEntry(slot, CardEntry::Cleared());
  unused_.push_back(slot);
}

void RolodexIndex::Free(uint32_t slot, FreedRecord const &freed) {
  bool const found = ids_.Find(entries_[slot].id()) == slot;
  if (found) ids_.Erase(entries_[slot].id());
  NumberSet &order = Order();
  ForgetNames(slot);
  uint64_t const first = NumberSet::Of(freed.position, freed.head);
  while (true) {
    uint64_t const *const next = order.NotBelow(first + 1);
    if (next == nullptr || NumberSet::Upper(*next) >= freed.position + freed.size) break;
    auto const swallowed = NumberSet::Lower(*next);
    CardEntry const &entry = entries_[swallowed];
    if (swallowed != slot) free_.Erase(NumberSet::Of(entry.size(), entry.position()));
    order.Erase(NumberSet::Of(entry.position(), swallowed));
    DropSlot(swallowed);
  }
  CardEntry head = entries_[freed.head];
  if (freed.head != slot) free_.Erase(NumberSet::Of(head.size(), head.position()));
  head.set_id(0);
  head.set_size(freed.size);
  SetEntry(freed.head, head);
  free_.Insert(NumberSet::Of(freed.size, freed.position));
  std::erase(doubles_, slot);
}

void RolodexIndex::Enter(Place const &place, CardEntry const &entry) {
  if (place.room == 0) {
    uint32_t const slot = NewSlot(entry);
    if (order_) order_->Insert(NumberSet::Of(entry.position(), slot));
    ids_.Insert(entry.id(), slot);
    return EnterNames(slot);
  }
  uint32_t const slot = SlotAtPosition(place.position);
  free_.Erase(NumberSet::Of(place.room, place.position));
  if (place.room > entry.size()) {
    CardEntry const rest = RestOf(place, entries_[slot], entry.size());
    NumberSet &order = Order();
    order.Insert(NumberSet::Of(rest.position(), NewSlot(rest)));
    free_.Insert(NumberSet::Of(rest.size(), rest.position()));
  }
  SetEntry(slot, entry);
  ids_.Insert(entry.id(), slot);
  EnterNames(slot);
}

}  // namespace zolt
