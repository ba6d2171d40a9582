#include "zolt41/comserver/storage_enum.h"

#include "zolt41/comserver/element_name.h"
#include "zolt41/comserver/key_enum.h"

namespace zolt {
namespace {

bool NameRecord(std::string const *name, STATSTG *record) {
  if (name != nullptr) record->pwcsName = NameForClient(std::string_view(*name));
  return record->pwcsName != nullptr;
}

bool FillStorage(WalkedKey *walked, uint32_t index, STATSTG *record) {
  if (!NameRecord(walked->Subkey(index), record)) return false;
  record->type = STGTY_STORAGE;
  return true;
}

bool FillValue(WalkedKey *walked, uint32_t index, STATSTG *record) {
  std::string const *const name = walked->Value(index);
  uint32_t type = 0;
  uint32_t size = 0;
  if (name == nullptr ||
      RegQueryValueExA(walked->key, name->c_str(), nullptr, &type, nullptr, &size) !=
          ERROR_SUCCESS ||
      !NameRecord(name, record)) {
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
