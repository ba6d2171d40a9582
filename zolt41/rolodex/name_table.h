#ifndef ZOLT41_ROLODEX_NAME_TABLE_H_
#define ZOLT41_ROLODEX_NAME_TABLE_H_

#include <cstdint>
#include <string_view>

#include "zolt41/rolodex/card_entry.h"
#include "zolt41/rolodex/number_set.h"

namespace zolt {

// Where the cards with a name lie, for one of the three names: names that AZStrEqual takes for
// equal are found together, by position, and sometimes others with them.
class NameTable {
 public:
  explicit NameTable(uint32_t which) : which_(which) {}

  template <typename Entries>
  void Build(Entries const &entries) {
    std::vector<uint64_t> keys;
    for (CardEntry const &entry : entries)
      if (!entry.free()) keys.push_back(KeyOf(entry));
    Take(std::move(keys));
  }
  void Insert(CardEntry const &entry) { keys_.Insert(KeyOf(entry)); }
  void Erase(CardEntry const &entry) { keys_.Erase(KeyOf(entry)); }

  // The position, from `from` on, of the first card that can have the name; kEndMark if there is
  // none.
  uint32_t Find(char const *name, uint32_t from) const;

 private:
  uint64_t KeyOf(CardEntry const &entry) const;
  void Take(std::vector<uint64_t> keys);

  uint32_t which_;
  NumberSet keys_;  // a sum of the name, and the position
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_NAME_TABLE_H_
