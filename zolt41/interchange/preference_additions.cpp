#include "zolt41/interchange/preference_additions.h"

#include <algorithm>
#include <new>

#include "zolt41/cards/blob_format.h"
#include "zolt41/foundation/az_compare.h"

namespace zolt {
namespace {

constexpr size_t kLongestName = kSlotNameSize - 1;

// Counts marks by their places, in logarithmic time.
class Marks {
 public:
  explicit Marks(size_t places) : sums_(places + 1) {}

  void Add(size_t place) {
    total_++;
    for (size_t i = place + 1; i < sums_.size(); i += i & (~i + 1)) sums_[i]++;
  }
  uint32_t Before(size_t place) const {
    uint32_t count = 0;
    for (size_t i = place; i > 0; i -= i & (~i + 1)) count += sums_[i];
    return count;
  }
  // The place of the mark that has so many before it.
  size_t PlaceOf(uint32_t rank) const {
    size_t place = 0;
    size_t step = 1;
    while (2 * step < sums_.size()) step *= 2;
    for (; step > 0; step /= 2) {
      if (place + step >= sums_.size() || sums_[place + step] > rank) continue;
      place += step;
      rank -= sums_[place];
    }
    return place;
  }
  uint32_t total() const { return total_; }

 private:
  std::vector<uint32_t> sums_;
  uint32_t total_ = 0;
};

// Which of `equal` slots, behind `before` others of `total`, the store's search meets.
uint32_t SlotMet(uint32_t before, uint32_t equal, uint32_t total) {
  int64_t low = -1;
  int64_t high = total;
  for (;;) {
    int64_t const middle = (low + high) / 2;
    if (middle >= before && middle < int64_t{before} + equal) {
      return static_cast<uint32_t>(middle);
    }
    (middle < before ? low : high) = middle;
  }
}

}  // namespace

size_t PreferenceAdditions::Keep(std::string_view text) {
  size_t const place = pool_.size();
  pool_.append(text);
  pool_ += '\0';
  return place;
}

void PreferenceAdditions::Set(uint32_t section, std::string_view name, std::string_view value) {
  size_t const whole = Keep(name);
  size_t const key = name.size() > kLongestName ? Keep(name.substr(0, kLongestName)) : whole;
  entries_.push_back({section, static_cast<uint32_t>(entries_.size()), whole, key, Keep(value)});
}

bool PreferenceAdditions::Precedes(Entry const &a, Entry const &b) const {
  if (a.section != b.section) return a.section > b.section;
  return AZStrCompare(pool_.data() + a.key, pool_.data() + b.key) < 0;
}

// A name that is stored cut makes a slot of its own each time, and any other one unless there is
// such a slot; of several the store's search meets one that depends on all that is there by then.
void PreferenceAdditions::FindSlots() {
  Marks slots(entries_.size());
  std::vector<size_t> firstOfName(entries_.size());
  std::vector<size_t> byMoment(entries_.size());
  for (size_t i = 0; i < entries_.size(); i++) {
    bool const isNew = i == 0 || Precedes(entries_[i - 1], entries_[i]);
    firstOfName[i] = isNew ? i : firstOfName[i - 1];
    byMoment[entries_[i].moment] = i;
  }
  for (size_t const i : byMoment) {
    uint32_t const before = slots.Before(firstOfName[i]);
    uint32_t const equal = slots.Before(i) - before;
    entries_[i].makesSlot = equal == 0 || entries_[i].key != entries_[i].name;
    if (entries_[i].makesSlot) {
      slots.Add(i);
    } else {
      size_t const met = slots.PlaceOf(SlotMet(before, equal, slots.total()));
      entries_[met].value = entries_[i].value;
    }
  }
}

void PreferenceAdditions::PutInto(TYUserPrefs *store) {
  auto const precedes = [this](Entry const &a, Entry const &b) { return Precedes(a, b); };
  // As a text is that was written from a store.
  if (!std::ranges::is_sorted(entries_, precedes)) std::ranges::stable_sort(entries_, precedes);
  FindSlots();
  for (int32_t count = 0; Entry const &entry : entries_) {
    if (!entry.makesSlot) continue;
    store->SetStr(entry.section, pool_.data() + entry.name, pool_.data() + entry.value);
    if (store->Count() != ++count) throw std::bad_alloc();
  }
}

}  // namespace zolt
