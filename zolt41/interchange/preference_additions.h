#ifndef ZOLT41_INTERCHANGE_PREFERENCE_ADDITIONS_H_
#define ZOLT41_INTERCHANGE_PREFERENCE_ADDITIONS_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "zolt41/cards/card_prefs.h"

namespace zolt {

// What a text adds to a store, kept apart until the end, when it can go into it in the store's own
// order: so no value is moved for another.
class PreferenceAdditions {
 public:
  // As SetStr.
  void Set(uint32_t section, std::string_view name, std::string_view value);
  // Does to the store, which is empty, what was asked for, as if it had been done then. Throws
  // std::bad_alloc where it cannot take all.
  void PutInto(TYUserPrefs *store);

 private:
  struct Entry {
    uint32_t section;
    uint32_t moment;  // when it was set, from 0
    size_t name;      // where they stand in the pool, each with a NUL
    size_t key;       // the name as it is stored
    size_t value;
    bool makesSlot = false;
  };

  size_t Keep(std::string_view text);
  bool Precedes(Entry const &a, Entry const &b) const;
  void FindSlots();

  std::vector<Entry> entries_;
  std::string pool_;
};

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_PREFERENCE_ADDITIONS_H_
