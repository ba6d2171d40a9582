#ifndef ZOLT41_TESTS_TOOL_BACKGROUND_TOOL_H_
#define ZOLT41_TESTS_TOOL_BACKGROUND_TOOL_H_

#include <fcntl.h>

#include "tests/support/child.h"
#include "tests/support/run_tool.h"

namespace zolt::testing {

// The tool as a process beside the test, which hears its lines. Killed at the end.
class BackgroundTool {
 public:
  explicit BackgroundTool(std::string const &line)
      : tool_([this, &line](Child::Pipe &pipe) {
          pipe.BecomeStandard();
          dup2(errors_[1], STDERR_FILENO);
          return Child::Become(Words(ZOLT_TOOL " " + line));
        }) {
    close(errors_[1]);
  }
  ~BackgroundTool() { close(errors_[0]); }
  BackgroundTool(BackgroundTool const &) = delete;
  BackgroundTool &operator=(BackgroundTool const &) = delete;

  // The next line, or "" at its end or after a minute.
  std::string Out() { return tool_.pipe().Hear(); }
  std::string Err() { return errLines_.Hear(); }
  void CloseOutput() { tool_.pipe().CloseIn(); }
  void Signal(int number) const { tool_.Signal(number); }
  // The exit code, or minus the signal's number.
  int Wait() { return tool_.Wait(); }

 private:
  static std::array<int, 2> NewPipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    return ends;
  }

  std::array<int, 2> errors_ = NewPipe();
  Child tool_;
  Child::Pipe errLines_{errors_[0], -1};
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_TOOL_BACKGROUND_TOOL_H_
