#include "zolt41/interchange/property_additions.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/u_convert.h"

namespace zolt {
namespace {

void RemoveAll(PCardStorage *card, char const *name, uint32_t flags) {
  while (card->DeleteProp(card->FindProp(name, flags, 0, 0, nullptr)) != 0) continue;
}

}  // namespace

void PropertyAdditions::Add(std::string_view name, std::string_view value, Entry entry) {
  entry.name = pool_.size();
  pool_.append(name);
  pool_ += '\0';
  entry.value = pool_.size();
  entry.size = static_cast<uint32_t>(value.size());
  pool_.append(value);
  entries_.push_back(entry);
}

void PropertyAdditions::SetText(std::string_view name, uint32_t flags, char const *text) {
  size_t const length = std::strlen(text);
  std::u16string wide(length + 1, u'\0');
  LZ2UZStrCopy(text, wide.data(), 0);
  std::string_view const value(reinterpret_cast<char const *>(wide.data()), 2 * wide.size());
  Entry entry{};
  entry.type = PropertyUnicode;
  entry.flags = flags;
  entry.replaces = true;
  entry.stays = length > 0;
  Add(name, value, entry);
}

void PropertyAdditions::AddBytes(std::string_view name, uint32_t type, uint32_t flags,
                                 std::string_view bytes) {
  Entry entry{};
  entry.type = type;
  entry.flags = flags;
  entry.stays = true;
  Add(name, bytes, entry);
}

std::vector<uint32_t> PropertyAdditions::SortedByName() const {
  std::vector<uint32_t> order(entries_.size());
  std::iota(order.begin(), order.end(), 0U);
  std::ranges::stable_sort(
      order, [this](uint32_t a, uint32_t b) { return AZStrCompare(NameOf(a), NameOf(b)) < 0; });
  return order;
}

// Gives the sets of flags with which something of the name is to be replaced.
std::vector<uint32_t> PropertyAdditions::DropReplaced(std::span<uint32_t const> sameName) {
  std::vector<uint32_t> replaced;
  for (size_t i = sameName.size(); i-- > 0;) {
    Entry &entry = entries_[sameName[i]];
    bool const covered = std::ranges::any_of(
        replaced, [&](uint32_t flags) { return (entry.flags & flags) == flags; });
    if (covered) {
      entry.stays = false;
    } else if (entry.replaces) {
      replaced.push_back(entry.flags);
    }
  }
  return replaced;
}

void PropertyAdditions::PutInto(PCardStorage *card) {
  std::vector<uint32_t> const order = SortedByName();
  for (auto first = order.begin(); first != order.end();) {
    char const *const name = NameOf(*first);
    auto const last = std::find_if(
        first, order.end(), [&](uint32_t entry) { return AZStrEqual(NameOf(entry), name) == 0; });
    for (uint32_t const flags : DropReplaced({first, last})) RemoveAll(card, name, flags);
    first = last;
  }
  for (Entry const &entry : entries_) {
    if (!entry.stays) continue;
    card->AddProp(pool_.data() + entry.name, entry.type, entry.flags, pool_.data() + entry.value,
                  static_cast<int32_t>(entry.size));
  }
  entries_.clear();
  pool_.clear();
}

}  // namespace zolt
