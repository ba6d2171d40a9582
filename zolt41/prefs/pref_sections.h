#ifndef ZOLT41_PREFS_PREF_SECTIONS_H_
#define ZOLT41_PREFS_PREF_SECTIONS_H_

#include <cstdint>

#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/api.h"

// Shortcuts to the section operations of WinPrefs, through the system store where nothing else is
// said. Without that store they do nothing and give 0.

// Give the record, or 0 if the parent is not registered.
ZOLT_API uintptr_t RegisterPrefSection(int32_t id, char const *name);
ZOLT_API uintptr_t RegisterPrefSection(int32_t id, int32_t parent, char const *name);

// Takes the record given, or else the newest with `id`, away. Nothing happens if no section has
// this id, or if the newest that has it could not be opened in the system tree.
ZOLT_API void UnRegisterPrefSection(int32_t id, uintptr_t sectionRecord);

// Empties the section in the system, shared system, user and shared user store, in this order.
ZOLT_API void ClearPrefSection(int32_t id, uintptr_t sectionRecord);

// The section's key in the system store, or with `system` 0 in the user store; the store's own top
// key for id 0. It stays the store's.
ZOLT_API HKEY SectionKey(int32_t id, int32_t system);

ZOLT_API int32_t KeySection(HKEY key, uint32_t extra);
ZOLT_API int32_t KeySection(char const *path, int32_t system, uint32_t extra);

#endif  // ZOLT41_PREFS_PREF_SECTIONS_H_
