#include "zolt41/rolodex/name_table.h"

#include <algorithm>
#include <utility>

#include "zolt41/rolodex/id_table.h"

namespace zolt {
namespace {

// The same for all names that AZStrEqual takes for equal: the top bit and the case of letters do
// not count, and what folds to a NUL may end a name.
uint32_t SumOf(std::string_view name) {
  uint64_t const multiplier = ProcessMultiplier();
  uint64_t sum = multiplier;
  for (char const byte : name) {
    uint32_t folded = static_cast<unsigned char>(byte) & 0x7F;
    if (folded == 0) break;
    if (folded >= 'a' && folded <= 'z') folded &= 0x5F;
    sum = (sum ^ folded) * multiplier;
    sum ^= sum >> 32;
  }
  return static_cast<uint32_t>(sum);
}

uint64_t KeyOf(std::string_view name, uint32_t place) {
  return NumberSet::Of(SumOf(name), place);
}

}  // namespace

uint64_t NameTable::KeyOf(CardEntry const &entry, uint32_t place) const {
  return zolt::KeyOf(entry.name(which_), place);
}

void NameTable::Take(std::vector<uint64_t> keys) {
  std::sort(keys.begin(), keys.end());
  keys_.Assign(keys);
}

uint32_t NameTable::Find(char const *name, uint32_t from) const {
  uint64_t const key = zolt::KeyOf(name, from);
  uint64_t const *const found = keys_.NotBelow(key);
  return found == nullptr || NumberSet::Upper(*found) != NumberSet::Upper(key)
             ? kEndMark
             : NumberSet::Lower(*found);
}

}  // namespace zolt
