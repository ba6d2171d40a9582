#ifndef ZOLT41_TOOLS_ZOLT_SETTINGS_H_
#define ZOLT41_TOOLS_ZOLT_SETTINGS_H_

#include "tools/zolt/arguments.h"
#include "tools/zolt/level.h"

namespace zolt::tool {

enum class When { automatic, always, never };

// What the options that every verb takes say.
struct Settings {
  // Throws a usage error.
  explicit Settings(Arguments const &arguments);

  Level const *level;
  When colour;
  When progress;
  uint32_t wait;  // milliseconds
  bool only;
  bool json;
  bool quiet;
  bool yes;
  bool dryRun;
  bool exitCode;
  bool nul;
};

// What an option says in seconds, in milliseconds. Throws a usage error.
uint32_t MillisecondsOf(Arguments const &arguments, OptionId id);

// Whether to write in colour to what may be a terminal.
bool InColour(When colour, bool terminal);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_SETTINGS_H_
