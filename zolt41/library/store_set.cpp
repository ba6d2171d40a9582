#include "zolt41/library/store_set.h"

#include <new>

#include "zolt41/prefs/stores.h"

namespace zolt {

void BuildStores(char const *path) {
  SetSharedSystemPrefs(new (std::nothrow) WinPrefs(PrefLevelSharedSystem, path));
  SetSharedUserPrefs(new (std::nothrow) WinPrefs(PrefLevelSharedUser, path));
  SetSystemPrefs(new (std::nothrow) WinPrefs(PrefLevelSystem, path));
  SetUserPrefs(new (std::nothrow) WinPrefs(PrefLevelUser, path));
}

}  // namespace zolt
