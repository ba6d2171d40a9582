#include "tools/zolt/card_source.h"
#include "tools/zolt/confirm.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/outcome.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

int New(Call const &call) {
  std::string const path(call.operands[0]);
  if (IsThere(path)) Refuse(path, "exists");
  CallCard card(CardFormatBinary);
  if (!call.settings.dryRun) SaveCardAs(&card, CardFormatBinary, path);
  return TellFile(path, call);
}

}  // namespace

Verb const kCardNew = {
    .group = "card",
    .name = "new",
    .operands = "FILE",
    .summary = "make an empty card",
    .options = {},
    .least = 1,
    .most = 1,
    .run = New,
    .description =
        "Makes a card file without properties, with a key of its own. FILE must not exist.",
    .examples = "  zolt card new anna.card\n",
};

}  // namespace zolt::tool
