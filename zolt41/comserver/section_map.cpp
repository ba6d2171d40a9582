#include "zolt41/comserver/section_map.h"

#include <map>
#include <mutex>
#include <string_view>

#include "zolt41/platform/com/guarded.h"
#include "zolt41/prefs/stores.h"

namespace zolt {
namespace {

std::map<int32_t, SectionObject *> &Map() {
  // Never destroyed: sections may still be released while the process ends.
  static auto *const map = new std::map<int32_t, SectionObject *>;
  return *map;
}

// Whether the section and all above it are registered. With one that is not, the id of what lies
// below would be made of a part of the names, and could be that of an unrelated section.
bool IsRegisteredToTheTop(WinPrefs *store, int32_t id) {
  constexpr int kDeepest = 520;  // no id is made of more names; one can be its own ancestor
  for (int depth = 0; id != 0; depth++) {
    Section const *const section = store->GetSectionFromID(id);
    if (section == nullptr || depth == kDeepest) return false;
    id = section->parent;
  }
  return true;
}

// Some names have the id of the root, and some that are too long for a key have that of another
// section.
bool CanBeSection(char const *name, int32_t id) {
  constexpr size_t kLongestKeyName = 255;
  return id != 0 && std::string_view(name).size() <= kLongestKeyName;
}

}  // namespace

SectionObject *FindSectionObject(int32_t id) {
  auto const found = Map().find(id);
  if (found == Map().end()) return nullptr;
  if (found->second->AddToLiving()) return found->second;
  // On its way out, on another thread.
  Map().erase(found);
  return nullptr;
}

void KeepSectionObject(SectionObject *object) {
  Map().emplace(object->id(), object);
}

void DropSectionObject(SectionObject const *object) {
  auto const found = Map().find(object->id());
  if (found != Map().end() && found->second == object) Map().erase(found);
}

HRESULT OpenSection(int32_t parent, char const *name, int32_t kind, REFIID iid, void **out) {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  if (kind != kUserStore && kind != kSystemStore) return E_INVALIDARG;
  HRESULT const opened = Guarded([&]() -> HRESULT {
    std::lock_guard const guard(ServerLock());
    ServerReference const server;
    WinPrefs *const store = kind == kUserStore ? GetUserPrefs() : GetSystemPrefs();
    if (store == nullptr) return E_FAIL;
    if (name != nullptr && !IsRegisteredToTheTop(store, parent)) return E_FAIL;
    int32_t const id = name == nullptr ? 0 : store->GetIDFromString(name, parent);
    if (name != nullptr && !CanBeSection(name, id)) return E_FAIL;
    if (SectionObject *const open = FindSectionObject(id)) {
      HRESULT const result = open->QueryInterface(iid, out);
      open->Release();
      return result;
    }
    return SectionObject::Make({store, id, parent, name, kind}, iid, out);
  });
  return opened == E_OUTOFMEMORY ? E_FAIL : opened;
}

}  // namespace zolt
