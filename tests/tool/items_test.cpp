#include <algorithm>
#include <thread>

#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

using ItemsTest = ToolTest;

TEST_F(ItemsTest, AListIsShownAndEdited) {
  Expect({{"prefs items Audio L", 1, "", "zolt: Conferencing:Audio L: no such list\n"},
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
          {"prefs items Nowhere L", 1}});
}

// White space in the name of a list is any or none.
TEST_F(ItemsTest, WhatLiesBehindAGapGoesAndOtherTypesAndNamesStay) {
  Set({"Audio", "M L0", "a", "ML2", "gone", "M L 9", "gone", "M\t L8", "gone", "m l7", "stays"});
  Set({"Audio", "M Lx", "stays", "M_L9", "stays"});
  Set({"-t", "bytes", "Audio", "M L5", "0x00"});
  Set({"-L", "system", "Audio", "M L0", "of the machine", "M L1", "of the machine"});
  Expect({{"prefs items Audio 'M L'", 0, "0\ta\n"},
          {"-q prefs items Audio 'M L' --add b"},
          {"prefs list Audio --only", 0,
           "M L0\ta\ttext\tuser\nm l7\tstays\ttext\tuser\nM Lx\tstays\ttext\tuser\n"
           "M_L9\tstays\ttext\tuser\nM L5\t0x00\tbytes\tuser\nM L1\tb\ttext\tuser\n"}});
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
