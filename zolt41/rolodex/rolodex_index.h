#ifndef ZOLT41_ROLODEX_ROLODEX_INDEX_H_
#define ZOLT41_ROLODEX_ROLODEX_INDEX_H_

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "zolt41/rolodex/card_entry.h"
#include "zolt41/rolodex/category_marks.h"
#include "zolt41/rolodex/id_table.h"
#include "zolt41/rolodex/label_column.h"
#include "zolt41/rolodex/name_table.h"
#include "zolt41/rolodex/number_set.h"

namespace zolt {

// Where a new record goes: into a free record of `room` bytes, or behind the last one, with `room`
// 0 and no position.
struct Place {
  uint32_t position = 0;
  uint32_t room = 0;
};

// The free record that a card becomes: it begins at `position`, with the head that the slot `head`
// has, and swallows what lies in it.
struct FreedRecord {
  uint32_t head;
  uint32_t position;
  uint32_t size;
};

// The index of an open database in memory: the entries, as they are saved, and beside them tables
// that find a card by id or name, a place by size, and neighbours by position, in logarithmic time.
// It knows no file. An entry has a slot, which it keeps, and a number, its rank in the file.
class RolodexIndex {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  // Takes entries in file order.
  RolodexIndex(CardEntries entries, uint32_t lastId);

  // Whether the records fill the card area up to `end`, one behind the other, and no id is there
  // twice or above the last one.
  bool Fits(uint32_t end) const;
  // The slots of cards whose id an earlier one has.
  std::vector<uint32_t> const &doubles() const { return doubles_; }
  // The id leads to this one of them from now on, and the other is the double.
  void Prefer(uint32_t slot);
  // For an index that does not fit and is kept for a reader: nothing is searched for by position.
  void set_unordered() { unordered_ = true; }

  uint32_t lastId() const { return lastId_; }
  void set_lastId(uint32_t id) { lastId_ = id; }
  // Of entries, the free ones too.
  uint32_t count() const { return static_cast<uint32_t>(entries_.size() - unused_.size()); }

  // All slots are below this.
  uint32_t slots() const { return static_cast<uint32_t>(entries_.size()); }

  // The slot of a card, or kNone.
  uint32_t Find(uint32_t id) const;
  // The same, and quicker where the card comes behind that of the slot `near`.
  uint32_t FindNear(uint32_t id, uint32_t near) const {
    uint32_t const next = near + 1;
    bool const there = next < entries_.size() && entries_[next].id() == id;
    return there && doubles_.empty() ? next : Find(id);
  }
  CardEntry const &at(uint32_t slot) const { return entries_[slot]; }
  uint32_t SlotAt(uint32_t number) const;
  uint32_t NumberOf(uint32_t slot) const;

  // The first card from the entry of that number on whose names those that are not null are equal
  // to; kNone if there is none.
  uint32_t FindNames(std::array<char const *, kCardNames> const &names, uint32_t number);

  // To be called before a walk over the labels: from the second one on it reads less for each card.
  void PrepareLabels();
  // The labels of the slots from `slot` on, as long as the slots have the ids that stand at `ids`
  // one behind the other, and at most `most`; none where there is no more than the entry itself. A
  // free record may be among them.
  std::span<FoldedLabel const> Labels(char const *ids, uint32_t slot, uint32_t most) const {
    if (!doubles_.empty()) return {};
    uint32_t const run = labels_.RunOf(ids, slot, most);
    return {run == 0 ? nullptr : labels_.labels(slot), run};
  }

  // Calls with each slot, in file order, the free records' too.
  template <typename Visit>
  void ForEach(Visit const &visit) const {
    if (order_) {
      order_->ForEach([&](uint64_t key) { visit(static_cast<uint32_t>(key)); });
    } else {
      for (uint32_t slot = 0; slot < entries_.size(); slot++) visit(slot);
    }
  }

  // The free record that fits exactly, else the tightest that leaves room for another record, else
  // the end; among equals the first.
  Place FindPlace(uint32_t size) const;
  // The same as if a card had been freed.
  Place FindPlaceWith(FreedRecord const &freed, uint32_t size);
  // What a card would become.
  FreedRecord PlanFree(uint32_t slot);
  // The head of what is left of a free record behind a new one of `size` bytes.
  CardEntry RestOf(Place const &place, CardEntry const &freeRecord, uint32_t size) const;
  // The entry of the free record at a place.
  CardEntry const &FreeAt(Place const &place);

  void Free(uint32_t slot, FreedRecord const &freed);
  // Enters a new card, whose position is set, at a place that was found for it.
  void Enter(Place const &place, CardEntry const &entry);
  // Another head for the same record.
  void Replace(uint32_t slot, CardEntry const &entry);
  void Mark(uint32_t slot, uint32_t category) {
    entries_[slot].Mark(category, true);
    marks_.Note(slot, category);
  }
  // Takes a category from all cards.
  void ClearMarks(uint32_t category);

 private:
  static constexpr uint32_t kTrust = 16;

  NumberSet &Order();
  uint32_t SlotAtPosition(uint32_t position) const;
  uint32_t FindByTables(std::array<char const *, kCardNames> const &names, uint32_t number);
  bool HasNames(uint32_t slot, std::array<char const *, kCardNames> const &names) const;
  uint32_t NewSlot(CardEntry const &entry);
  void DropSlot(uint32_t slot);
  void SetEntry(uint32_t slot, CardEntry const &entry);
  // What tells the order of cards in the file: the slots as long as they do.
  uint32_t SequenceOf(uint32_t slot) const { return order_ ? entries_[slot].position() : slot; }
  void EnterNames(uint32_t slot);
  void ForgetNames(uint32_t slot);

  CardEntries entries_;           // by slot; in file order until `order_` is there
  std::vector<uint32_t> unused_;  // slots of entries that are gone
  uint32_t lastId_;
  std::vector<uint32_t> doubles_;
  // How far the slot of the last card that was found lay from its id; most lie alike, so that the
  // table is often not needed. Counts down while it does not help.
  mutable uint32_t distance_ = 0xFFFFFFFF;
  mutable uint32_t trust_ = kTrust;
  IdTable ids_;                     // slots
  NumberSet free_;                  // size and position
  std::optional<NumberSet> order_;  // position and slot; made at the first change of the order
  // Made when names are looked for, of the cards' places.
  std::array<std::optional<NameTable>, kCardNames> names_;
  uint32_t searches_ = 0;
  LabelColumn labels_;
  uint32_t labelWalks_ = 0;
  CategoryMarks marks_;
  bool unordered_ = false;
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_ROLODEX_INDEX_H_
