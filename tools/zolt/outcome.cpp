#include "tools/zolt/outcome.h"

#include "tools/zolt/card_documents.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

int CodeOfChange(Call const &call, bool changes) {
  return call.settings.dryRun && call.settings.exitCode && changes ? kNo : kDone;
}

int TellFile(std::string const &path, Call const &call) {
  if (call.settings.json) {
    call.out.Write("{\"schema\":1,\"file\":" + JsonText(path) + ",\"changed\":true}\n");
  } else if (call.settings.dryRun && !call.settings.quiet) {
    WriteError("zolt: " + Escape(path) + ": would be written");
  }
  return CodeOfChange(call, true);
}

int TellDeed(Deed const &deed, Call const &call) {
  std::string const operand(call.operands[0]);
  if (call.settings.json) {
    call.out.Write("{\"schema\":1," + JsonText(deed.subject) + ":" + JsonText(operand) + "," +
                   JsonText(deed.done) + ":" + (call.settings.dryRun ? "false" : "true") + "}\n");
  } else if (call.settings.dryRun && !call.settings.quiet) {
    WriteError("zolt: " + Escape(operand + ": " + deed.would));
  }
  return CodeOfChange(call, true);
}

}  // namespace zolt::tool
