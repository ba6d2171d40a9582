#include "zolt41/comserver/property_enum.h"

#include "zolt41/comserver/element_name.h"
#include "zolt41/comserver/key_enum.h"
#include "zolt41/prefs/section_name_hash.h"

namespace zolt {
namespace {

struct Properties {
  using Interface = IEnumSTATPROPSTG;
  using Record = STATPROPSTG;
  static constexpr IID const &kId = IID_IEnumSTATPROPSTG;

  static uint64_t Total(WalkedKey const &walked) { return walked.valueCount; }

  static bool Fill(WalkedKey *walked, uint32_t index, STATPROPSTG *record) {
    std::string const *const name = walked->Value(index);
    if (name == nullptr) return false;
    LPOLESTR const wide = NameForClient(std::string_view(*name));
    if (wide == nullptr) return false;
    *record = {wide, static_cast<PROPID>(SectionNameHash(std::string_view(*name))), VT_EMPTY};
    return true;
  }
};

}  // namespace

HRESULT WalkProperties(IPropertyStorage *properties, HKEY key, IEnumSTATPROPSTG **out) {
  return KeyEnum<Properties>::Make(properties, key, 0, out);
}

}  // namespace zolt
