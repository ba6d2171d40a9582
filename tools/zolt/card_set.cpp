#include <algorithm>
#include <new>

#include "tools/zolt/card_changes.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/card_text_loss.h"
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
    if (place != kNone) {
      Refuse(name,
             flags ? "the card has several of this name and these flags"
                   : "the card has several of this name",
             flags ? "card unset removes them, --add puts another one beside them"
                   : "say which one with --flags, or put another one beside them with --add");
    }
    place = i;
  }
  return place;
}

CardProperty PropertyFrom(Call const &call, std::string const &name, uint32_t flags,
                          std::string_view valueOperand) {
  CardProperty property;
  property.name = name;
  property.type = TypeOption(call.arguments).value_or(PropertyUnicode);
  property.flags = flags;
  property.value = PropertyValue(property.type, valueOperand);
  return property;
}

// In the place of one, or at the end.
void Put(CallCard *card, uint32_t place, CardProperty const &property) {
  auto const size = static_cast<int32_t>(property.value.size());
  bool const put = place == kNone
                       ? card->AddProp(property.name.c_str(), property.type, property.flags,
                                       property.value.data(), size) != kNone
                       : card->SetPropA(place, property.name.c_str(), property.type, property.flags,
                                        property.value.data(), size) != 0;
  if (!put) throw std::bad_alloc();
}

// Whether it would say the same in the card's file, which as text does not tell all types.
bool IsSame(CallCard *card, CardProperty const &a, CardProperty const &b) {
  return card->Format() == CardFormatText ? AsFromText(a) == AsFromText(b) : a == b;
}

CardChange SetOne(CallCard *card, Call const &call, std::string_view nameOperand,
                  std::string_view valueOperand) {
  std::optional<uint32_t> const flags = FlagsOption(call.arguments);
  std::string const name = PropertyName(nameOperand);
  std::vector<CardProperty> const properties = PropertiesOf(card);
  uint32_t const place = Place(properties, name, flags);
  CardChange change;
  if (place != kNone) change.before = properties[place];
  change.after =
      PropertyFrom(call, change.before ? change.before->name : name,
                   flags.value_or(change.before ? change.before->flags : 0), valueOperand);
  if (change.before && IsSame(card, *change.before, *change.after))
    return {change.before, change.before};
  Put(card, place, *change.after);
  return change;
}

// Puts one beside those of its name, unless its like is there.
CardChange AddOne(CallCard *card, Call const &call, std::string_view nameOperand,
                  std::string_view value) {
  CardProperty const added =
      PropertyFrom(call, PropertyName(nameOperand), FlagsOption(call.arguments).value_or(0), value);
  for (CardProperty const &property : PropertiesOf(card)) {
    CardProperty like = added;
    like.name = property.name;
    if (SameName(property.name, added.name) && IsSame(card, property, like))
      return {property, property};
  }
  Put(card, kNone, added);
  return {{}, added};
}

int Set(Call const &call) {
  auto const pairs = call.operands.subspan(1);
  std::vector<std::string_view> const added = call.arguments.Values(OptionId::add);
  if (!added.empty() && pairs.size() != 1) {
    Refuse("", "--add goes with one name", "usage: zolt card set FILE NAME --add VALUE");
  }
  if (added.empty() && pairs.size() % 2 != 0) {
    Refuse("", "card set takes names and values in pairs",
           "usage: zolt card set FILE NAME VALUE [NAME VALUE]...");
  }
  EditedCard edited(call, call.operands[0]);
  std::vector<CardChange> changes;
  changes.reserve(added.size() + pairs.size() / 2);
  for (std::string_view const value : added)
    changes.push_back(AddOne(edited.card(), call, pairs[0], value));
  for (size_t i = 0; i + 1 < pairs.size(); i += 2)
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
    .options = {OptionId::flags, OptionId::type, OptionId::add},
    .least = 2,
    .most = kAnyNumber,
    .run = Set,
    .description =
        "Writes properties and says what they were. One that the card has gets the new value; of\n"
        "several with one name --flags says which; one that the card does not have is added. With\n"
        "--add the value goes beside those of its name, as a second number does, unless the card\n"
        "has just that. Values are 16-bit text unless --type says\n"
        "ascii, url, datetime or location for local text, or sound, bitmap, timezone, template or\n"
        "data for bytes: @FILE, - for standard input, or digits behind 0x. What card text cannot\n"
        "hold needs a yes.",
    .examples =
        "  zolt card set anna.card FN 'Anna Bell' ORG Northwind\n"
        "  zolt card set anna.card TEL 5551234 --flags WORK,VOICE\n"
        "  zolt card set anna.card TEL --add 5556789\n"
        "  zolt card set anna.card PHOTO @anna.jpg --type bitmap\n",
};

}  // namespace zolt::tool
