#include "zolt41/services/url.h"

#include "tests/services/stand_in.h"
#include "zolt41/platform/desktop/shell.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/late_module.h"
#include "zolt41/services/network_state.h"

namespace zolt::testing {
namespace {

int launches = 0;
uintptr_t answer = 0;
bool usable = true;

uintptr_t FakeExecute(uintptr_t owner, char const *operation, char const *file,
                      char const *parameters, char const *directory, int32_t show) {
  launches++;
  EXPECT_TRUE(owner == 0 && parameters == nullptr && directory == nullptr && show == 1);
  EXPECT_STREQ(operation, "open");
  EXPECT_STREQ(file, "http://x");
  return answer;
}

LateFunction const kFunctions[] = {{"ShellExecuteA", reinterpret_cast<FARPROC>(FakeExecute)}};
LateModule const kFake = {"Shell32", kFunctions, [] { return usable; }};

class UrlTest : public StandInTest {
 protected:
  UrlTest() { ForgetShell(); }
  ~UrlTest() override { ForgetShell(); }
};

TEST_F(UrlTest, WhatTheShellAnswersDecides) {
  LateModuleSwap const swap(&kFake);
  launches = 0;
  usable = false;
  EXPECT_EQ(URLLaunchFromString("http://x"), 0);
  usable = true;
  for (uintptr_t const value : {uintptr_t{0}, uintptr_t{32}, uintptr_t{33}, ~uintptr_t{0}}) {
    answer = value;
    EXPECT_EQ(URLLaunchFromString("http://x"), value > 32) << value;
  }
  EXPECT_EQ(URLLaunchFromString(""), 0);
  EXPECT_EQ(URLLaunchFromString(nullptr), 0);
  EXPECT_EQ(launches, 4);
}

TEST_F(UrlTest, LinksArriveAsOneArgumentOrNotAtAll) {
  EXPECT_EQ(URLEnabled(), 0);
  EXPECT_EQ(URLLaunchFromString("http://x"), 0);
  std::filesystem::create_directory(Folder() + "/xdg-open");
  EXPECT_EQ(URLEnabled(), 0);
  std::filesystem::remove(Folder() + "/xdg-open");
  StandIn("xdg-open");
  EXPECT_EQ(URLEnabled(), 1);
  for (char const *link : {"--help", "http://x\nrm", "\x7F", "x\x81", "-"}) {
    EXPECT_EQ(URLLaunchFromString(link), 0) << link;
    EXPECT_EQ(Heard("xdg-open"), "");
  }
  EXPECT_EQ(URLLaunchFromString("http://x/?a=1&b=$(c);'d' \xFC"), 1);
  EXPECT_EQ(Heard("xdg-open"), "<http://x/?a=1&b=$(c);'d' \u00FC>\n");
  StandIn("xdg-open", "exit 4");
  EXPECT_EQ(URLLaunchFromString("http://x"), 0);
}

TEST_F(UrlTest, TheShortcutKeyOfTheMachineCountsToo) {
  HKEY key = HKEY_LOCAL_MACHINE;
  for (char const *name : {"SOFTWARE", "Classes", "internetShortcut"})
    ASSERT_EQ(RegCreateKeyA(key, name, &key), 0);
  EXPECT_EQ(URLEnabled(), 1);
}

}  // namespace
}  // namespace zolt::testing
