#include "zolt41/prefs/section_list.h"

#include <memory>
#include <new>

#include "zolt41/foundation/a_string.h"
#include "zolt41/platform/system/ascii_case.h"
#include "zolt41/platform/system/with_memory.h"

namespace zolt {

namespace {

constexpr PrefLevel kOpenOrder[] = {PrefLevelSystem, PrefLevelUser, PrefLevelSharedSystem,
                                    PrefLevelSharedUser};

void CloseAndFree(Section *section) {
  for (PrefLevel const level : kOpenOrder) {
    HKEY const key = section->*TreeOf(level).key;
    if (key != 0) RegCloseKey(key);
  }
  delete section;
}

struct Closing {
  void operator()(Section *section) const { CloseAndFree(section); }
};

// The key where it can be opened, else 0. Throws where there is no memory, which is no reason to
// leave a tree out for as long as the section lives.
HKEY OpenKey(HKEY parent, char const *name, uint32_t access) {
  HKEY key = 0;
  int32_t const result =
      RegCreateKeyExA(parent, name, 0, nullptr, 0, access, nullptr, &key, nullptr);
  if (result == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
  return result == ERROR_SUCCESS ? key : 0;
}

void OpenInTree(Section *section, LevelTree const &tree, HKEY parent, char const *name) {
  HKEY &key = section->*tree.key;
  key = OpenKey(parent, name, KEY_READ | KEY_WRITE);
  if (key != 0) return;
  section->access &= ~tree.writableBit;
  key = OpenKey(parent, name, KEY_READ);
  if (key == 0) section->access &= ~tree.readableBit;
}

}  // namespace

constinit SectionList sectionList;

Section *SectionList::FindName(char const *name) const {
  Section *section = newest_;
  while (section != nullptr && !EqualButForAsciiCase(section->name, name)) section = section->next;
  return section;
}

Section *SectionList::Register(int32_t id, int32_t parent, char const *name,
                               Section const *parentRecord) {
  return WithMemory<Section *>(nullptr, [&]() -> Section * {
    std::unique_ptr<Section, Closing> section(new Section{});
    section->id = id;
    section->parent = parent;
    AZStrCopy(name, section->name, sizeof section->name - 1);
    section->access = kAllAccess;
    for (PrefLevel const level : kOpenOrder) {
      LevelTree const &tree = TreeOf(level);
      HKEY const above = parentRecord == nullptr ? Root(level) : parentRecord->*tree.key;
      OpenInTree(section.get(), tree, above, name);
    }
    if (!index_.Set(section.get())) return nullptr;
    section->next = newest_;
    newest_ = section.get();
    return section.release();
  });
}

void SectionList::Unregister(Section *section) {
  Section **link = &newest_;
  while (*link != nullptr && *link != section) link = &(*link)->next;
  if (*link == nullptr) return;
  *link = section->next;

  if (index_.Find(section->id) == section) {
    Section *older = section->next;
    while (older != nullptr && older->id != section->id) older = older->next;
    if (older != nullptr) {
      index_.Set(older);
    } else {
      index_.Erase(section->id);
    }
  }
  CloseAndFree(section);
}

void SectionList::Clear() {
  for (HKEY &root : roots_) {
    if (root != 0) RegCloseKey(root);
    root = 0;
  }
  while (newest_ != nullptr) {
    Section *const section = newest_;
    newest_ = section->next;
    CloseAndFree(section);
  }
  index_.Clear();
}

}  // namespace zolt
