#ifndef ZOLT41_FOUNDATION_ZOLTX_LIST_H_
#define ZOLT41_FOUNDATION_ZOLTX_LIST_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// An ordered collection of pointers in one block. It owns the block, and not what the pointers lead
// to.
//
// Indexes count from 0. The block grows when an item comes to a full list: for AddItem by one item
// while the capacity is below 8, for InsertItem by 16 while it is below 128, and from there on by
// an eighth of it. It never shrinks. No locks. A list is not copied or assigned.
class ZOLT_API ZOLTXList {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  // Room for `capacity` items. Without memory for that the list has room for none and grows with
  // its first item.
  explicit ZOLTXList(uint32_t capacity = 256);
  virtual ~ZOLTXList();
  ZOLTXList(ZOLTXList const &) = delete;
  ZOLTXList &operator=(ZOLTXList const &) = delete;

  // Drops all items; the block stays.
  virtual void Empty();

  // How many items there are.
  uint32_t Count() const { return count_; }

  // Add at the end, or before the item at `index`; from the count on, that is the end. Give the
  // index of the item. kNone if there is no memory, with all as it was.
  uint32_t AddItem(void *item) {
    if (count_ == capacity_ && !GrowToAdd()) return kNone;
    items_[count_] = item;
    return count_++;
  }
  uint32_t InsertItem(void *item, uint32_t index);

  // Remove the item at `index`, the first that is this pointer, or the first of all. False if there
  // is none.
  bool RemoveItem(uint32_t index);
  bool RemoveItemByValue(void const *item) { return RemoveItem(IndexOf(item)); }
  bool RemoveFirstItem() { return RemoveItem(0); }

  // The index must be below the count, and the list of which the first item is asked not empty.
  void *GetItem(uint32_t index) const { return items_[index]; }
  void *IndItem(uint32_t index) const { return items_[index]; }
  void SetItem(uint32_t index, void *item) { items_[index] = item; }
  void *GetFirstItem() const { return items_[0]; }

  // The index of the first item that is this pointer, or for which `predicate` is true; kNone if
  // there is none.
  uint32_t IndexOf(void const *item) const;
  uint32_t FindItem(bool (*predicate)(void const *item, void *context), void *context) const;

  // Calls `action` for each item, from the last to the first. It may remove the item it is given.
  void DoForEach(void (*action)(void const *item, void *context), void *context) const;

 private:
  bool GrowToAdd();
  ZOLT_HIDDEN bool Grow(uint32_t step);

  uint32_t capacity_ = 0;
  uint32_t count_ = 0;
  void **items_ = nullptr;
};

#endif  // ZOLT41_FOUNDATION_ZOLTX_LIST_H_
