#include "tools/zolt/card_damage.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <optional>

#include "tools/zolt/text.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

constexpr char kMagicText[] = "LN_091296";
constexpr std::string_view kMagic(kMagicText, sizeof kMagicText);  // with its NUL
constexpr size_t kHead = 56;
constexpr size_t kBlobHead = 8;
constexpr size_t kSlotSize = 44;
constexpr size_t kSlotName = 4;
constexpr size_t kSlotNameSize = 32;
constexpr size_t kSlotValueSize = 36;
constexpr size_t kSlotValueOffset = 40;

uint32_t Number(std::string_view bytes, size_t at, bool bigEndian = false) {
  uint32_t number = 0;
  for (size_t i = 0; i < 4; i++) {
    size_t const place = bigEndian ? 3 - i : i;
    number |= uint32_t{static_cast<unsigned char>(bytes[at + place])} << (8 * i);
  }
  return number;
}

// What the slots of preferences are sorted by.
struct SlotKey {
  uint32_t section;
  std::string name;  // as much as is read
};

std::string SlotNameOf(std::string_view blob, size_t slot) {
  std::string_view const name = blob.substr(slot + kSlotName, kSlotNameSize - 1);
  return std::string(name.substr(0, name.find('\0')));
}

bool Precedes(SlotKey const &a, SlotKey const &b) {
  if (a.section != b.section) return a.section > b.section;
  return AZStrCompare(a.name.c_str(), b.name.c_str()) < 0;
}

class CardFileCheck {
 public:
  explicit CardFileCheck(std::string_view bytes) : bytes_(bytes) {}

  std::vector<CardDamage> Run() {
    if (bytes_.size() < kHead + kListHead) {
      Add(bytes_.size(), "is cut short within its head", true);
      return damage_;
    }
    uint32_t const count = Number(bytes_, kHead);
    size_t at = kHead + kListHead;
    for (uint32_t i = 0; i < count; i++) {
      size_t const end = CheckRecord(at);
      if (end == 0) return damage_;
      at = end;
    }
    if (at < bytes_.size()) Add(at, "bytes stand behind the last property", false);
    return damage_;
  }

 private:
  void Add(size_t at, std::string what, bool lost) {
    damage_.push_back({"byte " + std::to_string(at), std::move(what), lost});
  }

  // The end of the record at `at`, or 0 if it is damaged, with which the whole list is lost.
  size_t CheckRecord(size_t at) {
    if (bytes_.size() - at < kSmallestRecord) {
      Add(at, "the list is cut short before a property", true);
      return 0;
    }
    std::string_view const rest = bytes_.substr(at + kRecordHead);
    size_t const nameLength = rest.find('\0');
    if (nameLength > kLongestPropertyName) {
      Add(at + kRecordHead, "the name of a property has no end", true);
      return 0;
    }
    std::string const name(rest.substr(0, nameLength));
    uint32_t const length = Number(bytes_, at + kLengthOffset);
    uint32_t const area = NameArea(static_cast<uint32_t>(nameLength));
    uint64_t const size = RecordSize(area, length);
    if (size > bytes_.size() - at) {
      Add(at + kLengthOffset,
          "the value of " + name + " would have " + std::to_string(length) + " bytes", true);
      return 0;
    }
    if (SameName(name, kCardPrefsProperty)) {
      CheckBlob(at + kRecordHead + area, bytes_.substr(at + kRecordHead + area, length));
    }
    return at + size;
  }

  void CheckBlob(size_t at, std::string_view blob) {
    bool const holdsHead = blob.size() >= kBlobHead;
    bool const bigEndian = holdsHead && blob[0] != 1;
    uint32_t const count = holdsHead ? Number(blob, 4, bigEndian) : 0;
    if (!holdsHead || count > (blob.size() - kBlobHead) / kSlotSize) {
      Add(at, "the preferences do not hold the table that they name", true);
      return;
    }
    size_t const pool = blob.size() - kBlobHead - count * kSlotSize;
    size_t rest = pool;
    std::optional<SlotKey> before;
    bool sorted = true;
    for (uint32_t i = 0; i < count; i++) {
      size_t const slot = kBlobHead + i * kSlotSize;
      SlotKey const key = {Number(blob, slot, bigEndian), SlotNameOf(blob, slot)};
      std::string const preference = "the preference " + key.name;
      if (blob.substr(slot + kSlotName, kSlotNameSize).find('\0') == std::string_view::npos) {
        Add(at + slot + kSlotName, "the name of " + preference + " has no end", false);
      }
      if (sorted && before && Precedes(key, *before)) {
        Add(at + slot, preference + " does not stand in its order", false);
        sorted = false;
      }
      before = key;
      uint32_t const size = Number(blob, slot + kSlotValueSize, bigEndian);
      uint32_t const offset = Number(blob, slot + kSlotValueOffset, bigEndian);
      bool const inside = size == 0 || (size <= pool && offset <= pool - size);
      if (inside && size <= rest) {
        rest -= size;
        continue;
      }
      Add(at + slot,
          preference + (inside ? " shares the bytes of others" : " lies outside of them"), true);
    }
  }

  std::string_view bytes_;
  std::vector<CardDamage> damage_;
};

// A card file whose first bytes were hurt, or cut.
bool BeginsNearly(std::string_view bytes) {
  constexpr int kMostOff = 3;
  constexpr size_t kFewest = 4;
  std::string_view const head = bytes.substr(0, kMagic.size());
  int off = 0;
  for (size_t i = 0; i < head.size(); i++) {
    if (!SameName(head.substr(i, 1), kMagic.substr(i, 1))) off++;
  }
  return head.size() >= kFewest && off <= (head.size() < kMagic.size() ? 0 : kMostOff);
}

// False if the bytes are no card text.
bool CheckText(std::string_view text, std::vector<CardDamage> *damage) {
  auto const tell = [](void *context, CardTextFinding const &finding) {
    static_cast<std::vector<CardDamage> *>(context)->push_back(
        {"line " + std::to_string(finding.line), finding.what, finding.lost});
  };
  int32_t const isCard =
      CheckCardText(text.data(), static_cast<int32_t>(text.size()), tell, damage);
  if (isCard < 0) throw std::bad_alloc();
  return isCard != 0;
}

}  // namespace

bool IsCardFile(std::string_view bytes) {
  std::string const head(bytes.substr(0, kMagic.size()));
  return head.size() == kMagic.size() && AZStrCompare(head.c_str(), kMagic.data()) == 0;
}

bool IsCard(std::string_view bytes) {
  std::vector<CardDamage> damage;
  return IsCardFile(bytes) || CheckText(bytes, &damage);
}

std::vector<CardDamage> DamageOf(std::string_view bytes) {
  if (IsCardFile(bytes)) return CardFileCheck(bytes).Run();
  std::vector<CardDamage> damage;
  if (CheckText(bytes, &damage)) return damage;
  if (BeginsNearly(bytes))
    return {{"byte 0", "the first bytes are not those of a card file", true}};
  return {{"", "is no card", true}};
}

}  // namespace zolt::tool
