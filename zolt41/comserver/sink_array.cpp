#include "zolt41/comserver/sink_array.h"

#include <algorithm>
#include <new>
#include <utility>

namespace zolt {
namespace {

constexpr uint32_t kFirstBlock = 4;

void FreeBlock(IUnknown **slots, uint32_t capacity) {
  if (capacity > 1) delete[] slots;
}

}  // namespace

SinkArray::~SinkArray() {
  FreeBlock(item_.many, capacity_);
}

bool SinkArray::Grow() {
  uint32_t const capacity = std::max(2 * capacity_, kFirstBlock);
  auto *const slots = new (std::nothrow) IUnknown *[capacity]();
  if (slots == nullptr) return false;
  std::copy_n(Slots(), capacity_, slots);
  FreeBlock(item_.many, capacity_);
  item_.many = slots;
  capacity_ = capacity;
  return true;
}

IUnknown *SinkArray::Add(IUnknown *element) {
  if (capacity_ == 0) {
    item_.single = element;
    capacity_ = 1;
    return element;
  }
  if (capacity_ == 1 && !Grow()) return nullptr;
  IUnknown **free = std::find(Slots(), Slots() + capacity_, nullptr);
  if (free == Slots() + capacity_) {
    uint32_t const first = capacity_;
    if (!Grow()) return nullptr;
    free = Slots() + first;
  }
  return *free = element;
}

bool SinkArray::Remove(IUnknown const *element) {
  if (element == nullptr || capacity_ == 0) return false;
  IUnknown **const found = std::find(Slots(), Slots() + capacity_, element);
  if (found == Slots() + capacity_) return false;
  *found = nullptr;
  if (capacity_ == 1) capacity_ = 0;
  return true;
}

void SinkArray::ReleaseAll() {
  IUnknown *single = item_.single;
  uint32_t const capacity = std::exchange(capacity_, 0);
  IUnknown **const slots = capacity == 1 ? &single : item_.many;
  for (uint32_t i = 0; i < capacity; i++) {
    if (slots[i] != nullptr) slots[i]->Release();
  }
  FreeBlock(slots, capacity);
}

}  // namespace zolt
