#include <algorithm>

#include "tools/zolt/card_blob.h"
#include "tools/zolt/card_changes.h"
#include "tools/zolt/card_documents.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/table.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

std::string Side(std::optional<CardProperty> const &property, bool brief) {
  return property ? ColumnOfProperty(*property, brief) : "";
}

int Diff(Call const &call) {
  std::unique_ptr<CallCard> const from = LoadCard(call, call.operands[0]);
  std::unique_ptr<CallCard> const to = LoadCard(call, call.operands[1]);
  std::vector<CardChange> const changes =
      DifferenceOf(ComparedProperties(from.get()), ComparedProperties(to.get()));
  if (call.settings.json) {
    call.out.Write(CardChangesDocument(changes));
    return changes.empty() ? kDone : kNo;
  }
  Table table(call.settings, call.out, 5);
  bool const brief = call.out.terminal();
  for (CardChange const &change : changes) {
    CardProperty const &property = change.after ? *change.after : *change.before;
    table.Add({KindOf(change), ToUtf8(property.name), FlagsText(property.flags),
               Side(change.before, brief), Side(change.after, brief)});
  }
  table.Finish();
  return changes.empty() ? kDone : kNo;
}

}  // namespace

Verb const kCardDiff = {
    .group = "card",
    .name = "diff",
    .operands = "A B",
    .summary = "what differs between two cards",
    .options = {},
    .least = 2,
    .most = 2,
    .run = Diff,
    .description =
        "Lists change, name, flags, and the value in A and in B of what differs, and ends with 1\n"
        "if something does. The order of properties does not matter, nor in which form a card is,\n"
        "nor whether it has a property for preferences without any in it.",
    .examples = "  zolt card diff old.card new.card\n",
};

}  // namespace zolt::tool
