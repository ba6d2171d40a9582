#include "zolt41/prefs/pref_sections.h"

#include <initializer_list>

#include "zolt41/platform/system/last_failure.h"
#include "zolt41/prefs/stores.h"

uintptr_t RegisterPrefSection(int32_t id, char const *name) {
  WinPrefs *const store = GetSystemPrefs();
  return store == nullptr ? 0 : store->RegisterSection(id, name);
}

uintptr_t RegisterPrefSection(int32_t id, int32_t parent, char const *name) {
  WinPrefs *const store = GetSystemPrefs();
  return store == nullptr ? 0 : store->RegisterSection(id, parent, name, 0);
}

void UnRegisterPrefSection(int32_t id, uintptr_t sectionRecord) {
  if (SectionKey(id, 1) != 0) GetSystemPrefs()->UnRegisterSection(id, sectionRecord);
}

void ClearPrefSection(int32_t id, uintptr_t sectionRecord) {
  zolt::FirstFailure failure;
  for (WinPrefs *const store :
       {GetSystemPrefs(), GetSharedSystemPrefs(), GetUserPrefs(), GetSharedUserPrefs()}) {
    if (store != nullptr) store->ClearSection(static_cast<uint32_t>(id), sectionRecord);
    failure.Note();
  }
}

HKEY SectionKey(int32_t id, int32_t system) {
  WinPrefs *const store = system != 0 ? GetSystemPrefs() : GetUserPrefs();
  return store == nullptr ? 0 : store->SectionKey(id, 0);
}

int32_t KeySection(HKEY key, uint32_t extra) {
  WinPrefs *const store = GetSystemPrefs();
  return store == nullptr ? 0 : store->KeySection(key, extra);
}

int32_t KeySection(char const *path, int32_t system, uint32_t extra) {
  WinPrefs *const store = GetSystemPrefs();
  return store == nullptr ? 0 : store->KeySection(path, system, extra);
}
