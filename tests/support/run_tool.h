#ifndef ZOLT41_TESTS_SUPPORT_RUN_TOOL_H_
#define ZOLT41_TESTS_SUPPORT_RUN_TOOL_H_

#include <string>
#include <vector>

namespace zolt::testing {

// What the tool's standard output leads to.
enum class ToolOutput { captured, terminal, fullDevice, brokenPipe, closed };

struct ToolSetting {
  std::string input = {};
  ToolOutput output = ToolOutput::captured;
  std::vector<std::string> environment = {};  // NAME=VALUE, beside that of the test
};

struct ToolResult {
  int code;  // minus the number of the signal that ended it; -1000 after 60 seconds
  std::string out;
  std::string err;
};

// Runs the tool as a process of its own and waits for its end.
ToolResult RunTool(std::vector<std::string> const &arguments, ToolSetting const &setting = {});

// The words of a line, which blanks part; one with blanks, or none, stands in 'single quotes'.
std::vector<std::string> Words(std::string const &line);

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_RUN_TOOL_H_
