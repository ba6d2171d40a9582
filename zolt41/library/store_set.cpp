#include "zolt41/library/store_set.h"

#include <algorithm>
#include <iterator>

#include "zolt41/platform/system/with_memory.h"
#include "zolt41/prefs/stores.h"

namespace zolt {

bool BuildStores(char const *path) {
  auto const make = [path](PrefLevel level) {
    return WithMemory<WinPrefs *>(nullptr, [&] { return new WinPrefs(level, path); });
  };
  WinPrefs *const made[] = {make(PrefLevelSharedSystem), make(PrefLevelSharedUser),
                            make(PrefLevelSystem), make(PrefLevelUser)};
  SetSharedSystemPrefs(made[0]);
  SetSharedUserPrefs(made[1]);
  SetSystemPrefs(made[2]);
  SetUserPrefs(made[3]);
  return std::ranges::find(made, nullptr) == std::end(made);
}

}  // namespace zolt
