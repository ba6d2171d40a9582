// The sections of the store; its values are in win_prefs.cpp.
#include "zolt41/prefs/win_prefs.h"

#include <algorithm>

#include "zolt41/foundation/a_string.h"
#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/prefs/section_list.h"
#include "zolt41/prefs/section_name_hash.h"
#include "zolt41/prefs/text_argument.h"
#include "zolt41/prefs/tree_path.h"

namespace {

constexpr uint32_t kNamesSize = 520;
constexpr uint32_t kPathSize = 260;

uintptr_t Number(Section const *section) {
  return reinterpret_cast<uintptr_t>(section);
}

// Appends `name` as far as it fits and gives the new length.
uint32_t Append(char (&names)[kNamesSize], uint32_t length, char const *name) {
  uint32_t const room = kNamesSize - 1 - length;
  uint32_t const size = static_cast<uint32_t>(AZStrCopy(name, names + length, room));
  return length + std::min(size, room);
}

template <typename IsIt>
int32_t IdOfKey(IsIt isIt) {
  for (Section const *section = zolt::sectionList.newest(); section != nullptr;
       section = section->next)
    for (HKEY const key :
         {section->systemKey, section->userKey, section->sharedSystemKey, section->sharedUserKey})
      if (key != 0 && isIt(key)) return section->id;
  return 0;
}

}  // namespace

uintptr_t WinPrefs::RegisterSection(char const *name) {
  return RegisterSection(SectionNameHash(name), name);
}

uintptr_t WinPrefs::RegisterSection(char const *name, int32_t parent) {
  if (parent == 0) return RegisterSection(name);
  return RegisterSection(GetIDFromString(name, parent), parent, name, 0);
}

uintptr_t WinPrefs::RegisterSection(int32_t id, char const *name) {
  return Number(zolt::sectionList.Register(id, 0, zolt::TextOrEmpty(name), nullptr));
}

uintptr_t WinPrefs::RegisterSection(int32_t id, int32_t parent, char const *name,
                                    uintptr_t parentRecord) {
  Section const *const above = zolt::sectionList.Find(parent, parentRecord);
  if (above == nullptr) return 0;
  return Number(zolt::sectionList.Register(id, parent, zolt::TextOrEmpty(name), above));
}

void WinPrefs::UnRegisterSection(int32_t id, uintptr_t sectionRecord) {
  zolt::sectionList.Unregister(zolt::sectionList.Find(id, sectionRecord));
}

int32_t WinPrefs::GetIDFromString(char const *name, int32_t parent) {
  if (parent == 0) return SectionNameHash(name);
  char names[kNamesSize] = "";
  uint32_t length = 0;
  // A section can be registered as its own ancestor, so the steps are counted.
  for (uint32_t steps = 0; parent != 0 && steps < kNamesSize; ++steps) {
    Section const *const section = zolt::sectionList.Find(parent);
    if (section == nullptr) break;
    length = Append(names, length, section->name);
    parent = section->parent;
  }
  Append(names, length, zolt::TextOrEmpty(name));
  return SectionNameHash(names);
}

int32_t WinPrefs::KeySection(HKEY key, uint32_t extra) {
  if (key == 0 || extra != 0) return 0;
  return IdOfKey([key](HKEY other) { return other == key; });
}

int32_t WinPrefs::KeySection(char const *path, int32_t system, uint32_t extra) {
  if (extra != 0) return 0;
  char components[kPathSize] = "";
  AZStrCopy(zolt::TextOrEmpty(path), components, kPathSize - 1);
  zolt::UseBackslashes(components);
  HKEY key = 0;
  HKEY const root = system != 0 ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
  if (RegOpenKeyA(root, components, &key) != ERROR_SUCCESS) return 0;
  int32_t const id = IdOfKey([key](HKEY other) { return zolt::SameKey(other, key); });
  RegCloseKey(key);
  return id;
}

char const *WinPrefs::SectionName(int32_t id, uintptr_t sectionRecord) {
  Section const *const section = zolt::sectionList.Find(id, sectionRecord);
  return section == nullptr ? nullptr : section->name;
}

int32_t WinPrefs::SectionID(char const *name, uintptr_t sectionRecord) {
  Section const *const section = sectionRecord != 0
                                     ? zolt::sectionList.Find(0, sectionRecord)
                                     : zolt::sectionList.FindName(zolt::TextOrEmpty(name));
  return section == nullptr ? -1 : section->id;
}

Section *WinPrefs::GetSectionFromID(int32_t id) {
  return zolt::sectionList.Find(id);
}

int32_t WinPrefs::IsReadable(uint32_t section) {
  Section const *const record = zolt::sectionList.Find(static_cast<int32_t>(section));
  if (record == nullptr) return 0;
  return static_cast<int32_t>(record->access & zolt::TreeOf(Level()).readableBit);
}

int32_t WinPrefs::IsWritable(uint32_t section) {
  Section const *const record = zolt::sectionList.Find(static_cast<int32_t>(section));
  if (record == nullptr) return 0;
  return static_cast<int32_t>(record->access & zolt::TreeOf(Level()).writableBit);
}
