#include <algorithm>
#include <thread>

#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

using ItemsTest = ToolTest;

TEST_F(ItemsTest, AListIsShownAndEdited) {
  Expect({
      {"prefs items Audio L", 1, "", "zolt: Conferencing:Audio L: no such list\n"},
      {"prefs items Audio L --add a --add b --add c", 0, "",
       "zolt: user store: 3 values written\n"},
      {"prefs items Audio L", 0, "0\ta\n1\tb\n2\tc\n"},
      {"-n prefs items Audio L --remove 2", 0, "",
       "Conferencing:Audio L2: c -> unset (not written)\n"
       "zolt: user store: 1 value would be removed\n"},
      {"prefs items Audio L --remove 0 --add d", 0, "", "zolt: user store: 3 values written\n"},
      {"prefs items Audio L", 0, "0\tb\n1\tc\n2\td\n"},
      {"prefs items Audio L --remove 3", 1, "",
       "zolt: Conferencing:Audio L: has no item 3; it has 3\n"},
      {"prefs items Audio L --remove -1", 2},
      {"prefs items Audio L --remove 2 --remove 0 --remove 2", 0, "",
       "zolt: user store: 1 value written, 2 removed\n"},
      {"prefs items Audio L", 0, "0\tc\n"},
      {"prefs items Audoi L --add x", 0, "",
       "zolt: Audoi is a new section; did you mean Conferencing:Audio?\n"
       "zolt: user store: 1 value written\n"},
      {"prefs items Audio N -t num --add 0x10 --add x", 2},
      {"prefs items Audio N -t num --add 0x10", 0, "", "zolt: user store: 1 value written\n"},
      {"prefs items Audio N", 0, "0\t16\n"},
      {"prefs items Nowhere L", 1},
  });
}

TEST_F(ItemsTest, WhatLiesBehindAGapGoesAndOtherTypesAndNamesStay) {
  Set({"Audio", "L0", "a", "L2", "gone", "L 9", "gone", "l7", "stays", "Lx", "stays"});
  Set({"-t", "bytes", "Audio", "L5", "0x00"});
  Set({"-L", "system", "Audio", "L0", "of the machine", "L1", "of the machine"});
  Expect({{"prefs items Audio L", 0, "0\ta\n"},
          {"-q prefs items Audio L --add b"},
          {"prefs list Audio --only", 0,
           "L0\ta\ttext\tuser\nl7\tstays\ttext\tuser\nLx\tstays\ttext\tuser\n"
           "L5\t0x00\tbytes\tuser\nL1\tb\ttext\tuser\n"}});
}

TEST_F(ItemsTest, WhiteSpaceInTheNameOfAListIsAnyOrNone) {
  Set({"Audio", "a b0", "x", "ab7", "gone", "a\t b8", "gone", "a_b9", "stays"});
  Expect({{"-q prefs items Audio 'a b' --add y"},
          {"prefs list Audio --only", 0,
           "a b0\tx\ttext\tuser\na_b9\tstays\ttext\tuser\na b1\ty\ttext\tuser\n"}});
}

TEST_F(ItemsTest, EditsOfSeveralProcessesLoseNoItem) {
  auto const edit = [](char const *how) {
    for (int i = 0; i < 10; i++) EXPECT_EQ(Run("prefs items Audio L " + std::string(how)).code, 0);
  };
  edit("--add old");
  {
    std::jthread const editors[] = {std::jthread(edit, "--add new"),
                                    std::jthread(edit, "--add new"),
                                    std::jthread(edit, "--remove 0")};
  }
  std::string const items = Run("prefs items Audio L").out;
  EXPECT_EQ(std::ranges::count(items, '\n'), 20) << items;
}

TEST_F(ItemsTest, ANameAsLongAsItMayBeEndsTheList) {
  std::string const list(254, 'n');
  for (int i = 0; i < 10; i++) Set({"Audio", list + std::to_string(i), "x"});
  EXPECT_EQ(std::ranges::count(RunTool({"prefs", "items", "Audio", list}).out, '\n'), 10);
}

}  // namespace
}  // namespace zolt::testing
