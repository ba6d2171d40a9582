#ifndef ZOLT41_ROLODEX_NAME_TABLE_H_
#define ZOLT41_ROLODEX_NAME_TABLE_H_

#include <cstdint>
#include <string_view>
#include <vector>

#include "zolt41/rolodex/card_entry.h"
#include "zolt41/rolodex/number_set.h"

namespace zolt {

// The cards with a name, for one of the three names: names that AZStrEqual takes for equal are
// found together, by a number of each card that says its place among them, and sometimes others
// with them.
class NameTable {
 public:
  explicit NameTable(uint32_t which) : which_(which) {}

  // `placeOf` gives a card's number by its entry's.
  template <typename PlaceOf>
  void Build(CardEntries const &entries, PlaceOf const &placeOf) {
    std::vector<uint64_t> keys;
    for (uint32_t slot = 0; slot < entries.size(); slot++)
      if (!entries[slot].free()) keys.push_back(KeyOf(entries[slot], placeOf(slot)));
    Take(std::move(keys));
  }
  void Insert(CardEntry const &entry, uint32_t place) { keys_.Insert(KeyOf(entry, place)); }
  void Erase(CardEntry const &entry, uint32_t place) { keys_.Erase(KeyOf(entry, place)); }

  // The number, from `from` on, of the first card that can have the name; kEndMark if there is
  // none.
  uint32_t Find(char const *name, uint32_t from) const;

 private:
  uint64_t KeyOf(CardEntry const &entry, uint32_t place) const;
  void Take(std::vector<uint64_t> keys);

  uint32_t which_;
  NumberSet keys_;  // a sum of the name, and the card's number
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_NAME_TABLE_H_
