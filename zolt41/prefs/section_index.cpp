#include "zolt41/prefs/section_index.h"

#include <bit>
#include <new>

namespace zolt {

namespace {

// Room for the standard sections and a few more.
constexpr uint32_t kFirstSlots = 64;

}  // namespace

bool SectionIndex::Set(Section *newest) {
  // An id that is there already needs no room, so to set it anew never fails.
  bool const known = slots_ != nullptr && slots_[Place(newest->id)].newest != nullptr;
  if (!known && (slots_ == nullptr || count_ * 2 > mask_) && !Grow()) return false;
  Slot &slot = slots_[Place(newest->id)];
  if (slot.newest == nullptr) ++count_;
  slot = {newest, newest->id};
  return true;
}

void SectionIndex::Erase(int32_t id) {
  if (slots_ == nullptr) return;
  uint32_t hole = Place(id);
  if (slots_[hole].newest == nullptr) return;
  --count_;
  // Those behind move up, unless they stand between their home and the hole already.
  for (uint32_t place = Next(hole); slots_[place].newest != nullptr; place = Next(place)) {
    uint32_t const fromHome = (place - Home(slots_[place].id)) & mask_;
    if (fromHome < ((place - hole) & mask_)) continue;
    slots_[hole] = slots_[place];
    hole = place;
  }
  slots_[hole] = {};
}

void SectionIndex::Clear() {
  delete[] slots_;
  *this = {};
}

bool SectionIndex::Grow() {
  SectionIndex larger;
  uint32_t const slots = slots_ == nullptr ? kFirstSlots : (mask_ + 1) * 2;
  larger.slots_ = new (std::nothrow) Slot[slots]();
  if (larger.slots_ == nullptr) return false;
  larger.mask_ = slots - 1;
  larger.shift_ = 32 - static_cast<uint32_t>(std::countr_zero(slots));
  larger.count_ = count_;
  for (uint32_t i = 0; slots_ != nullptr && i <= mask_; ++i)
    if (slots_[i].newest != nullptr) larger.slots_[larger.Place(slots_[i].id)] = slots_[i];
  delete[] slots_;
  *this = larger;
  return true;
}

}  // namespace zolt
