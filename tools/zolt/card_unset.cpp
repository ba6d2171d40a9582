#include "tools/zolt/card_changes.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

int Unset(Call const &call) {
  uint32_t const flags = FlagsOption(call.arguments).value_or(0);
  std::vector<std::string> names;
  for (std::string_view const operand : call.operands.subspan(1))
    names.push_back(PropertyName(operand));
  EditedCard edited(call, call.operands[0]);
  CallCard *const card = edited.card();
  std::vector<CardChange> changes;
  for (std::string const &name : names) {
    std::vector<CardProperty> const properties = PropertiesOf(card);
    for (size_t i = properties.size(); i-- > 0;) {
      CardProperty const &property = properties[i];
      if (!SameName(property.name, name) || (property.flags & flags) != flags) continue;
      card->DeleteProp(static_cast<uint32_t>(i));
      changes.push_back({property, {}});
    }
  }
  if (!changes.empty() && !call.settings.dryRun) edited.Save();
  return ReportCardChanges(changes, call);
}

}  // namespace

Verb const kCardUnset = {
    .group = "card",
    .name = "unset",
    .operands = "FILE NAME...",
    .summary = "remove properties of a card",
    .options = {OptionId::flags},
    .least = 2,
    .most = kAnyNumber,
    .run = Unset,
    .description =
        "Removes every property of that name which has all flags given, and says what they were.\n"
        "One that the card does not have is no failure.",
    .examples = "  zolt card unset anna.card TEL --flags HOME\n",
};

}  // namespace zolt::tool
