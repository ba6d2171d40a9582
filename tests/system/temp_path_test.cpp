#include "zolt41/platform/system/temp_path.h"

#include <unistd.h>

#include "tests/support/files.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt::testing {
namespace {

class TempPathTest : public FileTest {
 protected:
  static std::string Name() { return "/zolt41-" + std::to_string(geteuid()); }
};

TEST_F(TempPathTest, TheFirstDirectoryThatAllowsItIsTaken) {
  std::string const good = home_.path();
  std::string const taken = Path("taken");
  std::string const opened = Path("opened");
  std::filesystem::create_directory(taken);
  WriteContent(taken + Name(), "");
  std::filesystem::create_directories(opened + Name());
  std::filesystem::permissions(opened + Name(), std::filesystem::perms(0755));
  for (std::string const &bad : {Path("none"), taken, opened, std::string("relative")}) {
    setenv("XDG_RUNTIME_DIR", bad.c_str(), 1);
    setenv("TMPDIR", good.c_str(), 1);
    char buffer[255];
    uint32_t const length = GetTempPathA(sizeof buffer, buffer);
    EXPECT_EQ(std::string(buffer, length), good + Name() + "/") << bad;
    EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 0);
    EXPECT_EQ(GetTempPathA(3, buffer), 0U);
    EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 6);
  }
  unsetenv("XDG_RUNTIME_DIR");
  unsetenv("TMPDIR");
}

}  // namespace
}  // namespace zolt::testing
