#include "tools/zolt/documents.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/table.h"
#include "tools/zolt/text.h"
#include "tools/zolt/text_update.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

char const *KindOf(ValueUpdate const &value) {
  if (!value.after) return "removed";
  return value.before ? "modified" : "created";
}

void WriteTable(StoreUpdate const &update, Call const &call) {
  Table table(call.settings, call.out, 5);
  bool const brief = call.out.terminal();
  for (SectionUpdate const &section : update.sections) {
    if (section.made) table.Add({section.path.Text(), "created", "", "", ""});
    for (ValueUpdate const &value : section.values) {
      table.Add({section.path.Text(), KindOf(value), ToUtf8(value.name),
                 Column(Interpreted(value.before), brief),
                 Column(Interpreted(value.after), brief)});
    }
  }
  table.Finish();
}

int Diff(Call const &call) {
  bool const patch = call.arguments.Has(OptionId::patch);
  if (patch && call.settings.json) Refuse("", "--patch and --json exclude each other");
  PrepareLibrary(call.arguments, call.settings);
  PreferenceText const text = TextFrom(call, call.operands[0]);
  StoreUpdate update;
  {
    Progress progress(call.settings, "comparing");
    update = UpdateOf(text, call.arguments.Has(OptionId::replace), &progress);
  }
  if (patch) {
    WritePatch(*text.level, update, call.out);
  } else if (call.settings.json) {
    WriteUpdateDocument(update, *text.level, call.out);
  } else {
    WriteTable(update, call);
  }
  return update.any() ? kNo : kDone;
}

}  // namespace

Verb const kPrefsDiff = {
    .group = "prefs",
    .name = "diff",
    .operands = "FILE",
    .summary = "what prefs load would change",
    .options = {OptionId::replace, OptionId::patch},
    .least = 1,
    .most = 1,
    .run = Diff,
    .description =
        "Lists section, change, name, old and new value of what prefs load FILE would change, and\n"
        "ends with 1 if there is something; a section that is made has no name behind it. With "
        "--replace, what that would remove, too. With\n"
        "--patch it is a text that prefs load takes.",
    .examples =
        "  zolt prefs diff settings.txt\n"
        "  zolt prefs diff settings.txt --patch > changes.txt\n",
};

}  // namespace zolt::tool
