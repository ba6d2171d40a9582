#include <gtest/gtest.h>

#include "tests/prefs/prefs_fixture.h"
#include "tests/services/stand_in.h"
#include "tests/support/run_tool.h"

namespace zolt::testing {
namespace {

class ServicesTest : public StandInTest {
 protected:
  static int Code(std::vector<std::string> const &arguments, ToolSetting const &setting = {}) {
    ToolResult const result = RunTool(arguments, setting);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.code == 0, result.err.empty()) << result.err;
    return result.code;
  }
};

TEST_F(ServicesTest, LinksAndMailGoToTheDesktopsPrograms) {
  EXPECT_EQ(Code({"open", "http://x"}), 3);
  StandIn("xdg-open");
  StandIn("sendmail");
  EXPECT_EQ(Code({"open", "http://x/\u00FC"}), 0);
  EXPECT_EQ(Heard("xdg-open"), "<http://x/\u00FC>\n");
  EXPECT_EQ(Code({"open", "--", "-x"}), 2);
  EXPECT_EQ(Code({"open", "a\nb"}), 2);
  EXPECT_EQ(Code({"mail", "a@b", "--subject", "Hi", "--text", "t"}), 0);
  EXPECT_TRUE(Heard("sendmail").starts_with("<-i><--><a@b>\nTo: a@b\nSubject: Hi\n"));
  EXPECT_EQ(Code({"mail", "a@b", "--from", "-"}, {.input = "line\n"}), 0);
  EXPECT_TRUE(Heard("sendmail").ends_with("\n\nline\n\n"));
  EXPECT_EQ(RunTool({"mail", "-q", "--", "-a@b"}).code, 3);
  StandIn("xdg-open", 4);
  EXPECT_EQ(Code({"open", "http://x"}), 3);
}

TEST_F(ServicesTest, TheDoctorSaysWhatIsMissing) {
  std::string const before = RunTool({"doctor"}).out;
  EXPECT_NE(before.find("service\tlinks\tmissing\n"), std::string::npos) << before;
  StandIn("xdg-open");
  EXPECT_NE(RunTool({"doctor"}).out.find("service\tlinks\tnative\n"), std::string::npos);
  ToolResult const status = RunTool({"net", "status"});
  EXPECT_EQ(status.out, status.code == 0 ? "connected\n" : "not connected\n");
}

TEST(RegisterTest, TheFileOfTheLibraryIsEnteredAndTakenAway) {
  TempHome const home;
  std::string const tool = ZOLT_TOOL;
  std::string const folder = tool.substr(0, tool.rfind("/bin/")) + "/lib/";
  for (auto const &[option, root] :
       {std::pair{"-y", HKEY_CURRENT_USER}, std::pair{"--machine", HKEY_LOCAL_MACHINE}}) {
    auto const entered = [root = root] {
      return Raw(root,
                 "Software\\Classes\\CLSID\\{5ED2DD58-7638-11D3-8FD3-00A02459FA0F}\\InprocServer32",
                 "");
    };
    EXPECT_EQ(RunTool({"-n", "register", option}).code, 0);
    EXPECT_EQ(entered(), "no key");
    ToolResult const done = RunTool({"register", option});
    EXPECT_TRUE(entered().starts_with(folder + "libzolt41.so.")) << entered();
    EXPECT_EQ(done.err, "zolt: " + entered() + ": registered for " +
                            (root == HKEY_CURRENT_USER ? "this user\n" : "all users\n"));
    EXPECT_EQ(RunTool({"-q", "unregister", option}).code, 0);
    EXPECT_EQ(entered(), "no key");
  }
  EXPECT_EQ(RunTool({"--home", "/dev/null", "register"}).code, 3);
}

}  // namespace
}  // namespace zolt::testing
