#include "zolt41/platform/system/home.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <tuple>

namespace zolt {
namespace {

int SetOrUnset(char const *name, char const *value) {
  return value == nullptr ? unsetenv(name) : setenv(name, value, 1);
}

TEST(HomeTest, IsWhereTheEnvironmentSays) {
  std::string const here = std::filesystem::current_path();
  std::string const below = "/h/.local/share/zolt41";
  std::string const all = "/var/lib/zolt41";
  std::tuple<char const *, char const *, Homes> const cases[] = {
      {"/a/b/", "/x", {"/a/b", "/a/b/machine", false}},
      {"rel", "/x", {here + "/rel", here + "/rel/machine", false}},
      {nullptr, "/x", {"/x/zolt41", all, true}},
      {"", "relative", {below, all, true}},
      {nullptr, nullptr, {below, all, true}}};
  setenv("HOME", "/h", 1);
  for (auto const &[chosen, xdg, homes] : cases) {
    SetOrUnset("ZOLT_HOME", chosen);
    SetOrUnset("XDG_DATA_HOME", xdg);
    EXPECT_EQ(ResolveHomes(), homes);
  }
}

}  // namespace
}  // namespace zolt
