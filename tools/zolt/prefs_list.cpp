#include <algorithm>
#include <iterator>

#include "tools/zolt/chain_read.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/table.h"
#include "tools/zolt/text.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

using Entries = std::vector<Entry>;

void AddSections(SectionPath const &path, std::vector<SectionKey> const &keys, Entries *entries) {
  for (FoundName const &found : NamesAlong(keys, &SectionKey::SectionNames)) {
    entries->push_back({path, found.name, found.level, {}, true});
  }
}

void AddTree(SectionPath const &path, std::vector<SectionKey> const &keys, Entries *entries) {
  std::ranges::move(ValuesAlong(path, keys), std::back_inserter(*entries));
  // No program makes a deeper tree.
  if (path.names().size() >= 512) return;
  for (FoundName const &found : NamesAlong(keys, &SectionKey::SectionNames)) {
    AddTree(path.Below(found.name), AllBelow(keys, found.name), entries);
  }
}

Entries EntriesOf(SectionPath const &path, std::vector<SectionKey> const &keys, bool recursive) {
  Entries entries;
  if (recursive) {
    AddTree(path, keys, &entries);
  } else {
    entries = ValuesAlong(path, keys);
    AddSections(path, keys, &entries);
  }
  return entries;
}

void WriteTable(Entries const &entries, bool recursive, Call const &call) {
  Table table(call.settings, call.out, recursive ? 3 : 2);
  for (Entry const &entry : entries) {
    std::vector<std::string> row;
    if (recursive) row.push_back(entry.section.Text());
    row.push_back(ToUtf8(entry.name));
    row.push_back(Column(entry.value, call.out.terminal()));
    row.emplace_back(entry.isSection ? "section" : NameOf(entry.value.kind));
    row.emplace_back(entry.level->name);
    table.Add(std::move(row));
  }
  table.Finish();
}

int List(Call const &call) {
  bool const recursive = call.arguments.Has(OptionId::recursive);
  SectionPath const path =
      call.operands.empty() ? SectionPath() : SectionPath::FromOperand(call.operands[0]);
  PrepareLibrary(call.arguments, call.settings);
  std::vector<Level const *> const levels = ReadLevels(call.settings);
  std::vector<SectionKey> const keys = OpenAlong(levels, path);
  if (!Exists(path, keys)) FailWithoutSection(levels, path);
  Entries const entries = EntriesOf(path, keys, recursive);
  if (call.settings.json) {
    call.out.Write(EntriesDocument(entries));
  } else {
    WriteTable(entries, recursive, call);
  }
  return kDone;
}

}  // namespace

Verb const kPrefsList = {
    .group = "prefs",
    .name = "list",
    .operands = "[SECTION]",
    .summary = "the values of a section",
    .options = {OptionId::recursive},
    .least = 0,
    .most = 1,
    .run = List,
    .description =
        "Lists name, value, kind (text, bytes or unreadable) and the level that answers. Without\n"
        "SECTION it lists the top of the tree. The sections in it follow, of kind section; with "
        "-r\n"
        "what lies below is listed instead, and each line begins with the section.",
    .examples =
        "  zolt prefs list Audio\n"
        "  zolt prefs list -r Conferencing\n"
        "  zolt prefs list -r --json\n",
};

}  // namespace zolt::tool
