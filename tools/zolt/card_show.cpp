#include "tools/zolt/card_documents.h"
#include "tools/zolt/card_preferences.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/property_table.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

int Show(Call const &call) {
  std::unique_ptr<CallCard> const card = LoadCard(call, call.operands[0]);
  if (call.settings.json) {
    call.out.Write(CardDocument(card.get(), PreferencesOf(card.get())));
    return kDone;
  }
  WriteProperties(PropertiesOf(card.get()), call);
  return kDone;
}

}  // namespace

Verb const kCardShow = {
    .group = "card",
    .name = "show",
    .operands = "FILE",
    .summary = "the properties of a card",
    .options = {},
    .least = 1,
    .most = 1,
    .run = Show,
    .description =
        "Lists name, value, type and flags of each property of a card file or card text. The\n"
        "preferences that the card carries are shown by zolt card prefs FILE list, and with "
        "--json.",
    .examples =
        "  zolt card show anna.card\n"
        "  zolt card show anna.card --json\n",
};

}  // namespace zolt::tool
