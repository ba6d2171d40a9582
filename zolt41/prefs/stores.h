#ifndef ZOLT41_PREFS_STORES_H_
#define ZOLT41_PREFS_STORES_H_

#include "zolt41/platform/system/api.h"
#include "zolt41/prefs/win_prefs.h"

// The four stores of the process: null before InitPrefs and after one that failed, and not to be
// used after DisposeZOLT. They belong to the library: whatever is set here is deleted by the next
// DisposeZOLT or ResetPrefTree. A Set function deletes nothing. Reads may run on several threads at
// once, but not beside a change.
ZOLT_API WinPrefs *GetUserPrefs();
ZOLT_API WinPrefs *GetSystemPrefs();
ZOLT_API WinPrefs *GetSharedUserPrefs();
ZOLT_API WinPrefs *GetSharedSystemPrefs();

ZOLT_API void SetUserPrefs(WinPrefs *store);
ZOLT_API void SetSystemPrefs(WinPrefs *store);
ZOLT_API void SetSharedUserPrefs(WinPrefs *store);
ZOLT_API void SetSharedSystemPrefs(WinPrefs *store);

ZOLT_API TYPrefs *UserPrefs();
ZOLT_API TYPrefs *SystemPrefs();
ZOLT_API TYPrefs *SharedUserPrefs();
ZOLT_API TYPrefs *SharedSystemPrefs();

#endif  // ZOLT41_PREFS_STORES_H_
