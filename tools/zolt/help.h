#ifndef ZOLT41_TOOLS_ZOLT_HELP_H_
#define ZOLT41_TOOLS_ZOLT_HELP_H_

#include <span>
#include <string>
#include <string_view>

#include "tools/zolt/verbs.h"

namespace zolt::tool {

// A few lines for somebody who gave no command.
std::string ShortUsage();

// "zolt GROUP VERB OPERANDS"
std::string UsageOf(Verb const &verb);

// About the whole tool; about a group, a verb of any group, or a group and a verb. Throws a usage
// error if there is no such thing.
std::string HelpFor(std::span<std::string_view const> words);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_HELP_H_
