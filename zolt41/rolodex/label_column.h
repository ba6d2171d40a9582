#ifndef ZOLT41_ROLODEX_LABEL_COLUMN_H_
#define ZOLT41_ROLODEX_LABEL_COLUMN_H_

#include <cstdint>

#include "zolt41/platform/system/large_pages.h"
#include "zolt41/rolodex/card_entry.h"

namespace zolt {

// The first name of a card without regard to the case of ASCII letters: folded, and all NUL behind
// its end, which is at the last byte at the latest.
struct FoldedLabel {
  explicit FoldedLabel(CardEntry const &entry);

  alignas(16) char bytes[kCardNameSize];
};

// The labels and ids of cards close together, so that a walk over all of them reads a third of what
// their entries take. The slots that were there when it was made are covered.
class LabelColumn {
 public:
  void Build(CardEntries const &entries);
  // Another entry for a slot. Takes no memory.
  void Note(uint32_t slot, CardEntry const &entry);

  uint32_t size() const { return static_cast<uint32_t>(ids_.size()); }
  FoldedLabel const *labels(uint32_t slot) const { return &labels_[slot]; }
  // How many of the slots from `slot` on, at most `most`, have the ids that stand at `ids` one
  // behind the other.
  uint32_t RunOf(char const *ids, uint32_t slot, uint32_t most) const;

 private:
  LargeVector<FoldedLabel> labels_;
  LargeVector<uint32_t> ids_;
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_LABEL_COLUMN_H_
