#include "zolt41/prefs/section_list.h"

#include <new>

#include "zolt41/foundation/a_string.h"
#include "zolt41/platform/system/ascii_case.h"

namespace zolt {

namespace {

constexpr PrefLevel kOpenOrder[] = {PrefLevelSystem, PrefLevelUser, PrefLevelSharedSystem,
                                    PrefLevelSharedUser};

HKEY OpenKey(HKEY parent, char const *name, uint32_t access) {
  HKEY key = 0;
  int32_t const result =
      RegCreateKeyExA(parent, name, 0, nullptr, 0, access, nullptr, &key, nullptr);
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

void CloseAndFree(Section *section) {
  for (PrefLevel const level : kOpenOrder) {
    HKEY const key = section->*TreeOf(level).key;
    if (key != 0) RegCloseKey(key);
  }
  delete section;
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
  auto *const section = new (std::nothrow) Section{};
  if (section == nullptr) return nullptr;
  section->id = id;
  if (!index_.Set(section)) {
    delete section;
    return nullptr;
  }
  section->parent = parent;
  AZStrCopy(name, section->name, sizeof section->name - 1);
  section->access = kAllAccess;
  for (PrefLevel const level : kOpenOrder) {
    LevelTree const &tree = TreeOf(level);
    HKEY const above = parentRecord == nullptr ? Root(level) : parentRecord->*tree.key;
    OpenInTree(section, tree, above, name);
  }
  section->next = newest_;
  newest_ = section;
  return section;
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
