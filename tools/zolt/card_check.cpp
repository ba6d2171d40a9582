#include <algorithm>

#include "tools/zolt/card_damage.h"
#include "tools/zolt/card_documents.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/text.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

std::string LineOf(std::string const &path, CardDamage const &damage) {
  return path + ": " + (damage.place.empty() ? "" : damage.place + ": ") + damage.what;
}

int Check(Call const &call) {
  std::string const path(call.operands[0]);
  NeedSectionNames(call);
  std::vector<CardDamage> const damage =
      DamageOf(path == "-" ? ReadInput(path) : ReadPlainFile(path));
  if (call.settings.json) {
    call.out.Write(DamageDocument(path, damage));
  } else {
    for (CardDamage const &each : damage) call.out.Write(Escape(LineOf(path, each)) + "\n");
    if (damage.empty() && !call.settings.quiet) WriteError("zolt: " + Escape(path) + ": sound");
  }
  if (std::ranges::any_of(damage, &CardDamage::lost)) return kDamaged;
  return damage.empty() ? kDone : kNo;
}

}  // namespace

Verb const kCardCheck = {
    .group = "card",
    .name = "check",
    .operands = "FILE",
    .summary = "say what is damaged in a card, and where",
    .options = {},
    .least = 1,
    .most = 1,
    .run = Check,
    .description =
        "Reads a card file or card text, of standard input with -, and tells what\n"
        "keeps it from being read whole: 0 if it is sound, 4 if something is lost or it is no "
        "card\n"
        "at all, 1 if it can be read and is not as it should be. A card that is not sound is not\n"
        "changed by the other commands, and one of which something is lost not read, but for\n"
        "card convert, which saves what is left.",
    .examples = "  zolt card check anna.card\n",
};

}  // namespace zolt::tool
