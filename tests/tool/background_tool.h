#ifndef ZOLT41_TESTS_TOOL_BACKGROUND_TOOL_H_
#define ZOLT41_TESTS_TOOL_BACKGROUND_TOOL_H_

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/run_tool.h"

namespace zolt::testing {

// The tool as a process beside the test, which hears its lines. Killed at the end.
class BackgroundTool {
 public:
  explicit BackgroundTool(std::string const &line)
      : tool_([this, &line](Child::Pipe &) { return Become(Words(line)); }),
        outLines_(out_.in(), -1),
        errLines_(err_.in(), -1) {
    out_.CloseOut();
    err_.CloseOut();
  }

  // The next line, or "" at its end or after a minute.
  std::string Out() { return outLines_.Hear(); }
  std::string Err() { return errLines_.Hear(); }
  void CloseOutput() { out_.CloseIn(); }
  void Signal(int number) const { tool_.Signal(number); }
  // The exit code, or minus the signal's number.
  int Wait() { return tool_.Wait(); }

 private:
  class Ends {
   public:
    Ends() {
      if (pipe2(ends_.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    }
    ~Ends() {
      CloseIn();
      CloseOut();
    }
    Ends(Ends const &) = delete;
    Ends &operator=(Ends const &) = delete;

    int in() const { return ends_[0]; }
    int out() const { return ends_[1]; }
    void CloseIn() { Close(&ends_[0]); }
    void CloseOut() { Close(&ends_[1]); }

   private:
    static void Close(int *end) {
      if (*end >= 0) close(*end);
      *end = -1;
    }

    std::array<int, 2> ends_{};
  };

  int Become(std::vector<std::string> words) const {
    dup2(out_.out(), 1);
    dup2(err_.out(), 2);
    std::string path = ZOLT_TOOL;
    std::vector<char *> argv = {path.data()};
    for (std::string &word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    return 127;
  }

  Ends out_;
  Ends err_;
  Child tool_;
  Child::Pipe outLines_;
  Child::Pipe errLines_;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_TOOL_BACKGROUND_TOOL_H_
