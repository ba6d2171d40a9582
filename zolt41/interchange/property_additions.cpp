#include "zolt41/interchange/property_additions.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/u_convert.h"
#include "zolt41/interchange/card_text_format.h"
#include "zolt41/interchange/property_view.h"

namespace zolt {
namespace {

// What a list can hold at all.
constexpr size_t kLargestValue = 0x7FFFFFFF;

// Those of the name that have all the flags of one of the sets.
void RemoveAll(PCardStorage *card, char const *name, FlagSets const &sets) {
  if (sets.empty()) return;
  uint32_t flags = 0;
  uint32_t i = card->FindProp(name, 0, 0, 0, nullptr);
  while (card->GetPropA(i, nullptr, nullptr, &flags, nullptr) != nullptr) {
    bool const gone = sets.LowestWithin(flags) != FlagSets::kNone && card->DeleteProp(i) != 0;
    i = card->FindProp(name, 0, 0, gone ? i : i + 1, nullptr);
  }
}

// The same for names that are equal.
uint64_t HashOf(char const *name) {
  uint64_t hash = 0xCBF29CE484222325;
  for (; *name != '\0'; name++) {
    // Letters of either case and a few signs come to the same.
    hash = (hash ^ (static_cast<unsigned char>(*name) & 0x5F)) * 0x100000001B3;
  }
  return hash;
}

// What is read of a text that was written as one of the first two lines.
std::string_view InHeadLine(std::string_view text, int last) {
  text = text.substr(0, kHeadValueSize);
  auto const end = std::ranges::find_if(
      text, [last](char byte) { return static_cast<signed char>(byte) <= last; });
  return text.substr(0, static_cast<size_t>(end - text.begin()));
}

}  // namespace

void PropertyAdditions::Add(std::string_view name, std::string_view value, Entry entry) {
  if (value.size() > kLargestValue) throw std::bad_alloc();
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
  if (length >= kLargestValue / 2) throw std::bad_alloc();
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

std::string PropertyAdditions::TextOf(Entry const &entry) const {
  if (!IsString(entry.type)) return "";
  return LocalText({"", entry.type, entry.flags, {pool_.data() + entry.value, entry.size}});
}

void PropertyAdditions::MarkHeadLine(uint32_t index, std::string_view absent, int last) {
  headLines_.push_back({index, std::string(absent), last});
}

// Without the line the card answers with the first of the name that stays.
void PropertyAdditions::DropRepeated(HeadLine const &line) {
  std::string const text = TextOf(entries_[line.entry]);
  auto const other =
      std::find_if(entries_.begin() + line.entry + 1, entries_.end(), [&](Entry const &entry) {
        return entry.stays && AZStrEqual(pool_.data() + entry.name, NameOf(line.entry)) != 0;
      });
  if (text == line.absent ||
      (other != entries_.end() && InHeadLine(TextOf(*other), line.last) == text)) {
    entries_[line.entry].stays = false;
  }
}

std::vector<uint32_t> PropertyAdditions::GroupedByName() const {
  struct Hashed {
    uint64_t hash;
    uint32_t entry;
  };
  std::vector<Hashed> hashed;
  hashed.reserve(entries_.size());
  for (uint32_t i = 0; i < entries_.size(); i++) hashed.push_back({HashOf(NameOf(i)), i});
  std::ranges::sort(hashed, [this](Hashed const &a, Hashed const &b) {
    if (a.hash != b.hash) return a.hash < b.hash;
    int32_t const names = AZStrCompare(NameOf(a.entry), NameOf(b.entry));
    return names != 0 ? names < 0 : a.entry < b.entry;
  });
  std::vector<uint32_t> order(hashed.size());
  std::ranges::transform(hashed, order.begin(), &Hashed::entry);
  return order;
}

// Gives the sets of flags with which something of the name is to be replaced.
FlagSets const &PropertyAdditions::DropReplaced(std::span<uint32_t const> sameName) {
  replacing_.Clear();
  for (size_t i = sameName.size(); i-- > 0;) {
    Entry &entry = entries_[sameName[i]];
    if (replacing_.LowestWithin(entry.flags) != FlagSets::kNone) {
      entry.stays = false;
    } else if (entry.replaces) {
      replacing_.Add(entry.flags, sameName[i]);
    }
  }
  return replacing_;
}

void PropertyAdditions::PutInto(PCardStorage *card) {
  std::vector<uint32_t> const order = GroupedByName();
  for (auto first = order.begin(); first != order.end();) {
    char const *const name = NameOf(*first);
    auto const last = std::find_if(
        first, order.end(), [&](uint32_t entry) { return AZStrEqual(NameOf(entry), name) == 0; });
    RemoveAll(card, name, DropReplaced({first, last}));
    first = last;
  }
  for (HeadLine const &line : headLines_) DropRepeated(line);
  for (Entry const &entry : entries_) {
    if (!entry.stays) continue;
    uint32_t const added =
        card->AddProp(pool_.data() + entry.name, entry.type, entry.flags,
                      pool_.data() + entry.value, static_cast<int32_t>(entry.size));
    if (added == UINT32_MAX) throw std::bad_alloc();
  }
  entries_.clear();
  headLines_.clear();
  pool_.clear();
}

}  // namespace zolt
