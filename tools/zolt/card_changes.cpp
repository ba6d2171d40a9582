#include "tools/zolt/card_changes.h"

#include <algorithm>

#include "tools/zolt/card_blob.h"
#include "tools/zolt/card_documents.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

std::string Told(std::optional<CardProperty> const &property) {
  if (!property) return "unset";
  std::string const text = ColumnOfProperty(*property, true);
  return text.empty() ? "\"\"" : text;
}

std::string LineOf(CardChange const &change, bool dryRun) {
  std::string line = LabelOf(change.after ? *change.after : *change.before) + ": ";
  if (!change.changes()) return line + "unchanged";
  line += Told(change.before) + " -> " + Told(change.after);
  return dryRun ? line + " (not written)" : line;
}

// Of the same name and flags, and not yet taken.
auto FindLike(std::vector<CardProperty> &rest, CardProperty const &property) {
  return std::ranges::find_if(rest, [&property](CardProperty const &other) {
    return SameName(other.name, property.name) && other.flags == property.flags;
  });
}

// The type of text is that of the form in which the card is.
bool SaysTheSame(CardProperty const &a, CardProperty const &b) {
  if (a == b) return true;
  if (a.name != b.name || a.flags != b.flags) return false;
  std::optional<std::string> const text = TextOfProperty(a);
  return text ? text == TextOfProperty(b) : a.type == b.type && SamePreferences(a, b);
}

}  // namespace

std::string LabelOf(CardProperty const &property) {
  std::string const flags = FlagsText(property.flags);
  return ToUtf8(property.name) + (flags.empty() ? "" : " " + flags);
}

char const *KindOf(CardChange const &change) {
  if (!change.after) return "removed";
  return change.before ? "modified" : "created";
}

std::vector<CardChange> DifferenceOf(std::vector<CardProperty> const &from,
                                     std::vector<CardProperty> const &to) {
  std::vector<CardProperty> added = to;
  std::vector<CardProperty> gone;
  for (CardProperty const &property : from) {
    auto const same = std::ranges::find_if(
        added, [&property](CardProperty const &other) { return SaysTheSame(property, other); });
    if (same == added.end()) {
      gone.push_back(property);
    } else {
      added.erase(same);
    }
  }
  std::vector<CardChange> changes;
  for (CardProperty const &property : gone) {
    CardChange change{property, {}};
    auto const like = FindLike(added, property);
    if (like != added.end()) {
      change.after = *like;
      added.erase(like);
    }
    changes.push_back(std::move(change));
  }
  for (CardProperty const &property : added) changes.push_back({{}, property});
  return changes;
}

int ReportCardChanges(std::vector<CardChange> const &changes, Call const &call) {
  Settings const &settings = call.settings;
  if (settings.json) {
    call.out.Write(CardChangesDocument(changes));
  } else if (!settings.quiet) {
    for (CardChange const &change : changes) WriteError(Escape(LineOf(change, settings.dryRun)));
  }
  bool const any = std::ranges::any_of(changes, &CardChange::changes);
  return settings.dryRun && settings.exitCode && any ? kNo : kDone;
}

}  // namespace zolt::tool
