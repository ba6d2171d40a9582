#include <algorithm>

#include "tools/zolt/library_session.h"
#include "tools/zolt/store_write.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

int Unset(Call const &call) {
  SectionPath const path = SectionPath::FromOperand(call.operands[0]);
  std::vector<std::string> names;
  for (std::string_view const operand : call.operands.subspan(1))
    names.push_back(ValueName(operand));
  PrepareLibrary(call.arguments, call.settings);
  Level const &level = *call.settings.level;
  // What is not there needs no right to write.
  std::vector<Change> changes = ReadBefore(level, path, names);
  if (!call.settings.dryRun && std::ranges::any_of(changes, &Change::changes)) {
    SayWhoseStore(call.settings, level);
    changes = ChangeAtOnce(level, path, names, [](std::vector<Change> *) {});
  }
  return ReportChanges(path, changes, call.settings, call.out);
}

}  // namespace

Verb const kPrefsUnset = {
    .group = "prefs",
    .name = "unset",
    .operands = "SECTION NAME...",
    .summary = "remove values",
    .options = {},
    .least = 2,
    .most = kAnyNumber,
    .run = Unset,
    .description =
        "Removes values from the store of -L, all in one transaction, and says what they were. A\n"
        "value that was not set is no failure.",
    .examples =
        "  zolt prefs unset Audio Volume Mute\n"
        "  zolt prefs unset -n Audio Volume\n",
};

}  // namespace zolt::tool
