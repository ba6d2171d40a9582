#include "tools/zolt/card_damage.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "tools/zolt/text.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

constexpr std::string_view kMagic = "LN_091296";
constexpr size_t kHead = 56;
constexpr size_t kBlobHead = 8;
constexpr size_t kSlotSize = 44;
constexpr size_t kSlotName = 4;
constexpr size_t kSlotNameSize = 32;
constexpr size_t kSlotValueSize = 36;
constexpr size_t kSlotValueOffset = 40;

uint32_t Number(std::string_view bytes, size_t at) {
  uint32_t number = 0;
  for (size_t i = 0; i < 4; i++)
    number |= uint32_t{static_cast<unsigned char>(bytes[at + i])} << (8 * i);
  return number;
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
    if (nameLength == std::string_view::npos || nameLength > kLongestPropertyName) {
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
    // Of the other byte order, or none.
    if (holdsHead && blob[0] != 1) return;
    uint32_t const count = holdsHead ? Number(blob, 4) : 0;
    if (!holdsHead || count > (blob.size() - kBlobHead) / kSlotSize) {
      Add(at, "the preferences do not hold the table that they name", true);
      return;
    }
    size_t const pool = blob.size() - kBlobHead - count * kSlotSize;
    for (uint32_t i = 0; i < count; i++) {
      size_t const slot = kBlobHead + i * kSlotSize;
      uint32_t const size = Number(blob, slot + kSlotValueSize);
      uint32_t const offset = Number(blob, slot + kSlotValueOffset);
      std::string_view const name = blob.substr(slot + kSlotName, kSlotNameSize);
      if (size > pool || offset > pool - size) {
        Add(at + slot,
            "the preference " + std::string(name.substr(0, name.find('\0'))) +
                " lies outside of them",
            true);
      }
    }
  }

  std::string_view bytes_;
  std::vector<CardDamage> damage_;
};

// The line of the first property whose form the reader does not take.
std::vector<CardDamage> CheckText(std::string const &path, std::string_view text) {
  PCardStorage card;
  if (ImportCard(&card, path.c_str()) != 0) return {};
  size_t number = 1;
  bool properties = false;
  while (!text.empty()) {
    size_t const end = std::min(text.find_first_of("\r\n"), text.size());
    std::string_view const line = text.substr(0, end);
    if (line.starts_with('[')) properties = SameName(line.substr(0, 12), "[Card Infos]");
    size_t const first = line.find(':');
    size_t const colon = first == std::string_view::npos ? first : line.find(':', first + 1);
    bool const value = properties && colon != std::string_view::npos;
    for (size_t const type : {size_t{1}, size_t{2}, size_t{4}, size_t{7}, size_t{8}}) {
      std::string const mark = "=" + std::string(kPropertyTypeNames[type]) + ":";
      if (value && line.find(mark) != std::string_view::npos && line.substr(colon + 1, 1) != "<") {
        return {{"line " + std::to_string(number), "bytes do not begin with <", true}};
      }
    }
    text.remove_prefix(end);
    if (text.starts_with("\r\n")) text.remove_prefix(1);
    if (!text.empty()) text.remove_prefix(1);
    number++;
  }
  return {{"line " + std::to_string(number), "is no card, or its last line has no end", true}};
}

}  // namespace

bool IsCardFile(std::string_view bytes) {
  return bytes.size() >= kMagic.size() && SameName(bytes.substr(0, kMagic.size()), kMagic);
}

std::vector<CardDamage> DamageOf(std::string const &path, std::string_view bytes) {
  return IsCardFile(bytes) ? CardFileCheck(bytes).Run() : CheckText(path, bytes);
}

}  // namespace zolt::tool
