#include <algorithm>
#include <string>
#include <vector>

#include "tools/zolt/confirm.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/progress.h"
#include "tools/zolt/section_key.h"
#include "tools/zolt/text_update.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

// Looks at the store, asks what has to be asked, and saves the way back.
class Looker {
 public:
  Looker(Call const &call, PreferenceText const &text)
      : call_(call),
        text_(text),
        replace_(call.arguments.Has(OptionId::replace)),
        undo_(call.arguments.Value(OptionId::undo)) {}

  StoreUpdate Look() {
    StoreUpdate update = UpdateOf(text_, replace_);
    // Again only if it has become more while others wrote.
    size_t const unnamed = update.unnamed();
    if (unnamed > agreed_) {
      Confirm("remove " + std::to_string(unnamed) + (unnamed == 1 ? " value" : " values") +
                  " that " + std::string(call_.operands[0]) + " does not name",
              call_.settings);
      agreed_ = unnamed;
    }
    if (!undo_.empty() && !call_.settings.dryRun) SaveUndo(update);
    return update;
  }

 private:
  // Nothing that is there goes, unless that is agreed to: it may be the way back from before.
  void SaveUndo(StoreUpdate const &update) {
    if (update.sections.empty()) return;
    if (!mayOverwrite_ && IsThere(undo_)) {
      if (IsSameFile(undo_, std::string(call_.operands[0]))) {
        Refuse(undo_, "is the file that is loaded");
      }
      Confirm("write over " + undo_, call_.settings);
    }
    mayOverwrite_ = true;
    OutputFile file(undo_);
    file.out().Write(UndoOf(*text_.level, update));
    file.Finish();
  }

  Call const &call_;
  PreferenceText const &text_;
  bool replace_;
  std::string undo_;
  size_t agreed_ = 0;
  bool mayOverwrite_ = false;
};

int Load(Call const &call) {
  if (call.arguments.Has(OptionId::undo)) {
    std::string_view const undo = call.arguments.Value(OptionId::undo);
    if (undo.empty() || undo == "-") Refuse("--undo", "names no file");
  }
  PrepareLibrary(call.arguments, call.settings);
  PreferenceText const text = TextFrom(call, call.operands[0]);
  Looker looker(call, text);
  StoreUpdate update = looker.Look();
  if (!call.settings.dryRun && !update.sections.empty()) {
    SayWhoseStore(call.settings, *text.level);
    std::vector<SectionPath const *> paths;
    for (SectionUpdate const &section : update.sections) paths.push_back(&section.path);
    SayNewSections(paths, call.settings);
    Progress const progress(call.settings,
                            "writing " + std::to_string(update.changes()) + " values");
    update = WriteUpdate(*text.level, std::move(update), [&looker] { return looker.Look(); });
  }
  return ReportUpdate(update, *text.level, call);
}

}  // namespace

Verb const kPrefsLoad = {
    .group = "prefs",
    .name = "load",
    .operands = "FILE",
    .summary = "write what a text of prefs dump says",
    .options = {OptionId::replace, OptionId::undo},
    .least = 1,
    .most = 1,
    .run = Load,
    .description =
        "Reads FILE, or with - standard input, and writes what differs in one transaction: all of\n"
        "it or nothing. It goes to the store that the file names, or to that of -L. The whole "
        "file\n"
        "is checked before anything is written. A line `unset NAME` removes a value, # begins a\n"
        "comment. What the file does not name stays, but for --replace, which removes it in the\n"
        "sections that the file names, and needs a yes.",
    .examples =
        "  zolt prefs load settings.txt\n"
        "  zolt prefs load -n settings.txt\n"
        "  zolt prefs load settings.txt --replace -y --undo before.txt\n"
        "  sudo zolt -L system prefs load settings.txt\n",
};

}  // namespace zolt::tool
