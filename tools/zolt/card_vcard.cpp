#include "tools/zolt/card_documents.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/confirm.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/outcome.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/scratch_folder.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

// Nothing of it is left in the file system, whatever becomes of the one who reads it.
std::string TextOf(CallCard *card, VCardProfile profile) {
  ScratchFolder const scratch;
  SaveVCard(card, profile, scratch.File("card.vcf"));
  return ReadInput(scratch.File("card.vcf"));
}

int VCard(Call const &call) {
  VCardProfile const profile = ProfileOption(call.arguments);
  std::string const file(call.arguments.Value(OptionId::output));
  if (call.arguments.Has(OptionId::output) && file.empty()) Refuse("-o", "names no file");
  std::unique_ptr<CallCard> const card = LoadCard(call, call.operands[0]);
  if (file.empty() || file == "-") {
    std::string const text = TextOf(card.get(), profile);
    call.out.Write(call.settings.json ? "{\"schema\":1,\"vcard\":" + JsonText(text) + "}\n" : text);
    return kDone;
  }
  if (IsThere(file)) Confirm("write over " + file, call.settings);
  if (!call.settings.dryRun) SaveVCard(card.get(), profile, file, call.settings.wait);
  return TellFile(file, call);
}

}  // namespace

Verb const kCardVCard = {
    .group = "card",
    .name = "vcard",
    .operands = "FILE",
    .summary = "a card for other address books",
    .options = {OptionId::profile, OptionId::output},
    .least = 1,
    .most = 1,
    .run = VCard,
    .description =
        "Writes the card as vCard: 3.0, which nearly every address book reads, 4.0, or classic,\n"
        "the form of old programs. docs/formats/vcard.md tells what each form loses.",
    .examples =
        "  zolt card vcard anna.card -o anna.vcf\n"
        "  zolt card vcard anna.card --profile 4.0\n",
};

}  // namespace zolt::tool
