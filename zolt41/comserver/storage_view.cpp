#include "zolt41/comserver/storage_view.h"

#include <string>

#include "zolt41/comserver/element_name.h"
#include "zolt41/comserver/section_map.h"
#include "zolt41/comserver/storage_enum.h"
#include "zolt41/comserver/stream_view.h"
#include "zolt41/platform/com/guarded.h"
#include "zolt41/platform/registry/hive_status.h"

namespace zolt {
namespace {

// What the four methods that give an element have in common; `work` gets the name.
template <typename Interface, typename Work>
HRESULT Give(OLECHAR const *name, bool reserved, Interface **out, Work work) {
  if (out != nullptr) *out = nullptr;
  if (reserved) return STG_E_INVALIDPARAMETER;
  if (out == nullptr) return STG_E_INVALIDPOINTER;
  if (name == nullptr) return STG_E_INVALIDPARAMETER;
  return Guarded([&]() -> HRESULT {
    std::string narrow;
    return NarrowName(name, &narrow) ? work(narrow.c_str()) : STG_E_INVALIDNAME;
  });
}

}  // namespace

HRESULT SectionStorage::OpenValue(char const *name, DWORD mode, IStream **out) {
  return ValueStream::Open(owner().store(), static_cast<uint32_t>(owner().id()), name, mode, out);
}

HRESULT SectionStorage::OpenBelow(char const *name, IStorage **out) {
  return OpenSection(owner().id(), name, owner().kind(), IID_IStorage,
                     reinterpret_cast<void **>(out));
}

bool SectionStorage::HasSubkey(char const *name) const {
  HKEY key = 0;
  bool const there = OpenOneKey(owner().key(), name, KEY_ALL_ACCESS, &key) == ERROR_SUCCESS;
  if (there) RegCloseKey(key);
  return there;
}

// One that is there is left alone: it may only have failed to be read.
bool SectionStorage::MakeEmptyValue(char const *name) const {
  return RegQueryValueExA(owner().key(), name, nullptr, nullptr, nullptr, nullptr) ==
             ERROR_FILE_NOT_FOUND &&
         RegSetValueExA(owner().key(), name, 0, REG_BINARY, nullptr, 0) == ERROR_SUCCESS;
}

HRESULT SectionStorage::OpenStream(OLECHAR const *name, void *reserved1, DWORD mode,
                                   DWORD reserved2, IStream **out) {
  return Give(name, reserved1 != nullptr || reserved2 != 0, out,
              [&](char const *narrow) { return OpenValue(narrow, mode, out); });
}

HRESULT SectionStorage::CreateStream(OLECHAR const *name, DWORD mode, DWORD reserved1,
                                     DWORD reserved2, IStream **out) {
  return Give(name, reserved1 != 0 || reserved2 != 0, out, [&](char const *narrow) {
    HRESULT const opened = OpenValue(narrow, mode, out);
    if (opened != E_FAIL) return opened;
    return MakeEmptyValue(narrow) ? OpenValue(narrow, mode, out) : E_FAIL;
  });
}

HRESULT SectionStorage::OpenStorage(OLECHAR const *name, IStorage *priority, DWORD /*mode*/,
                                    SNB exclude, DWORD reserved, IStorage **out) {
  return Give(name, priority != nullptr || exclude != nullptr || reserved != 0, out,
              [&](char const *narrow) {
                return HasSubkey(narrow) ? OpenBelow(narrow, out) : STG_E_FILENOTFOUND;
              });
}

// To register a section makes its keys, so one that is there and one that is not are opened alike.
HRESULT SectionStorage::CreateStorage(OLECHAR const *name, DWORD /*mode*/, DWORD reserved1,
                                      DWORD reserved2, IStorage **out) {
  return Give(name, reserved1 != 0 || reserved2 != 0, out,
              [&](char const *narrow) { return OpenBelow(narrow, out); });
}

HRESULT SectionStorage::EnumElements(DWORD reserved1, void *reserved2, DWORD /*reserved3*/,
                                     IEnumSTATSTG **out) {
  if (out != nullptr) *out = nullptr;
  if (reserved1 != 0 || reserved2 != nullptr || out == nullptr) return STG_E_INVALIDPARAMETER;
  return WalkElements(this, owner().key(), out);
}

HRESULT SectionStorage::DestroyElement(OLECHAR const *name) {
  if (name == nullptr) return STG_E_INVALIDPARAMETER;
  return Guarded([&]() -> HRESULT {
    std::string narrow;
    if (!NarrowName(name, &narrow)) return STG_E_INVALIDNAME;
    bool const gone = RegDeleteKeyA(owner().key(), narrow.c_str()) == ERROR_SUCCESS;
    return gone ? S_OK : STG_E_ACCESSDENIED;
  });
}

}  // namespace zolt
