#ifndef ZOLT41_TOOLS_ZOLT_WOULD_DO_H_
#define ZOLT41_TOOLS_ZOLT_WOULD_DO_H_

#include <string>

#include "tools/zolt/errors.h"
#include "tools/zolt/text.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

// Says under --dry-run what would happen to the first operand. Gives the exit code.
inline int WouldDo(Call const &call, std::string const &what) {
  if (!call.settings.quiet && !call.settings.json) {
    WriteError("zolt: " + Escape(std::string(call.operands[0]) + ": " + what));
  }
  return call.settings.exitCode ? kNo : kDone;
}

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_WOULD_DO_H_
