#ifndef ZOLT41_TOOLS_ZOLT_IN_CHILD_H_
#define ZOLT41_TOOLS_ZOLT_IN_CHILD_H_

#include <functional>
#include <string>

namespace zolt::tool {

// Runs something in a child process, and gives the text that it gives. A ToolError that it throws
// is thrown here.
std::string InChild(std::function<std::string()> const &work);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_IN_CHILD_H_
