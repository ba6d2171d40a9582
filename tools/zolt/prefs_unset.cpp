#include <algorithm>

#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/store_write.h"
#include "tools/zolt/text.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

void Decide(SectionPath const &path, Arguments const &arguments, std::vector<Change> *changes) {
  if (!arguments.Has(OptionId::ifValue)) return;
  StoredValue const expected{Kind::text, ToLocal(arguments.Value(OptionId::ifValue))};
  for (Change const &change : *changes) {
    if (change.before == expected) continue;
    throw ToolError(kNo, "expectation", Subject(path, change.name),
                    "is " + Describe(change.before) + ", not " + Describe(expected),
                    "nothing is written");
  }
}

int Unset(Call const &call) {
  SectionPath const path = SectionPath::FromOperand(call.operands[0]);
  std::vector<std::string> names;
  for (std::string_view const operand : call.operands.subspan(1))
    names.push_back(ValueName(operand));
  PrepareLibrary(call.arguments, call.settings);
  Level const &level = *call.settings.level;
  auto const decide = [&](std::vector<Change> *changes) { Decide(path, call.arguments, changes); };
  // What is not there needs no right to write.
  std::vector<Change> changes = ReadBefore(level, path, names);
  decide(&changes);
  if (!call.settings.dryRun && std::ranges::any_of(changes, &Change::changes)) {
    SayWhoseStore(call.settings, level);
    changes = ChangeAtOnce(level, path, names, decide);
  }
  return ReportChanges(path, changes, call.settings, call.out);
}

}  // namespace

Verb const kPrefsUnset = {
    .group = "prefs",
    .name = "unset",
    .operands = "SECTION NAME...",
    .summary = "remove values",
    .options = {OptionId::ifValue},
    .least = 2,
    .most = kAnyNumber,
    .run = Unset,
    .description =
        "Removes values from the store of -L, all in one transaction, and says what they were. A\n"
        "value that was not set is no failure. With --if every one of them must hold that text; "
        "else\n"
        "nothing is removed and the end is 1.",
    .examples =
        "  zolt prefs unset Audio Volume Mute\n"
        "  zolt prefs unset -n Audio Volume\n"
        "  zolt prefs unset Lock Holder --if \"$$\"\n",
};

}  // namespace zolt::tool
