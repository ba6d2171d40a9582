#include "zolt41/platform/system/home.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/support/temp_home.h"

namespace zolt {
namespace {

namespace fs = std::filesystem;

void SetOrUnset(char const *name, char const *value) {
  if (value == nullptr) {
    unsetenv(name);
  } else {
    setenv(name, value, 1);
  }
}

TEST(HomeTest, IsWhereTheEnvironmentSays) {
  std::string const here = fs::current_path();
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

TEST(HomeTest, DirectoriesAreMadeForTheirOwner) {
  testing::TempHome home;
  umask(0);
  EXPECT_EQ(EnsureDirectory(home.path() + "/a/b", false), Failure::none);
  EXPECT_EQ(fs::status(home.path() + "/a").permissions(), fs::perms(0700));
  EXPECT_EQ(fs::status(home.path() + "/a/b").permissions(), fs::perms(0700));
  fs::permissions(home.path() + "/a/b", fs::perms(0750));
  EXPECT_EQ(EnsureDirectory(home.path() + "/a/b", false), Failure::none);
  EXPECT_EQ(fs::status(home.path() + "/a/b").permissions(), fs::perms(0750)) << "kept as it is";
  std::ofstream(home.path() + "/file") << "";
  EXPECT_EQ(EnsureDirectory(home.path() + "/file", false), Failure::io);
  EXPECT_EQ(EnsureDirectory(home.path() + "/file/under", false), Failure::io);
}

}  // namespace
}  // namespace zolt
