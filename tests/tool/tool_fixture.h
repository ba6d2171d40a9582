#ifndef ZOLT41_TESTS_TOOL_TOOL_FIXTURE_H_
#define ZOLT41_TESTS_TOOL_TOOL_FIXTURE_H_

#include <string>
#include <vector>

#include "tests/support/files.h"
#include "tests/support/key.h"
#include "tests/support/run_tool.h"
#include "zolt41/zolt41.h"

namespace zolt::testing {

// The tool in a home of its own, which is its working directory, too.
class ToolTest : public FileTest {
 protected:
  using Line = std::vector<std::string>;

  ToolTest() { std::filesystem::current_path(home_.path()); }
  ~ToolTest() override { std::filesystem::current_path("/"); }

  // One run, and what it must come to; an empty `err` is not looked at where `code` is not 0.
  struct Step {
    std::string line;
    int code = 0;
    std::string out = {};
    std::string err = {};
    ToolSetting setting = {};
  };

  static void Expect(std::vector<Step> const &steps) {
    for (Step const &step : steps) {
      SCOPED_TRACE(step.line);
      ToolResult const result = Run(step.line, step.setting);
      EXPECT_EQ(result.code, step.code);
      EXPECT_EQ(result.out, step.out);
      if (step.code == 0 || !step.err.empty()) {
        EXPECT_EQ(result.err, step.err);
      }
    }
  }

  // The same of lines that have nothing to say on standard output.
  static void Expect(int code, std::vector<std::string> const &lines) {
    for (std::string const &line : lines) Expect({{(code == 0 ? "-q " : "") + line, code}});
  }

  static ToolResult Run(std::string const &line, ToolSetting const &setting = {}) {
    return RunTool(Words(line), setting);
  }

  // Sets a value quietly, through the tool.
  static void Set(Line operands) {
    operands.insert(operands.begin(), {"-q", "prefs", "set"});
    ToolResult const result = RunTool(operands);
    ASSERT_EQ(result.code, 0) << result.err;
  }

  // Writes a value of the user's section Audio as another program would, whatever it is.
  static void SetForeign(std::string const &name, uint32_t type, std::string const &bytes) {
    HKEY key = HKEY_CURRENT_USER;
    for (char const *each : {"Software", "Veltrane", "Tessaly", "5.0", "Conferencing"})
      ASSERT_EQ(RegOpenKeyA(key, each, &key), 0);
    EXPECT_EQ(Key(key, "Audio").SetBytes(name, type, bytes), 0);
  }
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_TOOL_TOOL_FIXTURE_H_
