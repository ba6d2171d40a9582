#include "tools/zolt/level.h"

#include <algorithm>
#include <array>
#include <string>

#include "tools/zolt/errors.h"
#include "tools/zolt/near_name.h"

namespace zolt::tool {

namespace {

constexpr std::array kLevels = {
    Level{"user", PrefLevelUser, PrefLevelSystem, GetUserPrefs, SetUserPrefs, HKEY_CURRENT_USER},
    Level{"system", PrefLevelSystem, PrefLevelThis, GetSystemPrefs, SetSystemPrefs,
          HKEY_LOCAL_MACHINE},
    Level{"shared-user", PrefLevelSharedUser, PrefLevelSharedSystem, GetSharedUserPrefs,
          SetSharedUserPrefs, HKEY_CURRENT_USER},
    Level{"shared-system", PrefLevelSharedSystem, PrefLevelThis, GetSharedSystemPrefs,
          SetSharedSystemPrefs, HKEY_LOCAL_MACHINE},
};

}  // namespace

Level const &LevelNamed(std::string_view name) {
  auto const *const found = std::ranges::find(kLevels, name, &Level::name);
  if (found != kLevels.end()) return *found;
  std::vector<std::string> names;
  names.reserve(kLevels.size());
  for (Level const &level : kLevels) names.emplace_back(level.name);
  std::string const near = DidYouMean(name, names);
  Refuse("-L " + std::string(name), "no such level",
         near.empty() ? "it is user, system, shared-user or shared-system" : near);
}

Level const *LevelOf(int32_t number) {
  auto const *const found = std::ranges::find(kLevels, number, &Level::level);
  return found == kLevels.end() ? nullptr : found;
}

std::vector<Level const *> Chain(Level const &first) {
  std::vector<Level const *> chain = {&first};
  while (chain.back()->parent != PrefLevelThis) {
    chain.push_back(LevelOf(chain.back()->parent));
  }
  return chain;
}

}  // namespace zolt::tool
