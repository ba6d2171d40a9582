#include "tools/zolt/confirm.h"

#include <unistd.h>

#include "tools/zolt/errors.h"
#include "tools/zolt/output.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

// The first letter of the line that is typed, or NUL.
char Answer() {
  char first = '\0';
  char letter = '\0';
  bool any = false;
  while (read(STDIN_FILENO, &letter, 1) == 1 && letter != '\n') {
    if (!any) first = letter;
    any = true;
  }
  return first;
}

}  // namespace

void Confirm(std::string const &what, Settings const &settings) {
  if (settings.yes || settings.dryRun) return;
  if (settings.json || isatty(STDIN_FILENO) != 1 || !ErrorIsTerminal()) {
    Refuse("", "would " + what + ", which needs a yes", "use -y, or -n to see it");
  }
  WriteErrorText("zolt: " + Escape(what) + "? [y/N] ");
  char const answer = Answer();
  if (answer != 'y' && answer != 'Y') {
    throw ToolError(kNo, "refused", "", "nothing is written");
  }
}

}  // namespace zolt::tool
