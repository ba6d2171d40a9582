#ifndef ZOLT41_INTERCHANGE_PROPERTY_ADDITIONS_H_
#define ZOLT41_INTERCHANGE_PROPERTY_ADDITIONS_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zolt41/cards/property_storage.h"
#include "zolt41/interchange/flag_sets.h"

namespace zolt {

// What a text adds to a card, kept apart until the end: one by one, each would cost a walk over the
// card, and each that replaces another a move of what lies behind it.
class PropertyAdditions {
 public:
  // As SetStrProp(name, flags, 0, text).
  void SetText(std::string_view name, uint32_t flags, char const *text);
  // As AddProp.
  void AddBytes(std::string_view name, uint32_t type, uint32_t flags, std::string_view bytes);
  // The text at `index` is one of the first two lines of a card that is empty: PutInto leaves it
  // out where it says that there is none, which is `absent`, or no more than the card says without
  // it, of which such a line has what stands before the first byte that, signed, is not above
  // `last`.
  void MarkHeadLine(uint32_t index, std::string_view absent, int last);
  // Does to the card what was asked for, as if it had been done then. Throws std::bad_alloc where
  // it cannot take all; then it has a part of it, and what is to be replaced may be gone.
  void PutInto(PCardStorage *card);

 private:
  struct Entry {
    size_t name;  // where it stands in the pool, with a NUL
    size_t value;
    uint32_t size;  // of the value
    uint32_t type;
    uint32_t flags;
    bool replaces;  // takes away what is there of its name and with its flags
    bool stays;
  };

  struct HeadLine {
    uint32_t entry;
    std::string absent;
    int last;
  };

  char const *NameOf(uint32_t entry) const { return pool_.data() + entries_[entry].name; }
  std::string TextOf(Entry const &entry) const;
  void Add(std::string_view name, std::string_view value, Entry entry);
  // Equal names one behind the other, each in the order in which they were added.
  std::vector<uint32_t> GroupedByName() const;
  FlagSets const &DropReplaced(std::span<uint32_t const> sameName);
  void DropRepeated(HeadLine const &line);

  std::vector<Entry> entries_;
  std::vector<HeadLine> headLines_;
  std::string pool_;
  FlagSets replacing_;  // of the name that is looked at
};

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_PROPERTY_ADDITIONS_H_
