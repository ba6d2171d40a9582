#ifndef ZOLT41_TOOLS_ZOLT_SHELL_WORDS_H_
#define ZOLT41_TOOLS_ZOLT_SHELL_WORDS_H_

#include <string>
#include <vector>

namespace zolt::tool {

// A line that a shell takes apart into these words again, which are UTF-8. For a terminal,
// control characters are written in the form $'\n', which not every shell knows.
std::string ShellLine(std::vector<std::string> const &words, bool terminal);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_SHELL_WORDS_H_
