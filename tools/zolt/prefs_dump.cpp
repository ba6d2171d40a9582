#include <utility>
#include <vector>

#include "tools/zolt/documents.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/preference_text.h"
#include "tools/zolt/progress.h"
#include "tools/zolt/store_snapshot.h"
#include "tools/zolt/text.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

void DumpTo(Output &out, SectionPath const &path, Call const &call) {
  Level const &level = *call.settings.level;
  Exclusions const exclusions(call.arguments.Values(OptionId::exclude));
  std::vector<TextSection> sections;
  {
    Progress progress(call.settings, "reading");
    sections = SnapshotOf(level, path, exclusions, &progress);
  }
  for (std::string const &pattern : exclusions.Unused()) {
    if (!call.settings.quiet) {
      WriteError("zolt: " + Escape("--exclude " + pattern + " matches nothing"));
    }
  }
  if (call.settings.json) {
    ValuesDocument document(out);
    for (TextSection const &section : sections) document.Add(section, level);
    document.Finish();
    return;
  }
  out.Write(TextHead(level));
  for (TextSection const &section : sections) out.Write(TextOf(section));
  out.Write(TextEnd());
}

int Dump(Call const &call) {
  SectionPath const path =
      call.operands.empty() ? SectionPath() : SectionPath::FromOperand(call.operands[0]);
  std::string const file(call.arguments.Value(OptionId::output));
  if (call.arguments.Has(OptionId::output) && file.empty()) Refuse("-o", "names no file");
  PrepareLibrary(call.arguments, call.settings);
  if (file.empty() || file == "-") {
    DumpTo(call.out, path, call);
  } else {
    OutputFile target(file);
    DumpTo(target.out(), path, call);
    target.Finish();
  }
  return kDone;
}

}  // namespace

Verb const kPrefsDump = {
    .group = "prefs",
    .name = "dump",
    .operands = "[SECTION]",
    .summary = "a store as a text that can be read, edited and loaded",
    .options = {OptionId::exclude, OptionId::output},
    .least = 0,
    .most = 1,
    .run = Dump,
    .description =
        "Writes all that the store of -L holds, or SECTION with all below it, as UTF-8 text: one\n"
        "value a line, sorted, the same for the same store. prefs load takes it back to the byte.\n"
        "A section that is left out takes with it what lies below. With --json it is a list of\n"
        "values.",
    .examples =
        "  zolt prefs dump > settings.txt\n"
        "  zolt prefs dump Audio --exclude '*:Recent*' -o audio.txt\n"
        "  zolt -L system prefs dump | ssh other zolt -L system prefs load -\n",
};

}  // namespace zolt::tool
