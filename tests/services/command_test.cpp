#include "zolt41/platform/desktop/command.h"

#include <sys/stat.h>

#include "tests/support/child.h"
#include "tests/support/files.h"

namespace zolt::testing {
namespace {

constexpr int kLong = 60000;

int Shell(std::string const &script, std::string const &input = "", bool tellsErrors = false,
          int milliseconds = kLong) {
  return RunCommand({"/bin/sh", {"sh", "-c", script}, input, milliseconds, tellsErrors});
}

bool HasChildren() {
  return waitpid(-1, nullptr, WNOHANG | __WALL) >= 0 || errno != ECHILD;
}

void ReapAll(int) {
  while (waitpid(-1, nullptr, WNOHANG) > 0) continue;
}

TEST(CommandTest, HowTheClientTreatsItsChildrenMakesNoDifference) {
  for (sighandler_t const way : {SIG_DFL, SIG_IGN, static_cast<sighandler_t>(ReapAll)}) {
    EXPECT_TRUE(HoldsInChild([way] {
      signal(SIGCHLD, way);
      return Shell("exit 7") == 7 && !HasChildren();
    }));
  }
}

TEST(CommandTest, WhatBecameOfTheProgramIsTold) {
  EXPECT_EQ(Shell("kill -9 $$"), kNoCode);
  EXPECT_EQ(RunCommand({"/", {"x"}, "", kLong, false}), 127);
  // What the client ignores or blocks does not reach the program.
  EXPECT_TRUE(HoldsInChild([] {
    signal(SIGTERM, SIG_IGN);
    return Shell("kill -TERM $$") == kNoCode;
  }));
}

TEST(CommandTest, TheProgramHasItsInputAndNothingElseOfTheClient) {
  Child child([](Child::Pipe &pipe) {
    pipe.BecomeStandard();
    dup2(STDOUT_FILENO, STDERR_FILENO);
    dup2(STDOUT_FILENO, 9);
    std::string const nowhere = "[ /proc/self/fd/1 -ef /dev/null ] && [ ! -e /proc/self/fd/9 ] && ";
    if (Shell(nowhere + "[ /proc/self/fd/2 -ef /dev/null ]") != 0) return 1;
    if (Shell(nowhere + "[ ! /proc/self/fd/2 -ef /dev/null ]", "", true) != 0) return 2;
    for (int standard = 0; standard < 3; standard++) close(standard);
    if (Shell("[ /proc/self/fd/2 -ef /dev/null ]", "", true) != 0) return 3;
    return Shell(nowhere + "read line && [ $line = in ]", "in\n");
  });
  EXPECT_EQ(child.Wait(), 0);
}

using CommandFileTest = FileTest;

TEST_F(CommandFileTest, AProgramThatStillRunsGoesOn) {
  std::string const in = Path("in");
  std::string const out = Path("out");
  for (std::string const &pipe : {in, out}) ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_EQ(Shell("cat '" + in + "' > '" + out + "'", "", false, 1), kStillRuns);
  EXPECT_FALSE(HasChildren());
  int const answer = open(out.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  WriteContent(in, "on");
  fcntl(answer, F_SETFL, 0);
  char text[2] = "";
  EXPECT_EQ(read(answer, text, sizeof text), 2);
  close(answer);
}

}  // namespace
}  // namespace zolt::testing
