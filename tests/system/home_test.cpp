#include "zolt41/platform/system/home.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace zolt {
namespace {

int SetOrUnset(char const *name, char const *value) {
  return value == nullptr ? unsetenv(name) : setenv(name, value, 1);
}

TEST(HomeTest, IsWhereTheEnvironmentSays) {
  std::string const here = std::filesystem::current_path();
  struct Case {
    char const *chosen;
    char const *xdg;
    char const *home;
    std::string user;
    std::string machine;
    bool isPublic;
  };
  for (Case const &c :
       {Case{"/a/b/", "/x", "/h", "/a/b", "/a/b/machine", false},
        Case{"rel", "/x", "/h", here + "/rel", here + "/rel/machine", false},
        Case{nullptr, "/x", "/h", "/x/zolt41", "/var/lib/zolt41", true},
        Case{"", "relative", "/h", "/h/.local/share/zolt41", "/var/lib/zolt41", true},
        Case{nullptr, nullptr, "/h", "/h/.local/share/zolt41", "/var/lib/zolt41", true}}) {
    SetOrUnset("ZOLT_HOME", c.chosen);
    SetOrUnset("XDG_DATA_HOME", c.xdg);
    SetOrUnset("HOME", c.home);
    EXPECT_EQ(ResolveHomes(), (Homes{c.user, c.machine, c.isPublic}));
  }
}

}  // namespace
}  // namespace zolt
