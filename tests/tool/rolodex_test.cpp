#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

class RolodexToolTest : public ToolTest {
 protected:
  RolodexToolTest() { EXPECT_EQ(Run("-q rolodex create").code, 0); }

  static std::string New(Line operands) {
    operands.insert(operands.begin(), {"rolodex", "new"});
    return RunTool(operands).out;
  }
};

TEST_F(RolodexToolTest, CardsAreMadeNamedTaggedAndFound) {
  EXPECT_EQ(Run("rolodex create").code, 2);
  EXPECT_EQ(New({"Anna \u0411ell", "--email", "a@x.org", "--tel", "555"}), "1\n");
  EXPECT_EQ(New({"Ben", "--email", "b@y.org"}), "2\n");
  EXPECT_EQ(New({"Ben"}), "3\n");
  Expect({
      {"rolodex tag 1 Ben --first +3,5 -4", 0, "",
       "card 1 Anna ?ell: in 3,5\ncard 2 Ben: in 3,5\n"},
      {"rolodex list --category 3 --category 5", 0,
       "1\tAnna ?ell\t\ta@x.org\t3,5\n2\tBen\t\tb@y.org\t3,5\n", ""},
      {"rolodex find 55", 0, "1\tAnna ?ell\t\ta@x.org\t3,5\n", ""},
      {"rolodex find nobody", 1, "", ""},
      {"rolodex query \u0411ELL", 0, "1 address\na@x.org\tAnna ?ell\tHOME\n", ""},
      {"rolodex query nobody", 1, "0 addresses\n", ""},
      {"rolodex query x.org", 0, "1 address\na@x.org\tAnna ?ell\tHOME\n", ""},
      {"rolodex select EMAIL$=Y.ORG FN=ben", 0, "2\tBen\t\tb@y.org\t3,5\n", ""},
      {"rolodex select EMAIL", 2, "", ""},
      {"rolodex dupes", 1, "2\tBen\t\tb@y.org\t3,5\n3\tBen\n", ""},
      {"rolodex get Ben", 1, "",
       "id:2  Ben  b@y.org\nid:3  Ben  \nzolt: Ben: 2 cards are so named; say which one with id:N, "
       "or "
       "use --first or --all\n"},
      {"rolodex get id:3", 0, "FN\tBen\tUNICODE\n", ""},
      {"rolodex category 3 Friends", 0, "", ""},
      {"rolodex category 3", 0, "Friends\n", ""},
      {"rolodex category 128", 2, "", ""},
      {"rolodex rm Ben --all", 2, "", ""},
      {"rolodex rm 3", 0, "", "card 3 Ben: removed\n"},
      {"rolodex rename 2 Benjamin", 0, "", "card 2 Benjamin: renamed\n"},
      {"rolodex get 9", 1, "", "zolt: 9: no such card\n"},
  });
}

TEST_F(RolodexToolTest, ASecondImportAddsNothingAndAnExportTouchesNothingThatIsTheSame) {
  std::filesystem::create_directory(Path("in"));
  for (char const *name : {"a", "b"}) {
    std::string const card = Path("in/") + name;
    EXPECT_EQ(RunTool({"card", "new", card}).code, 0);
    EXPECT_EQ(RunTool({"-q", "card", "set", card, "FN", name}).code, 0);
  }
  std::ofstream(Path("in/text")) << "1.2.3.4\n7\n[Card Infos]\nFN=ASCII::Carl\n";
  std::ofstream(Path("in/bad")) << "1\n2\n[Card Infos]\nP=BITMAP::x\n";
  ToolResult const first = RunTool({"rolodex", "import", Path("in")});
  EXPECT_EQ(first.code, 4);
  EXPECT_TRUE(first.err.ends_with("zolt: 3 read, 3 added, 0 changed, 1 refused\n")) << first.err;
  std::filesystem::remove(Path("in/bad"));
  EXPECT_EQ(RunTool({"rolodex", "import", Path("in")}).err,
            "zolt: 3 read, 0 added, 0 changed, 0 refused\n");
  EXPECT_EQ(RunTool({"-q", "card", "set", Path("in/a"), "FN", "Adam"}).code, 0);
  std::filesystem::remove(Path("in/b"));
  EXPECT_EQ(RunTool({"-y", "rolodex", "import", Path("in"), "--prune"}).err,
            "zolt: 2 read, 0 added, 1 changed, 0 refused, 1 removed\n");
  EXPECT_EQ(Run("rolodex list").out, "3\tCarl\n1\tAdam\n");
  EXPECT_EQ(RunTool({"rolodex", "export", Path("out")}).err, "zolt: 2 written, 0 unchanged\n");
  EXPECT_EQ(RunTool({"rolodex", "export", Path("out")}).err, "zolt: 0 written, 2 unchanged\n");
  EXPECT_EQ(RunTool({"rolodex", "import", Path("out")}).err,
            "zolt: 2 read, 0 added, 0 changed, 0 refused\n");
}

TEST_F(RolodexToolTest, ABookThatIsOpenElsewhereIsWaitedForAndItsHolderNamed) {
  EXPECT_EQ(New({"Anna"}), "1\n");
  Rolodex other;
  ASSERT_EQ(other.Open(Path("contacts.rolodex").c_str(), 0), 0);
  ToolResult const result = Run("--wait 0 rolodex list");
  EXPECT_EQ(result.code, 5);
  EXPECT_NE(result.err.find("open in another program; process " + std::to_string(getpid())),
            std::string::npos)
      << result.err;
  other.Close();
  EXPECT_EQ(Run("rolodex list").code, 0);
  EXPECT_EQ(Run("-f " + Path("none") + " rolodex list").code, 3);
  std::ofstream(Path("junk")) << "no database";
  EXPECT_EQ(Run("-f " + Path("junk") + " rolodex list").code, 4);
}

}  // namespace
}  // namespace zolt::testing
