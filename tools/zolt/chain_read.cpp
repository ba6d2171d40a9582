#include "tools/zolt/chain_read.h"

#include <algorithm>
#include <unordered_set>

#include "tools/zolt/errors.h"
#include "tools/zolt/near_name.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

std::vector<Level const *> ReadLevels(Settings const &settings, bool parentFirst) {
  if (settings.only) return {settings.level};
  std::vector<Level const *> levels = Chain(*settings.level);
  if (parentFirst) std::rotate(levels.begin(), levels.begin() + 1, levels.end());
  return levels;
}

std::vector<Holding> ReadHoldings(std::span<SectionKey const> keys, std::string const &name) {
  std::vector<Holding> holdings;
  for (SectionKey const &key : keys) {
    holdings.push_back({&key.level(), ReadValue(key.key(), name), false, false});
  }
  auto const isText = [](Holding const &each) { return each.value.kind == Kind::text; };
  auto const isThere = [](Holding const &each) { return each.value.kind != Kind::absent; };
  auto const any = std::ranges::find_if(holdings, isThere);
  if (any == holdings.end()) return holdings;
  any->answersBytes = true;
  auto const text = std::ranges::find_if(holdings, isText);
  if (text != holdings.end()) text->answers = true;
  return holdings;
}

std::vector<FoundName> NamesAlong(std::span<SectionKey const> keys,
                                  std::vector<std::string> (SectionKey::*namesIn)() const) {
  std::vector<FoundName> found;
  std::unordered_set<std::string> seen;
  for (SectionKey const &key : keys) {
    for (std::string const &name : (key.*namesIn)())
      if (seen.insert(Folded(name)).second) found.push_back({name, &key.level()});
  }
  return found;
}

std::vector<SectionKey> AllBelow(std::span<SectionKey const> keys, std::string const &name) {
  std::vector<SectionKey> below;
  below.reserve(keys.size());
  for (SectionKey const &key : keys) below.push_back(key.Below(name));
  return below;
}

std::vector<Entry> ValuesAlong(SectionPath const &path, std::span<SectionKey const> keys) {
  std::vector<Entry> entries;
  for (FoundName const &found : NamesAlong(keys, &SectionKey::ValueNames)) {
    std::vector<Holding> const holdings = ReadHoldings(keys, found.name);
    // Null for a value that went while the names were read.
    Holding const *const answer = Answer(holdings);
    if (answer != nullptr) entries.push_back({path, found.name, answer->level, answer->value});
  }
  return entries;
}

Holding const *Answer(std::span<Holding const> holdings) {
  auto found = std::ranges::find_if(holdings, &Holding::answers);
  if (found == holdings.end()) found = std::ranges::find_if(holdings, &Holding::answersBytes);
  return found == holdings.end() ? nullptr : &*found;
}

void FailWithoutValue(SectionPath const &path, std::string const &name,
                      std::span<SectionKey const> keys) {
  std::vector<std::string> names;
  for (SectionKey const &key : keys)
    for (std::string const &each : key.ValueNames()) names.push_back(ToUtf8(each));
  throw ToolError(kNo, "absent", Subject(path, name), "no such value",
                  DidYouMean(ToUtf8(name), names));
}

}  // namespace zolt::tool
