#include <algorithm>
#include <functional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/progress.h"
#include "tools/zolt/section_key.h"
#include "tools/zolt/store_snapshot.h"
#include "tools/zolt/text_update.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

void AddRemovals(TextSection &&section, StoreUpdate *update) {
  if (section.values.empty()) return;
  SectionUpdate removals{std::move(section.path), {}};
  for (TextValue &value : section.values)
    removals.values.push_back({std::move(value.name), std::move(value.value), {}});
  update->sections.push_back(std::move(removals));
}

StoreUpdate Look(Level const &level, SectionPath const &path, bool recursive) {
  StoreUpdate update;
  bool found = true;
  if (recursive) {
    found = VisitStore(level, path, Exclusions({}), [&update](TextSection &&section) {
      AddRemovals(std::move(section), &update);
    });
  } else {
    SectionKey const key(level, path, SectionKey::Role::first);
    found = key.key() != 0;
    AddRemovals(ReadSection(path, key), &update);
  }
  if (!found && !path.standard()) FailWithoutSection({&level}, path);
  return update;
}

std::vector<SectionPath> SectionsOf(StoreUpdate const &update) {
  std::vector<SectionPath> paths;
  for (SectionUpdate const &section : update.sections) paths.push_back(section.path);
  return paths;
}

// Without the sections that have come since: they are not open.
StoreUpdate OfThese(StoreUpdate update, std::vector<SectionPath> const &seen) {
  std::unordered_set<std::string> keys;
  for (SectionPath const &path : seen) keys.insert(path.Key());
  std::erase_if(update.sections, [&keys](SectionUpdate const &section) {
    return !keys.contains(section.path.Key());
  });
  return update;
}

// Gives up what was seen before it looks again.
StoreUpdate Write(Level const &level, StoreUpdate seen, std::function<StoreUpdate()> const &look) {
  std::vector<SectionPath> const sections = SectionsOf(seen);
  seen = {};
  std::vector<SectionPath const *> paths(sections.size());
  std::ranges::transform(sections, paths.begin(), [](SectionPath const &path) { return &path; });
  return WriteUpdate(level, paths, [&] { return OfThese(look(), sections); });
}

int Clear(Call const &call) {
  SectionPath const path = SectionPath::FromOperand(call.operands[0]);
  bool const recursive = call.arguments.Has(OptionId::recursive);
  PrepareLibrary(call.arguments, call.settings);
  Level const &level = *call.settings.level;
  auto const look = [&] { return Look(level, path, recursive); };
  StoreUpdate update = look();
  if (!call.settings.dryRun && !update.sections.empty()) {
    SayWhoseStore(call.settings, level);
    Progress const progress(call.settings, "removing");
    update = Write(level, std::move(update), look);
  }
  return ReportUpdate(update, level, call);
}

}  // namespace

Verb const kPrefsClear = {
    .group = "prefs",
    .name = "clear",
    .operands = "SECTION",
    .summary = "remove all values of a section",
    .options = {OptionId::recursive},
    .least = 1,
    .most = 1,
    .run = Clear,
    .description =
        "Removes all values of SECTION from the store of -L in one transaction; with -r also "
        "those\n"
        "of all sections below it. Programs that listen hear of each. The sections themselves\n"
        "stay.",
    .examples =
        "  zolt prefs clear Audio\n"
        "  zolt prefs clear -n -r Conferencing\n",
};

}  // namespace zolt::tool
