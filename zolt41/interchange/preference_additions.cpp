#include "zolt41/interchange/preference_additions.h"

#include <algorithm>

#include "zolt41/cards/blob_format.h"
#include "zolt41/foundation/az_compare.h"

namespace zolt {

size_t PreferenceAdditions::Keep(std::string_view text) {
  size_t const place = pool_.size();
  pool_.append(text);
  pool_ += '\0';
  return place;
}

void PreferenceAdditions::Set(uint32_t section, std::string_view name, std::string_view value) {
  // A name that is stored cut can equal another one then, and which of the two a lookup meets
  // depends on the order in which they came.
  if (name.size() >= kSlotNameSize) orderMatters_ = true;
  entries_.push_back({section, Keep(name), Keep(value)});
}

bool PreferenceAdditions::Precedes(Entry const &a, Entry const &b) const {
  if (a.section != b.section) return a.section > b.section;
  return AZStrCompare(pool_.data() + a.name, pool_.data() + b.name) < 0;
}

void PreferenceAdditions::PutInto(TYUserPrefs *store) {
  if (!orderMatters_) {
    std::ranges::stable_sort(entries_,
                             [this](Entry const &a, Entry const &b) { return Precedes(a, b); });
  }
  for (Entry const &entry : entries_) {
    store->SetStr(entry.section, pool_.data() + entry.name, pool_.data() + entry.value);
  }
}

}  // namespace zolt
