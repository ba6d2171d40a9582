#ifndef ZOLT41_PREFS_SECTION_INDEX_H_
#define ZOLT41_PREFS_SECTION_INDEX_H_

#include <cstdint>

#include "zolt41/prefs/section.h"

namespace zolt {

// The newest section of each id, found in one step. Lookups may run at once, changes may not.
class SectionIndex {
 public:
  // Null if there is none.
  Section *Find(int32_t id) const {
    if (slots_ == nullptr) return nullptr;
    Slot const &slot = slots_[Place(id)];
    return slot.newest;
  }

  // Makes `newest`, which is not null, the section of its id. False, changing nothing, if there is
  // no memory.
  bool Set(Section *newest);

  void Erase(int32_t id);

  // Forgets all and gives the memory back.
  void Clear();

 private:
  struct Slot {
    Section *newest;  // null: free
    int32_t id;
  };

  uint32_t Home(int32_t id) const { return (static_cast<uint32_t>(id) * 0x9E3779B1U) >> shift_; }
  uint32_t Next(uint32_t place) const { return (place + 1) & mask_; }

  // The slot of `id`, or the free one where it belongs.
  uint32_t Place(int32_t id) const {
    uint32_t place = Home(id);
    while (slots_[place].newest != nullptr && slots_[place].id != id) place = Next(place);
    return place;
  }
  bool Grow();

  Slot *slots_ = nullptr;  // a power of two of them, at most half of them in use
  uint32_t mask_ = 0;
  uint32_t shift_ = 0;
  uint32_t count_ = 0;
};

}  // namespace zolt

#endif  // ZOLT41_PREFS_SECTION_INDEX_H_
