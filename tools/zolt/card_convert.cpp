#include "tools/zolt/card_source.h"
#include "tools/zolt/card_text_loss.h"
#include "tools/zolt/confirm.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/outcome.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

int32_t FormatFrom(Arguments const &arguments) {
  if (!arguments.Has(OptionId::to)) Refuse("card convert", "needs --to card or --to text");
  std::string_view const word = arguments.Value(OptionId::to);
  if (word == "card") return CardFormatBinary;
  if (word == "text") return CardFormatText;
  Refuse("--to " + std::string(word), "no such form", "it is card or text");
}

int Convert(Call const &call) {
  int32_t const format = FormatFrom(call.arguments);
  std::string const out(call.operands[1]);
  std::unique_ptr<CallCard> const card = LoadRestOfCard(call, call.operands[0]);
  if (format == CardFormatText) {
    NeedSectionNames(call);
    ConfirmLossInText(card.get(), call.settings);
  }
  if (IsThere(out)) Confirm("write over " + out, call.settings);
  if (!call.settings.dryRun) SaveCardAs(card.get(), format, out, call.settings.wait);
  return TellFile(out, call);
}

}  // namespace

Verb const kCardConvert = {
    .group = "card",
    .name = "convert",
    .operands = "FILE OUT",
    .summary = "write a card in another form",
    .options = {OptionId::to},
    .least = 2,
    .most = 2,
    .run = Convert,
    .description =
        "Writes the card of FILE, in either form, to OUT: as a card file (--to card) or as card\n"
        "text (--to text). To write over a file needs a yes, and so does what text cannot hold;\n"
        "docs/formats/card_losses.md tells of it. Of a damaged card what is left is written, "
        "which\n"
        "needs a yes, too.",
    .examples =
        "  zolt card convert anna.card --to text anna.txt\n"
        "  zolt card convert anna.txt --to card anna.card\n",
};

}  // namespace zolt::tool
