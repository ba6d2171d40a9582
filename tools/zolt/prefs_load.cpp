#include <exception>
#include <optional>
#include <string>
#include <utility>
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

constexpr char kInput[] = "standard input";

// What is agreed to before anybody is kept from writing, and holds while that is so.
class Agreement {
 public:
  Agreement(Call const &call, PreferenceText const &text)
      : call_(call), text_(text), undo_(call.arguments.Value(OptionId::undo)) {}

  StoreUpdate Look(Progress *progress) const {
    return UpdateOf(text_, call_.arguments.Has(OptionId::replace), progress);
  }

  void Ask(StoreUpdate const &update) {
    unnamed_ = update.unnamed();
    if (unnamed_ > 0) {
      std::string_view const file = call_.operands[0] == "-" ? kInput : call_.operands[0];
      Confirm("remove " + std::to_string(unnamed_) + (unnamed_ == 1 ? " value" : " values") +
                  " that " + std::string(file) + " does not name",
              call_.settings);
    }
    if (undo_.empty() || !IsThere(undo_)) return;
    // It may be the way back from before.
    if (IsSameFile(undo_, std::string(call_.operands[0]))) {
      Refuse(undo_, "is the file that is loaded");
    }
    Confirm("write over " + undo_, call_.settings);
  }

  // False if somebody has made it more than was agreed to.
  bool Covers(StoreUpdate const &update) const { return update.unnamed() <= unnamed_; }

  // Takes the place of an older one only when there is something to undo.
  void SecureUndo(StoreUpdate const &update) {
    if (undo_.empty() || !update.any()) return;
    undoFile_.emplace(undo_);
    WriteUndo(*text_.level, update, undoFile_->out());
    undoFile_->Secure();
  }
  void KeepUndo() {
    if (undoFile_) undoFile_->Finish();
  }

 private:
  Call const &call_;
  PreferenceText const &text_;
  std::string undo_;
  std::optional<OutputFile> undoFile_;
  size_t unnamed_ = 0;
};

class MoreThanAgreed : public std::exception {};

// Gives up what was seen before it looks again, and then the text: many values are held once.
StoreUpdate Write(PreferenceText *text, StoreUpdate seen, Agreement *agreement,
                  Progress *progress) {
  std::vector<SectionPath> named;
  named.reserve(text->sections.size());
  for (TextSection const &section : text->sections) named.push_back(section.path);
  std::vector<SectionPath const *> paths;
  paths.reserve(named.size());
  for (SectionPath const &path : named) paths.push_back(&path);
  std::string const work = "writing " + std::to_string(seen.changes()) + " values";
  seen = {};
  StoreUpdate update = WriteUpdate(*text->level, paths, [&] {
    StoreUpdate now = agreement->Look(nullptr);
    if (!agreement->Covers(now)) throw MoreThanAgreed();
    agreement->SecureUndo(now);
    text->sections.clear();
    progress->Begin(work);
    return now;
  });
  agreement->KeepUndo();
  return update;
}

int Load(Call const &call) {
  if (call.arguments.Has(OptionId::undo)) {
    std::string_view const undo = call.arguments.Value(OptionId::undo);
    if (undo.empty() || undo == "-") Refuse("--undo", "names no file");
  }
  PrepareLibrary(call.arguments, call.settings);
  return LoadText(TextFrom(call, call.operands[0]), call);
}

}  // namespace

int LoadText(PreferenceText text, Call const &call) {
  Level const &level = *text.level;
  Agreement agreement(call, text);
  for (bool said = false;; said = true) {
    StoreUpdate update;
    {
      Progress progress(call.settings, "comparing");
      update = agreement.Look(&progress);
    }
    if (call.settings.dryRun || !update.any()) return ReportUpdate(update, level, call);
    agreement.Ask(update);
    if (!said) SayWhoseStore(call.settings, level);
    if (!said) SayMissingSections(PathsOf(update), kIsNew, call.settings);
    try {
      Progress progress(call.settings, "writing");
      update = Write(&text, std::move(update), &agreement, &progress);
    } catch (MoreThanAgreed const &) {
      continue;
    }
    return ReportUpdate(update, level, call);
  }
}

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
