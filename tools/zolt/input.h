#ifndef ZOLT41_TOOLS_ZOLT_INPUT_H_
#define ZOLT41_TOOLS_ZOLT_INPUT_H_

#include <string>
#include <string_view>

namespace zolt::tool {

// All bytes of a file, or with "-" of standard input, up to a limit that no value comes near.
// Throws if it cannot be read.
std::string ReadInput(std::string_view path);
// The same of a plain file, also one of the name "-"; nothing waits for what is none.
std::string ReadPlainFile(std::string const &path);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_INPUT_H_
