#include "tools/zolt/chain_read.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/table.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

std::string Mark(Holding const &holding) {
  if (holding.answers && holding.answersBytes) return "<- answers";
  if (holding.answers) return "<- answers text";
  if (holding.answersBytes) return "<- answers bytes";
  return "";
}

int Explain(Call const &call) {
  SectionPath const path = SectionPath::FromOperand(call.operands[0]);
  std::string const name = ValueName(call.operands[1]);
  PrepareLibrary(call.arguments, call.settings);
  std::vector<Level const *> const levels = ReadLevels(call.settings);
  std::vector<SectionKey> const keys = OpenAlong(levels, path);
  if (!Exists(path, keys)) FailWithoutSection(levels, path);
  std::vector<Holding> const holdings = ReadHoldings(keys, name);
  if (Answer(holdings) == nullptr) FailWithoutValue(path, name, keys);
  if (call.settings.json) {
    call.out.Write(HoldingsDocument(path, name, holdings));
    return kDone;
  }
  Table table(call.settings, call.out, 2);
  for (Holding const &holding : holdings) {
    bool const absent = holding.value.kind == Kind::absent;
    table.Add({std::string(holding.level->name),
               absent ? "-" : Column(holding.value, call.out.terminal()), Mark(holding)});
  }
  table.Finish();
  return kDone;
}

}  // namespace

Verb const kPrefsExplain = {
    .group = "prefs",
    .name = "explain",
    .operands = "SECTION NAME",
    .summary = "where a value comes from",
    .options = {},
    .least = 2,
    .most = 2,
    .run = Explain,
    .description =
        "Shows what each store of the chain holds, in the order in which a read asks them, and\n"
        "which one answers. A store without the value has a dash. Ends with 1 if no store has it.",
    .examples =
        "  zolt prefs explain Audio Volume\n"
        "  zolt prefs explain -L shared-user Audio Volume\n",
};

}  // namespace zolt::tool
