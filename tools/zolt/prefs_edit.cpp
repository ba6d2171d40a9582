#include <unordered_map>
#include <utility>
#include <vector>

#include "tools/zolt/editor.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/preference_text.h"
#include "tools/zolt/progress.h"
#include "tools/zolt/store_snapshot.h"
#include "tools/zolt/text.h"
#include "tools/zolt/text_update.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

using Values = std::unordered_map<std::string, TextValue const *>;

Values ByName(TextSection const &section) {
  Values values;
  for (TextValue const &value : section.values) values.emplace(Folded(value.name), &value);
  return values;
}

// What is different in a section of the edited text; what is not named in it any more is unset.
TextSection Difference(TextSection const *before, TextSection const &after) {
  TextSection changed = {.path = after.path, .onlyThere = after.onlyThere, .place = after.place};
  Values const old = before == nullptr ? Values() : ByName(*before);
  Values const now = ByName(after);
  for (TextValue const &value : after.values) {
    auto const found = old.find(Folded(value.name));
    MaybeRaw const held = found == old.end() ? MaybeRaw() : found->second->value;
    if (held != value.value) changed.values.push_back(value);
  }
  for (auto const &[name, value] : old)
    if (!now.contains(name)) changed.values.push_back({value->name, {}});
  return changed;
}

// What somebody has changed in a text, and nothing else: what others have written meanwhile stays.
PreferenceText Difference(PreferenceText const &before, PreferenceText const &after) {
  PreferenceText patch = {before.level, {}};
  std::unordered_map<std::string, TextSection const *> old;
  for (TextSection const &section : before.sections) old.emplace(section.path.Key(), &section);
  for (TextSection const &section : after.sections) {
    auto const found = old.find(section.path.Key());
    TextSection const *const known = found == old.end() ? nullptr : found->second;
    TextSection changed = Difference(known, section);
    if (known == nullptr || !changed.values.empty()) patch.sections.push_back(std::move(changed));
    if (known != nullptr) old.erase(found);
  }
  for (auto const &[key, section] : old) {
    TextSection const changed = Difference(section, {.path = section->path});
    if (!changed.values.empty()) patch.sections.push_back(changed);
  }
  return patch;
}

int Edit(Call const &call) {
  SectionPath const path = SectionPath::FromOperand(call.operands[0]);
  PrepareLibrary(call.arguments, call.settings);
  Level const &level = *call.settings.level;
  PreferenceText before = {&level, {}};
  {
    Progress progress(call.settings, "reading");
    before.sections = SnapshotOf(level, path, Exclusions({}), &progress);
  }
  EditedText text("preferences.txt");
  {
    OutputFile file(text.file());
    file.out().Write(TextOf(before));
    file.Finish();
  }
  text.Edit();
  return text.Apply([&] {
    PreferenceText const after = ReadPreferenceText(ReadInput(text.file()), "the edited text");
    if (after.level != &level) Refuse("the edited text", "names another store", "use prefs load");
    return LoadText(Difference(before, after), call);
  });
}

}  // namespace

Verb const kPrefsEdit = {
    .group = "prefs",
    .name = "edit",
    .operands = "SECTION",
    .summary = "change a section in an editor",
    .options = {},
    .least = 1,
    .most = 1,
    .run = Edit,
    .description =
        "Opens what prefs dump says of the section, and of those below it, in VISUAL or EDITOR, "
        "and\n"
        "writes what you have changed, in one transaction: a value whose line is gone is removed,\n"
        "and what others write meanwhile stays. A text that cannot be read is kept, and nothing "
        "is\n"
        "written.",
    .examples =
        "  zolt prefs edit Audio\n"
        "  EDITOR=nano zolt prefs edit Conferencing\n"
        "  zolt -L system prefs edit -n Audio\n",
};

}  // namespace zolt::tool
