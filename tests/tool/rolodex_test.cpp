#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

// Where a record's size and first name stand in its head.
constexpr size_t kSize = 8;
constexpr size_t kName = 28;

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
  WriteContent(Path("in/text"), "1.2.3.4\n7\n[Card Infos]\nFN=ASCII::Carl\n");
  WriteContent(Path("in/bad"), "1\n2\n[Card Infos]\nP=BITMAP::x\n");
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

TEST_F(RolodexToolTest, CheckNamesEveryCardAndRepairKeepsTheOldFile) {
  for (char const *name : {"Anna", "Ben", "Carl"}) New({name});
  std::string const book = Path("contacts.rolodex");
  std::string const sound = ContentOf(book);
  auto const row = [&sound](char const *state, char const *id, char const *name,
                            char const *whole = "whole") {
    return std::string(state) + "\t" + id + "\t" + name + "\tbyte " +
           std::to_string(sound.find(name) - kName) + "\t" + whole + "\n";
  };
  Expect({{"rolodex check", 0,
           row("sound", "1", "Anna") + row("sound", "2", "Ben") + row("sound", "3", "Carl"),
           "zolt: " + book + ": 3 sound, 0 cut, 0 lost\n"}});
  // Of Ben the size, with no trailer to find Carl by.
  std::string damaged = sound.substr(0, sound.size() - 6);
  damaged[sound.find("Ben") - kName + kSize + 2] = '\x7F';
  WriteContent(book, damaged);
  std::string const rows =
      row("sound", "1", "Anna") + row("cut", "2", "Ben", "not whole") + row("lost", "3", "Carl");
  Expect({{"rolodex check", 4, rows,
           "zolt: " + book + ": 1 sound, 1 cut, 1 lost; it was not closed\n"},
          {"-n rolodex check --repair", 4, rows, ""}});
  EXPECT_EQ(ContentOf(book), damaged);
  Expect({{"rolodex check --repair", 0, rows,
           "zolt: " + book + ": has 2 cards; the old file is " + book + ".damaged-1\n"},
          {"rolodex list", 0, "1\tAnna\n3\tCarl\n", ""},
          {"rolodex check piece", 2, "", ""},
          {"rolodex check --repair piece", 3, "", "zolt: piece: No such file or directory\n"},
          {"rolodex check -f " + Path("none"), 3, "", ""}});
  EXPECT_EQ(ContentOf(book + ".damaged-1"), damaged);
  EXPECT_TRUE(Run("--json rolodex check")
                  .out.starts_with(R"({"schema":1,"file":")" + book +
                                   R"(","clean":true,"sound":2,"cut":0,"lost":0,"cards":[)"
                                   R"({"state":"sound","whole":true,"id":1,)"));
  WriteContent(book, "no database");
  EXPECT_EQ(Run("rolodex check --repair").code, 4);
  EXPECT_EQ(ContentOf(book), "no database");
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
  WriteContent(Path("junk"), "no database");
  EXPECT_EQ(Run("-f " + Path("junk") + " rolodex list").code, 4);
}

}  // namespace
}  // namespace zolt::testing
