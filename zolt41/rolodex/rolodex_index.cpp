#include "zolt41/rolodex/rolodex_index.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "zolt41/foundation/az_compare.h"

namespace zolt {
namespace {

// So many searches walk the entries before a table of names is worth its making.
constexpr uint32_t kWalks = 2;

}  // namespace

RolodexIndex::RolodexIndex(CardEntries entries, uint32_t lastId)
    : entries_(std::move(entries)), lastId_(lastId) {
  ids_.Reserve(entries_.size());
  std::vector<uint64_t> places;
  for (uint32_t slot = 0; slot < entries_.size(); slot++) {
    CardEntry const &entry = entries_[slot];
    if (entry.free()) {
      places.push_back(NumberSet::Of(entry.size(), entry.position()));
    } else if (!ids_.Insert(entry.id(), slot)) {
      doubles_.push_back(slot);
    }
  }
  std::sort(places.begin(), places.end());
  free_.Assign(places);
}

bool RolodexIndex::Fits(uint32_t end) const {
  uint64_t position = kCardArea;
  for (CardEntry const &entry : entries_) {
    if (entry.position() != position || entry.size() < kEntrySize || entry.end() > end)
      return false;
    if (entry.id() > lastId_) return false;
    position = entry.end();
  }
  return position == end && doubles_.empty();
}

NumberSet &RolodexIndex::Order() {
  if (order_) return *order_;
  std::vector<uint64_t> keys;
  keys.reserve(entries_.size());
  for (uint32_t slot = 0; slot < entries_.size(); slot++)
    keys.push_back(NumberSet::Of(entries_[slot].position(), slot));
  NumberSet order;
  order.Assign(keys);
  // From here on the places of cards are others.
  names_ = {};
  return order_.emplace(std::move(order));
}

uint32_t RolodexIndex::Find(uint32_t id) const {
  if (trust_ > 0 && doubles_.empty()) {
    uint32_t const slot = id + distance_;
    if (slot < entries_.size() && entries_[slot].id() == id && id != 0) {
      trust_ = kTrust;
      return slot;
    }
    trust_--;
  }
  uint32_t const found = ids_.Find(id);
  if (found != kNone) distance_ = found - id;
  return found;
}

uint32_t RolodexIndex::SlotAt(uint32_t number) const {
  return order_ ? NumberSet::Lower(order_->At(number)) : number;
}

uint32_t RolodexIndex::NumberOf(uint32_t slot) const {
  if (!order_) return slot;
  return static_cast<uint32_t>(order_->RankOf(NumberSet::Of(entries_[slot].position(), slot)));
}

uint32_t RolodexIndex::SlotAtPosition(uint32_t position) const {
  if (order_) return NumberSet::Lower(*order_->NotBelow(NumberSet::Of(position, 0)));
  auto const before = [](CardEntry const &entry, uint32_t at) { return entry.position() < at; };
  auto const found = std::lower_bound(entries_.begin(), entries_.end(), position, before);
  return static_cast<uint32_t>(found - entries_.begin());
}

bool RolodexIndex::HasNames(uint32_t slot,
                            std::array<char const *, kCardNames> const &names) const {
  CardEntry const &entry = entries_[slot];
  if (entry.free()) return false;
  for (uint32_t i = 0; i < kCardNames; i++) {
    if (names[i] == nullptr) continue;
    char text[kCardNameSize];
    text[entry.name(i).copy(text, kCardNameSize - 1)] = '\0';
    if (AZStrEqual(names[i], text) == 0) return false;
  }
  return true;
}

// From place to place that one of the names has next, so that the rarest of them says how
// many are looked at.
uint32_t RolodexIndex::FindByTables(std::array<char const *, kCardNames> const &names,
                                    uint32_t number) {
  std::array<uint32_t, kCardNames> given{};
  uint32_t count = 0;
  for (uint32_t which = 0; which < kCardNames; which++) {
    if (names[which] == nullptr) continue;
    given[count++] = which;
    if (names_[which]) continue;
    NameTable table(which);
    table.Build(entries_, [this](uint32_t slot) { return SequenceOf(slot); });
    names_[which] = std::move(table);
  }
  uint32_t place = SequenceOf(SlotAt(number));
  for (uint32_t turn = 0, agreed = 0;; turn = turn + 1 < count ? turn + 1 : 0) {
    uint32_t const which = given[turn];
    uint32_t const found = names_[which]->Find(names[which], place);
    if (found == kEndMark) return kNone;
    agreed = found == place ? agreed + 1 : 1;
    place = found;
    if (agreed < count) continue;
    uint32_t const slot = order_ ? SlotAtPosition(place) : place;
    place++;
    if (HasNames(slot, names)) return slot;
    agreed = 0;
  }
}

uint32_t RolodexIndex::FindNames(std::array<char const *, kCardNames> const &names,
                                 uint32_t number) {
  if (number >= count()) return kNone;
  bool const any = std::ranges::any_of(names, [](char const *name) { return name != nullptr; });
  if (any && !unordered_ && searches_++ >= kWalks) return FindByTables(names, number);
  for (; number < count(); number++) {
    uint32_t const slot = SlotAt(number);
    if (HasNames(slot, names)) return slot;
  }
  return kNone;
}

void RolodexIndex::Prefer(uint32_t slot) {
  uint32_t const id = entries_[slot].id();
  *std::ranges::find(doubles_, slot) = ids_.Find(id);
  ids_.Erase(id);
  ids_.Insert(id, slot);
}

void RolodexIndex::EnterNames(uint32_t slot) {
  for (auto &table : names_)
    if (table) table->Insert(entries_[slot], SequenceOf(slot));
}

void RolodexIndex::ForgetNames(uint32_t slot) {
  for (auto &table : names_)
    if (table) table->Erase(entries_[slot], SequenceOf(slot));
}

void RolodexIndex::Replace(uint32_t slot, CardEntry const &entry) {
  ForgetNames(slot);
  SetEntry(slot, entry);
  EnterNames(slot);
}

// Takes no memory for a slot that is there.
void RolodexIndex::SetEntry(uint32_t slot, CardEntry const &entry) {
  entries_[slot] = entry;
  labels_.Note(slot, entry);
  CategorySet const set = entry.categories();
  for (uint32_t word = 0; word < set.size(); word++)
    for (uint32_t left = set[word]; left != 0; left &= left - 1)
      marks_.Note(slot, 32 * word + static_cast<uint32_t>(std::countr_zero(left)));
}

void RolodexIndex::PrepareLabels() {
  // Most slots are covered as long as the number of cards did not grow by much.
  if (labelWalks_++ > 0 && labels_.size() < entries_.size() - entries_.size() / 4)
    labels_.Build(entries_);
}

void RolodexIndex::ClearMarks(uint32_t category) {
  marks_.Clear(category, slots(), [&](uint32_t slot) {
    if (!entries_[slot].free()) entries_[slot].Mark(category, false);
  });
}

}  // namespace zolt
