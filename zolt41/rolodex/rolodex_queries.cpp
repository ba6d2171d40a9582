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

// Clears a category of all cards on the way through a list, which mostly has them in their order:
// so they are looked at once.
class Unmarking {
 public:
  Unmarking(RolodexIndex *index, uint32_t category) : index_(index), category_(category) {}

  void UpTo(uint32_t slot) {
    for (; done_ < slot; done_++)
      if (index_->at(done_).Has(category_) && !index_->at(done_).free())
        index_->Mark(done_, category_, false);
  }

 private:
  RolodexIndex *index_;
  uint32_t category_;
  uint32_t done_ = 0;
};

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

bool Rolodex::Matches(uint32_t slot, PCardStorage *card, char const *property, CSOper oper,
                      char const *value) {
  uint32_t const id = state_->index->at(slot).id();
  return LoadCard(id, card) != 0 && card->Selected(property, oper, value) != 0;
}

uint32_t Rolodex::Select(char const *cards, char const *property, CSOper oper, char const *value,
                         uint32_t category) {
  ClearFailure();
  if (category >= kCategoryCount || !state_ || !LoadIndex()) return 0;
  return WithMemory(uint32_t{0}, [&] {
    RolodexIndex &index = *state_->index;
    char const *const text = value == nullptr ? "" : value;
    bool const isLabel = AZStrEqual(property, kLabelProperty) != 0;
    LabelCondition const condition(oper, text);
    PCardStorage card;
    Unmarking unmarking(&index, category);
    uint32_t count = 0;
    uint32_t slot = RolodexIndex::kNone;
    uint32_t const size = GetMemSize(cards) / kListItem;
    for (uint32_t i = 0; i < size; i++) {
      uint32_t id = 0;
      std::memcpy(&id, cards + size_t{i} * kListItem, kListItem);
      uint32_t const found = id == 0 ? RolodexIndex::kNone : index.FindNear(id, slot);
      if (found == RolodexIndex::kNone) continue;
      slot = found;
      bool const matches =
          isLabel ? condition.Matches(index.at(slot)) : Matches(slot, &card, property, oper, text);
      unmarking.UpTo(slot + 1);
      if (!matches) continue;
      index.Mark(slot, category, true);
      count++;
    }
    unmarking.UpTo(index.slots());
    return count;
  });
}
