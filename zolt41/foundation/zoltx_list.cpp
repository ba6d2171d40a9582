#include "zolt41/foundation/zoltx_list.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

// Below the threshold the step is fixed, from there on an eighth of the capacity.
struct GrowthRule {
  uint32_t threshold;
  uint32_t step;
};

constexpr GrowthRule kToAdd{8, 1};
constexpr GrowthRule kToInsert{128, 16};

uint32_t StepBy(GrowthRule rule, uint32_t capacity) {
  return capacity < rule.threshold ? rule.step : capacity / 8;
}

}  // namespace

ZOLTXList::ZOLTXList(uint32_t capacity) {
  if (capacity > 0) Grow(capacity);
}

ZOLTXList::~ZOLTXList() {
  ZOLTXList::Empty();
  std::free(items_);
}

void ZOLTXList::Empty() {
  count_ = 0;
}

// One index stands for none, so a list has at most that many items.
bool ZOLTXList::Grow(uint32_t step) {
  uint32_t const capacity = capacity_ + std::min(step, kNone - capacity_);
  if (capacity == capacity_) return false;
  void *const items = std::realloc(items_, size_t{capacity} * sizeof *items_);
  if (items == nullptr) return false;
  items_ = static_cast<void **>(items);
  capacity_ = capacity;
  return true;
}

bool ZOLTXList::GrowToAdd() {
  return Grow(StepBy(kToAdd, capacity_));
}

uint32_t ZOLTXList::InsertItem(void *item, uint32_t index) {
  if (count_ == capacity_ && !Grow(StepBy(kToInsert, capacity_))) return kNone;
  uint32_t const place = std::min(index, count_);
  void **const at = items_ + place;
  std::memmove(at + 1, at, (count_ - place) * sizeof *at);
  *at = item;
  count_++;
  return place;
}

bool ZOLTXList::RemoveItem(uint32_t index) {
  if (index >= count_) return false;
  count_--;
  void **const at = items_ + index;
  std::memmove(at, at + 1, (count_ - index) * sizeof *at);
  return true;
}

uint32_t ZOLTXList::IndexOf(void const *item) const {
  void **const end = items_ + count_;
  void **const found = std::find(items_, end, item);
  return found == end ? kNone : static_cast<uint32_t>(found - items_);
}

uint32_t ZOLTXList::FindItem(bool (*predicate)(void const *item, void *context),
                             void *context) const {
  for (uint32_t i = 0; i < count_; i++) {
    if (predicate(items_[i], context)) return i;
  }
  return kNone;
}

void ZOLTXList::DoForEach(void (*action)(void const *item, void *context), void *context) const {
  for (uint32_t i = count_; i-- > 0;) action(items_[i], context);
}
