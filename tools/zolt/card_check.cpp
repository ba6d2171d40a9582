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

int Check(Call const &call) {
  std::string const path(call.operands[0]);
  NeedSectionNames(call);
  std::vector<CardDamage> const damage = DamageOf(path, ReadInput(path));
  if (call.settings.json) {
    call.out.Write(DamageDocument(path, damage));
  } else {
    for (CardDamage const &each : damage)
      call.out.Write(Escape(path + ": " + each.place + ": " + each.what) + "\n");
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
        "Reads a card file or card text and tells what keeps it from being read whole: 0 if it is\n"
        "sound, 4 if something is lost, 1 if it can be read and is not as it should be.",
    .examples = "  zolt card check anna.card\n",
};

}  // namespace zolt::tool
