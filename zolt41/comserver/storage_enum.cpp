#include "zolt41/comserver/storage_enum.h"

#include "zolt41/comserver/element_name.h"
#include "zolt41/comserver/key_enum.h"

namespace zolt {
namespace {

bool NameRecord(WalkedKey const &walked, uint32_t length, STATSTG *record) {
  record->pwcsName = NameForClient(std::string_view(walked.nameBuffer).substr(0, length));
  return record->pwcsName != nullptr;
}

bool FillStorage(WalkedKey *walked, uint32_t index, STATSTG *record) {
  uint32_t length = walked->subkeyNameSize;
  if (RegEnumKeyExA(walked->key, index, walked->nameBuffer.data(), &length, nullptr, nullptr,
                    nullptr, nullptr) != ERROR_SUCCESS ||
      !NameRecord(*walked, length, record)) {
    return false;
  }
  record->type = STGTY_STORAGE;
  return true;
}

bool FillValue(WalkedKey *walked, uint32_t index, STATSTG *record) {
  uint32_t length = walked->valueNameSize;
  uint32_t type = 0;
  uint32_t size = 0;
  if (RegEnumValueA(walked->key, index, walked->nameBuffer.data(), &length, nullptr, &type, nullptr,
                    &size) != ERROR_SUCCESS ||
      !NameRecord(*walked, length, record)) {
    return false;
  }
  record->type = type == REG_BINARY ? STGTY_STREAM : STGTY_PROPERTY;
  record->cbSize.QuadPart = size;
  return true;
}

struct Elements {
  using Interface = IEnumSTATSTG;
  using Record = STATSTG;
  static constexpr IID const &kId = IID_IEnumSTATSTG;

  static uint64_t Total(WalkedKey const &walked) {
    return uint64_t{walked.subkeyCount} + walked.valueCount;
  }
  static bool Fill(WalkedKey *walked, uint32_t index, STATSTG *record) {
    return index < walked->subkeyCount ? FillStorage(walked, index, record)
                                       : FillValue(walked, index - walked->subkeyCount, record);
  }
};

}  // namespace

HRESULT WalkElements(IStorage *storage, HKEY key, IEnumSTATSTG **out) {
  return KeyEnum<Elements>::Make(storage, key, 0, out);
}

}  // namespace zolt
