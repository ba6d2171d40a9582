#include "tools/zolt/change.h"

#include <algorithm>

#include "tools/zolt/documents.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

std::string Told(Change const &change, bool dryRun) {
  if (!change.changes()) {
    return change.after.kind == Kind::absent ? "was not set" : "unchanged";
  }
  std::string text = Describe(change.before) + " -> " + Describe(change.after);
  if (dryRun) text += " (not written)";
  return text;
}

}  // namespace

std::string ValueName(std::string_view operand) {
  if (operand.empty()) Refuse("", "the name of a value is empty");
  return ToLocal(operand);
}

std::string Subject(SectionPath const &path, std::string const &name) {
  return path.Text() + " " + Clip(ToUtf8(name), 200);
}

int ReportChanges(SectionPath const &path, std::vector<Change> const &changes,
                  Settings const &settings, Output &out) {
  if (settings.json) {
    out.Write(ChangesDocument(path, *settings.level, changes));
  } else if (!settings.quiet) {
    for (Change const &change : changes) {
      WriteError(Escape(Subject(path, change.name) + ": " + Told(change, settings.dryRun)));
    }
  }
  bool const any = std::ranges::any_of(changes, &Change::changes);
  return settings.dryRun && settings.exitCode && any ? kNo : kDone;
}

}  // namespace zolt::tool
