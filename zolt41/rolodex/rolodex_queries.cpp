#include <cstring>

#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/endian.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/label_condition.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_state.h"
#include "zolt41/rolodex/with_memory.h"

using namespace zolt;

namespace {

constexpr char kLabelProperty[] = "_Label";
constexpr uint32_t kListItem = 4;

uint32_t IdAt(char const *cards, uint32_t place) {
  uint32_t id = 0;
  std::memcpy(&id, cards + size_t{place} * kListItem, kListItem);
  return id;
}

// A list mostly has the cards in their order, so most of them come in long runs.
uint32_t MarkByLabel(RolodexIndex *index, char const *cards, LabelCondition const &condition,
                     uint32_t category) {
  uint32_t const size = GetMemSize(cards) / kListItem;
  uint32_t count = 0;
  uint32_t slot = RolodexIndex::kNone;
  for (uint32_t i = 0; i < size;) {
    uint32_t const id = IdAt(cards, i);
    uint32_t const found = id == 0 ? RolodexIndex::kNone : index->FindNear(id, slot);
    if (found == RolodexIndex::kNone) {
      i++;
      continue;
    }
    FoldedLabel const single(index->at(found));
    std::span<FoldedLabel const> labels =
        index->Labels(cards + size_t{i} * kListItem, found, size - i);
    if (labels.empty()) labels = {&single, 1};
    auto const run = static_cast<uint32_t>(labels.size());
    for (uint32_t at = 0; at < run; at++) {
      at += condition.FirstMatch(&labels[at], run - at);
      if (at == run || index->at(found + at).free()) continue;
      index->Mark(found + at, category);
      count++;
    }
    slot = found + run - 1;
    i += run;
  }
  return count;
}

}  // namespace

uint32_t Rolodex::SelectByCategory(unsigned char const *required, unsigned char const *keep,
                                   unsigned char const *exclude, char **cards) {
  ClearFailure();
  if (!state_ || !LoadIndex()) return 0;
  RolodexIndex const &index = *state_->index;
  CategorySet const wanted = CategoryBits(required);
  CategorySet const kept = CategoryBits(keep);
  CategorySet const excluded = CategoryBits(exclude);
  if (SetMemSize(cards, index.count() * kListItem) != 0) return 0;
  uint32_t count = 0;
  index.ForEach([&](uint32_t slot) {
    CardEntry const &entry = index.at(slot);
    if (entry.free()) return;
    CategorySet const set = entry.categories();
    if (!HasAll(set, wanted) || (HasAny(set, excluded) && !HasAny(set, kept))) return;
    uint32_t const id = entry.id();
    std::memcpy(*cards + size_t{count++} * kListItem, &id, kListItem);
  });
  SetMemSize(cards, count * kListItem);
  return count;
}

uint32_t Rolodex::Select(char const *cards, char const *property, CSOper oper, char const *value,
                         uint32_t category) {
  ClearFailure();
  if (category >= kCategoryCount || !state_ || !LoadIndex()) return 0;
  return WithMemory(uint32_t{0}, [&] {
    RolodexIndex &index = *state_->index;
    char const *const text = value == nullptr ? "" : value;
    bool const isLabel = AZStrEqual(property, kLabelProperty) != 0;
    // What takes memory comes before the first change.
    if (isLabel) index.PrepareLabels();
    index.ClearMarks(category);
    if (isLabel) {
      return MarkByLabel(&index, cards, LabelCondition(oper, text), category);
    }
    PCardStorage card;
    uint32_t count = 0;
    uint32_t const size = GetMemSize(cards) / kListItem;
    for (uint32_t i = 0; i < size; i++) {
      uint32_t const id = IdAt(cards, i);
      uint32_t const slot = id == 0 ? RolodexIndex::kNone : index.Find(id);
      if (slot == RolodexIndex::kNone || LoadCard(id, &card) == 0 ||
          card.Selected(property, oper, text) == 0) {
        continue;
      }
      index.Mark(slot, category);
      count++;
    }
    return count;
  });
}
