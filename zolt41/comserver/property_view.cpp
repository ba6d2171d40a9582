#include "zolt41/comserver/property_view.h"

#include <algorithm>
#include <mutex>

#include "zolt41/comserver/element_name.h"
#include "zolt41/comserver/property_enum.h"
#include "zolt41/comserver/property_value.h"
#include "zolt41/platform/com/guarded.h"
#include "zolt41/prefs/section_name_hash.h"

namespace zolt {

bool SectionPropertyStorage::FillNames() {
  for (uint32_t index = 0;; index++) {
    char name[260];
    uint32_t length = sizeof name;
    int32_t const result =
        RegEnumValueA(owner().key(), index, name, &length, nullptr, nullptr, nullptr, nullptr);
    if (result != ERROR_SUCCESS) return result == ERROR_NO_MORE_ITEMS;
    names_.emplace(static_cast<PROPID>(SectionNameHash(name)),
                   WideName(std::string_view(name, length)));
  }
}

OLECHAR const *SectionPropertyStorage::NameOf(PROPSPEC const &spec) const {
  if (spec.ulKind == PRSPEC_LPWSTR) return spec.lpwstr;
  auto const found = names_.find(spec.propid);
  return found == names_.end() ? nullptr : found->second.c_str();
}

// Does something for each property that can be resolved, until that fails.
template <typename Work>
HRESULT SectionPropertyStorage::ForEach(ULONG count, PROPSPEC const specs[],
                                        Work const &work) const {
  return Guarded([&]() -> HRESULT {
    std::lock_guard const guard(ServerLock());
    std::string narrow;
    for (ULONG i = 0; i < count; i++) {
      OLECHAR const *const name = NameOf(specs[i]);
      if (name == nullptr) continue;
      if (!NarrowName(name, &narrow)) return STG_E_INVALIDNAME;
      if (HRESULT const result = work(i, narrow.c_str()); result != S_OK) return result;
    }
    return S_OK;
  });
}

HRESULT SectionPropertyStorage::ReadMultiple(ULONG count, PROPSPEC const specs[],
                                             PROPVARIANT variants[]) {
  if (specs == nullptr || variants == nullptr) return STG_E_INVALIDPOINTER;
  auto const id = static_cast<uint32_t>(owner().id());
  return ForEach(count, specs, [&](ULONG i, char const *name) {
    return ReadProperty(owner().store(), id, name, &variants[i]);
  });
}

HRESULT SectionPropertyStorage::WriteMultiple(ULONG count, PROPSPEC const specs[],
                                              PROPVARIANT const variants[], PROPID /*firstId*/) {
  if (specs == nullptr || variants == nullptr) return STG_E_INVALIDPOINTER;
  auto const id = static_cast<uint32_t>(owner().id());
  return ForEach(count, specs, [&](ULONG i, char const *name) {
    return WriteProperty(owner().store(), id, name, variants[i]);
  });
}

HRESULT SectionPropertyStorage::DeleteMultiple(ULONG count, PROPSPEC const specs[]) {
  if (specs == nullptr) return STG_E_INVALIDPOINTER;
  auto const id = static_cast<uint32_t>(owner().id());
  return ForEach(count, specs, [&](ULONG, char const *name) {
    owner().store()->RemoveValue(id, name);
    return S_OK;
  });
}

HRESULT SectionPropertyStorage::ReadPropertyNames(ULONG count, PROPID const ids[],
                                                  LPOLESTR names[]) {
  if (names != nullptr) std::fill_n(names, count, nullptr);
  if (ids == nullptr || names == nullptr) return STG_E_INVALIDPOINTER;
  HRESULT result = S_FALSE;
  for (ULONG i = 0; i < count; i++) {
    auto const found = names_.find(ids[i]);
    if (found == names_.end()) continue;
    names[i] = NameForClient(std::u16string_view(found->second));
    if (names[i] == nullptr) return E_OUTOFMEMORY;
    result = S_OK;
  }
  return result;
}

HRESULT SectionPropertyStorage::Enum(IEnumSTATPROPSTG **out) {
  if (out == nullptr) return STG_E_INVALIDPOINTER;
  return WalkProperties(this, owner().key(), out);
}

}  // namespace zolt
