#include <algorithm>

#include "tools/zolt/card_documents.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/near_name.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/text.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

CardProperty Find(CallCard *card, std::string const &name, uint32_t flags) {
  std::vector<CardProperty> const properties = PropertiesOf(card);
  uint32_t const index = card->FindProp(name.c_str(), flags, 0, 0, nullptr);
  if (index < properties.size()) return properties[index];
  std::vector<std::string> names(properties.size());
  std::ranges::transform(properties, names.begin(), &CardProperty::name);
  std::string const wanted = flags == 0 ? name : name + " " + FlagsText(flags);
  throw ToolError(kNo, "absent", wanted, "the card has no such property", DidYouMean(name, names));
}

void Write(CardProperty const &property, Settings const &settings, Output &out) {
  std::optional<std::string> const text = TextOfProperty(property);
  if (settings.json) {
    out.Write(PropertyDocument(property));
  } else if (!text) {
    out.Write(property.value);
  } else {
    out.Write(settings.nul ? *text + '\0' : Escape(*text) + '\n');
  }
}

int Get(Call const &call) {
  std::string const name = PropertyName(call.operands[1]);
  uint32_t const flags = FlagsOption(call.arguments).value_or(0);
  std::string const file(call.arguments.Value(OptionId::output));
  if (call.arguments.Has(OptionId::output) && file.empty()) Refuse("-o", "names no file");
  std::unique_ptr<CallCard> const card = LoadCard(call, call.operands[0]);
  CardProperty const property = Find(card.get(), name, flags);
  bool const bytes = !TextOfProperty(property) && !call.settings.json;
  if (bytes && file.empty() && call.out.terminal()) {
    Refuse(name, "bytes are not written to a terminal",
           "use -o FILE, or -o - to do it all the same");
  }
  if (file.empty() || file == "-") {
    Write(property, call.settings, call.out);
    return kDone;
  }
  OutputFile target(file);
  Write(property, call.settings, target.out());
  target.Finish();
  return kDone;
}

}  // namespace

Verb const kCardGet = {
    .group = "card",
    .name = "get",
    .operands = "FILE NAME",
    .summary = "print a property of a card",
    .options = {OptionId::flags, OptionId::output},
    .least = 2,
    .most = 2,
    .run = Get,
    .description =
        "Prints the first property of that name which has all flags given, and ends with 1 if\n"
        "there is none. Bytes are printed as they are, and not to a terminal.",
    .examples =
        "  zolt card get anna.card FN\n"
        "  zolt card get anna.card TEL --flags WORK\n"
        "  zolt card get anna.card PHOTO -o anna.jpg\n",
};

}  // namespace zolt::tool
