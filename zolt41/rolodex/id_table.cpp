#include "zolt41/rolodex/id_table.h"

#include <bit>
#include <random>

namespace zolt {
namespace {

constexpr size_t kSmallest = 64;

uint32_t IdOf(uint64_t place) {
  return static_cast<uint32_t>(place >> 32);
}

}  // namespace

uint64_t ProcessMultiplier() {
  static uint64_t const multiplier = [] {
    std::random_device source;
    return uint64_t{source()} << 32 | source() | 1;
  }();
  return multiplier;
}

size_t IdTable::HomeOf(uint32_t id) const {
  static uint64_t const multiplier = ProcessMultiplier();
  return static_cast<size_t>(id * multiplier >> shift_);
}

// Where the id is, or the empty place where it would be.
size_t IdTable::PlaceOf(uint32_t id) const {
  size_t place = HomeOf(id);
  while (places_[place] != 0 && IdOf(places_[place]) != id) place = (place + 1) % places_.size();
  return place;
}

void IdTable::Grow(size_t size) {
  LargeVector<uint64_t> old(size);
  old.swap(places_);
  shift_ = 64 - std::countr_zero(size);
  for (uint64_t const place : old)
    if (place != 0) places_[PlaceOf(IdOf(place))] = place;
}

void IdTable::Reserve(size_t count) {
  size_t const wanted = std::bit_ceil(count * 2 + kSmallest);
  if (wanted > places_.size()) Grow(wanted);
}

bool IdTable::Insert(uint32_t id, uint32_t value) {
  if ((used_ + 1) * 2 > places_.size()) Reserve(used_ + 1);
  uint64_t &place = places_[PlaceOf(id)];
  if (place != 0) return false;
  place = uint64_t{id} << 32 | value;
  used_++;
  return true;
}

void IdTable::Erase(uint32_t id) {
  size_t const size = places_.size();
  size_t hole = PlaceOf(id);
  used_--;
  // What comes behind moves up where the hole lies between its home and its place.
  for (size_t next = (hole + 1) % size; places_[next] != 0; next = (next + 1) % size) {
    size_t const home = HomeOf(IdOf(places_[next]));
    if ((next - home) % size < (next - hole) % size) continue;
    places_[hole] = places_[next];
    hole = next;
  }
  places_[hole] = 0;
}

uint32_t IdTable::Find(uint32_t id) const {
  if (places_.empty()) return kNone;
  uint64_t const place = places_[PlaceOf(id)];
  return place == 0 ? kNone : static_cast<uint32_t>(place);
}

}  // namespace zolt
