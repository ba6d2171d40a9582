#include <algorithm>

#include "tools/zolt/card_changes.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

constexpr uint32_t kNone = 0xFFFFFFFF;

// The property that is replaced: the one of that name and exactly these flags, or without flags the
// only one of that name.
uint32_t Place(std::vector<CardProperty> const &properties, std::string const &name,
               std::optional<uint32_t> flags) {
  uint32_t place = kNone;
  for (uint32_t i = 0; i < properties.size(); i++) {
    CardProperty const &property = properties[i];
    if (!SameName(property.name, name) || (flags && property.flags != *flags)) continue;
    if (!flags && place != kNone) {
      Refuse(name, "the card has several of this name", "say which one with --flags");
    }
    if (place == kNone) place = i;
  }
  return place;
}

CardChange SetOne(CallCard *card, Call const &call, std::string_view nameOperand,
                  std::string_view valueOperand) {
  std::optional<uint32_t> const flags = FlagsOption(call.arguments);
  std::string const name = PropertyName(nameOperand);
  std::vector<CardProperty> const properties = PropertiesOf(card);
  uint32_t const place = Place(properties, name, flags);
  CardChange change;
  if (place != kNone) change.before = properties[place];
  CardProperty after;
  after.name = change.before ? change.before->name : name;
  after.type = TypeOption(call.arguments).value_or(PropertyUnicode);
  after.flags = flags ? *flags : change.before ? change.before->flags : 0;
  after.value = PropertyValue(after.type, valueOperand);
  change.after = after;
  auto const size = static_cast<int32_t>(after.value.size());
  bool const put = place == kNone ? card->AddProp(after.name.c_str(), after.type, after.flags,
                                                  after.value.data(), size) != kNone
                                  : card->SetPropA(place, after.name.c_str(), after.type,
                                                   after.flags, after.value.data(), size) != 0;
  if (!put) throw std::bad_alloc();
  return change;
}

int Set(Call const &call) {
  auto const pairs = call.operands.subspan(1);
  if (pairs.size() % 2 != 0) {
    Refuse("", "card set takes names and values in pairs",
           "usage: zolt card set FILE NAME VALUE [NAME VALUE]...");
  }
  EditedCard edited(call, call.operands[0]);
  std::vector<CardChange> changes;
  for (size_t i = 0; i < pairs.size(); i += 2)
    changes.push_back(SetOne(edited.card(), call, pairs[i], pairs[i + 1]));
  bool const any = std::ranges::any_of(changes, &CardChange::changes);
  if (any && !call.settings.dryRun) edited.Save();
  return ReportCardChanges(changes, call);
}

}  // namespace

Verb const kCardSet = {
    .group = "card",
    .name = "set",
    .operands = "FILE NAME VALUE [NAME VALUE]...",
    .summary = "write properties of a card",
    .options = {OptionId::flags, OptionId::type},
    .least = 3,
    .most = kAnyNumber,
    .run = Set,
    .description =
        "Writes properties and says what they were. Of several with one name --flags says which;\n"
        "one that the card does not have is added. Values are 16-bit text unless --type says\n"
        "ascii, url, datetime or location for local text, or sound, bitmap, timezone, template or\n"
        "data for bytes: @FILE, - for standard input, or digits behind 0x. What card text cannot\n"
        "hold needs a yes.",
    .examples =
        "  zolt card set anna.card FN 'Anna Bell' ORG Northwind\n"
        "  zolt card set anna.card TEL 5551234 --flags WORK,VOICE\n"
        "  zolt card set anna.card PHOTO @anna.jpg --type bitmap\n",
};

}  // namespace zolt::tool
