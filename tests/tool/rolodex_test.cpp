#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

#include "tests/rolodex/book.h"
#include "tests/support/full_disk.h"
#include "tests/tool/background_tool.h"
#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

// Where a record's size and first name stand in its head.
constexpr size_t kSize = 8;
constexpr size_t kName = 28;

bool IsLocked(std::string const &path) {
  int const file = open(path.c_str(), O_RDWR | O_CLOEXEC);
  struct flock lock {};
  lock.l_type = F_WRLCK;
  fcntl(file, F_OFD_GETLK, &lock);
  close(file);
  return lock.l_type != F_UNLCK;
}

std::string Repeated(std::string const &text, int times) {
  std::string all;
  for (int i = 0; i < times; i++) all += text;
  return all;
}

class RolodexToolTest : public ToolTest {
 protected:
  RolodexToolTest() { EXPECT_EQ(Run("-q rolodex create").code, 0); }

  static std::string New(Line operands) {
    operands.insert(operands.begin(), {"rolodex", "new"});
    return RunTool(operands).out;
  }

  // Writes a card file: a first name, a key or none, and what a book keeps its key in.
  void WriteCard(std::string const &name, std::string const &first, std::string const &key,
                 std::string const &kept = "") {
    CallCard card(CardFormatBinary);
    card.AddProp("FN", PropertyAscii, 0, first.c_str(), static_cast<int32_t>(first.size() + 1));
    if (!kept.empty())
      card.AddProp("L-ZOLT-KEY", PropertyData, 0, kept.data(), static_cast<int32_t>(kept.size()));
    card.SetKey((key + std::string(32, '\0')).data());
    ASSERT_EQ(card.SaveCardAs(CardFormatBinary, Path(name).c_str()), 1);
  }
};

TEST_F(RolodexToolTest, CardsAreMadeNamedTaggedAndFound) {
  EXPECT_EQ(Run("rolodex create").code, 2);
  EXPECT_EQ(New({"Anna \u0411ell", "--email", "a@x.org", "--tel", "555"}), "1\n");
  EXPECT_EQ(New({"Ben", "--email", "b@y.org"}), "2\n");
  EXPECT_EQ(New({"Ben"}), "3\n");
  std::string const book = Path("contacts.rolodex");
  Expect({
      {"rolodex tag 1 Ben --first +3,5 -4", 0, "",
       "card 1 Anna ?ell: in 3,5\ncard 2 Ben: in 3,5\n"},
      {"rolodex list --category 3 --category 5", 0,
       "1\tAnna ?ell\t\ta@x.org\t3,5\n2\tBen\t\tb@y.org\t3,5\n", ""},
      {"rolodex list" + Repeated(" --category 3", 300), 0,
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
      {"rolodex category 3 Friends", 0, "", "category 3: named\n"},
      {"rolodex category 3 Friends", 0, "", "category 3: unchanged\n"},
      {"rolodex category 3", 0, "Friends\n", ""},
      {"rolodex category 128", 2, "", ""},
      {"rolodex rm Ben --all", 2, "", ""},
      {"-n --exit-code rolodex rm 3", 1, "", "card 3 Ben: would be removed\n"},
      {"rolodex rm 3 id:3", 0, "", "card 3 Ben: removed\n"},
      {"-n --exit-code rolodex rename 2 Benjamin", 1, "", "card 2 Ben: would be renamed\n"},
      {"rolodex rename 2 Benjamin", 0, "", "card 2 Benjamin: renamed\n"},
      {"-n --exit-code rolodex rename 2 Benjamin", 0, "", "card 2 Benjamin: unchanged\n"},
      {"--json rolodex rename 2 Benjamin", 0,
       R"({"schema":1,"id":2,"names":["Benjamin","","b@y.org"],"categories":[3,5],"changed":false})"
       "\n",
       ""},
      {"-n --exit-code rolodex new Dora", 1, "", ""},
      {"-n --exit-code rolodex compact", 1, "", "zolt: " + book + ": would be compacted\n"},
      {"rolodex compact", 0, "", "zolt: " + book + ": compacted\n"},
      {"-n --exit-code rolodex compact", 0, "", "zolt: " + book + ": no gaps\n"},
      {"rolodex get 9", 1, "", "zolt: 9: no such card\n"},
  });
}

TEST_F(RolodexToolTest, ACategoryIsTakenByItsName) {
  for (char const *name : {"Anna", "Ben"}) New({name});
  for (char const *words :
       {"3 Friends", "4 friends", "5 Family", "6 Old,New", "7 Team", "8 TEAM", "9 12", "10 n"}) {
    EXPECT_EQ(Run(std::string("-q rolodex category ") + words).code, 0) << words;
  }
  Expect({
      {"rolodex tag 1 +Friends,family,7", 0, "", "card 1 Anna: in 3,5,7\n"},
      {"rolodex tag 1 -Family -Friends", 0, "", "card 1 Anna: in 7\n"},
      {"rolodex tag 2 +Old,New +12 +n", 0, "", "card 2 Ben: in 6,10,12\n"},
      {"rolodex tag 2 -friends -- -n", 0, "", "card 2 Ben: in 6,12\n"},
      {"rolodex tag -fnone 2 +3", 1, "",
       "zolt: fnone: no such category; zolt rolodex info lists those with a name\n"},
      {"rolodex list --category old,new", 0, "2\tBen\t\t\t6,12\n", ""},
      {"rolodex list --category Old,New,Team", 1, "",
       "zolt: Old: no such category; zolt rolodex info lists those with a name\n"},
      {"rolodex list --category Famly", 1, "",
       "zolt: Famly: no such category; did you mean Family?\n"},
      {"rolodex list --category team", 1, "",
       "zolt: team: 2 categories are so named; say which one by its number: 7,8\n"},
      {"rolodex tag 1 +128", 2, "",
       "zolt: 128: is no number of a category; they are from 0 to 127\n"},
      {"rolodex list --category 3,", 0, "", ""},
  });
}

TEST_F(RolodexToolTest, VCardsOfEveryProfileAreExported) {
  New({"Anna"});
  std::string const line = "-q rolodex export " + Path("out") + " ";
  for (auto const &[profile, begin] : {std::pair("", "VERSION:3.0"),
                                       {" --profile 4.0", "VERSION:4.0"},
                                       {" --profile classic", "FN;ENCODING"}}) {
    EXPECT_EQ(Run(line + "--format vcard" + profile).code, 0);
    EXPECT_EQ(ContentOf(Path("out/id-1.vcf")).substr(13).find(begin), 0U) << begin;
  }
  EXPECT_EQ(Run(line + "--format vcard --profile 2.1").code, 2);
  EXPECT_EQ(Run(line + "--profile 4.0").code, 2);
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
  // Nothing that only reads opens it, and what does tells what it cuts.
  Expect({{"rolodex list", 4, "",
           "zolt: " + book +
               ": is damaged, and reading it would leave cards out; zolt rolodex "
               "check names them, and with --repair mends it\n"},
          {"-n rolodex rm 1", 4, "", ""}});
  EXPECT_EQ(ContentOf(book), damaged);
  std::string const piece = book + ".lost-1";
  std::string const brings = "zolt rolodex check --repair " + piece + " brings ";
  Expect({{"rolodex rename 1 Anna", 0, "",
           "zolt: " + book + ": was damaged; what stood behind the damage is in " + piece + "; " +
               brings + "its cards back\ncard 1 Anna: unchanged\n"},
          {"rolodex check", 0, row("sound", "1", "Anna"),
           "zolt: " + book + ": 1 sound, 0 cut, 0 lost\nzolt: " + piece +
               ": cut off when the book was opened; " + brings + "back what it has\n"}});
  std::filesystem::remove(piece);
  // Through a link, with the rights that the file had.
  WriteContent(book, damaged);
  std::filesystem::permissions(book, std::filesystem::perms(0640));
  std::filesystem::create_directory(Path("other"));
  std::filesystem::rename(book, Path("other/book"));
  std::filesystem::create_symlink("other/book", book);
  std::string const kept = Path("other/book.damaged-1");
  Expect({{"rolodex check --repair", 0, rows,
           "zolt: " + book + ": has 2 cards; the old file is " + kept + "\n"},
          {"rolodex list", 0, "1\tAnna\n3\tCarl\n", ""},
          {"rolodex check piece", 2, "", ""},
          {"rolodex check --repair piece", 3, "", "zolt: piece: No such file or directory\n"},
          {"rolodex check -f " + Path("none"), 3, "", ""}});
  EXPECT_EQ(ContentOf(kept), damaged);
  EXPECT_TRUE(std::filesystem::is_symlink(book));
  EXPECT_EQ(std::filesystem::status(book).permissions(), std::filesystem::perms(0640));
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

TEST_F(RolodexToolTest, ABookThatWasNotClosedIsReadAndStaysAsItIs) {
  for (char const *name : {"Anna", "Ben"}) New({name});
  std::string const book = Path("contacts.rolodex");
  std::string const sound = ContentOf(book);
  size_t const index = sound.find("\xFF\xFF\xFF\xFF", sound.find("Ben"));
  std::string const open = sound.substr(0, index + 4);
  for (std::string const &content : {open, BigEndian(open)}) {
    WriteContent(book, content);
    Expect({{"rolodex list", 0, "1\tAnna\n2\tBen\n", ""},
            {"-n rolodex rm 2", 0, "", "card 2 Ben: would be removed\n"}});
    EXPECT_EQ(ContentOf(book), content);
  }
  EXPECT_EQ(Run("rolodex rm 2").code, 0);
  EXPECT_EQ(Run("rolodex list").out, "1\tAnna\n");
}

TEST_F(RolodexToolTest, NobodyWritesToABookWhileItIsRepaired) {
  New({"Anna"});
  std::string const book = Path("contacts.rolodex");
  std::string const piece = Path("piece");
  std::filesystem::copy_file(book, piece);
  // The repair comes no further than to this.
  uint32_t held = 0;
  ASSERT_EQ(AFS_LZOpenFile(piece.c_str(), 3, &held), 0);
  BackgroundTool tool("--wait 60 rolodex check --repair " + piece);
  auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!IsLocked(book) && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
  for (int i = 0; i < 100; i++) {
    Rolodex other;
    ASSERT_NE(other.Open(book.c_str(), 0), 0) << i;
  }
  AFS_CloseFile(held);
  EXPECT_EQ(tool.Wait(), 0);
  EXPECT_EQ(Run("rolodex list").out, "1\tAnna\n");
}

TEST_F(RolodexToolTest, AWriteThatFailsIsTold) {
  for (char const *name : {"Anna", "Ben", "Carl"}) New({name});
  EXPECT_EQ(Run("-q rolodex rm 2").code, 0);
  std::string const whole = ContentOf(Path("contacts.rolodex"));
  WriteCard("card", "Dora", "");
  std::vector<std::string> const lines = {
      "rename 1 Anne", "tag 1 +3", "category 3 Friends",       "compact",
      "rm 1",          "new Eve",  "replace 1 " + Path("card")};
  for (std::string const &line : lines) {
    WriteContent(Path("contacts.rolodex"), whole);
    SCOPED_TRACE(line);
    FullDisk const full;
    ToolResult const result = Run("rolodex " + line);
    EXPECT_EQ(result.code, 3);
    EXPECT_EQ(result.err.find("zolt: "), 0U) << result.err;
  }
}

TEST_F(RolodexToolTest, AKeyIsNoneOnlyIfAllItsBytesAreZero) {
  using namespace std::string_literals;
  std::filesystem::create_directory(Path("in"));
  WriteCard("in/a", "Anna", "", "short");
  WriteCard("in/b", "Ben", "", "\0kept"s + std::string(27, 'k'));
  WriteCard("in/c", "Carl", "\0key"s);
  WriteCard("in/d", "Dora", "\0key"s);
  EXPECT_EQ(RunTool({"rolodex", "import", Path("in")}).code, 1);
  ToolResult const second = RunTool({"rolodex", "import", Path("in")});
  EXPECT_EQ(second.code, 1);
  EXPECT_EQ(second.err, "zolt: " + Path("in/d") + ": has the key of " + Path("in/c") +
                            "; only that one is taken; give one of them a key of its own\n"
                            "zolt: 4 read, 0 added, 0 changed, 1 refused\n");
  // As an older book may have them.
  std::string const key = "\0key"s + std::string(28, '\0');
  Rolodex book;
  ASSERT_EQ(book.Open(Path("contacts.rolodex").c_str(), 0), 0);
  for (std::string const &kept : {key, "short"s}) {
    PCardStorage card;
    card.AddProp("L-ZOLT-KEY", PropertyData, PropertyLocal, kept.data(),
                 static_cast<int32_t>(kept.size()));
    EXPECT_NE(book.CreateCard(&card, "Twin", "", "", nullptr), 0U);
  }
  book.Close();
  EXPECT_EQ(RunTool({"--json", "rolodex", "export", Path("out")}).out,
            "{\"schema\":1,\"written\":5,\"unchanged\":0,\"removed\":0}\n");
  std::string const stem = "006b6579" + std::string(40, '0');
  for (std::string const &name :
       {"id-1"s, "006b657074" + Repeated("6b", 19), stem, stem + "-2", "id-5"s})
    EXPECT_TRUE(std::filesystem::exists(Path("out/") + name + ".card")) << name;
  EXPECT_EQ(Run("-q rolodex edit 5", {.environment = {"EDITOR=echo FN=ASCII::Eve >>"}}).code, 0);
  EXPECT_EQ(Run("--json rolodex get 5").out.find("L-ZOLT-KEY"), std::string::npos);
}

TEST_F(RolodexToolTest, WhatTextCannotHoldNeedsAYes) {
  WriteCard("card", "Anna", "");
  EXPECT_EQ(RunTool({"-q", "card", "set", Path("card"), std::string(64, 'N'), "x"}).code, 0);
  EXPECT_EQ(RunTool({"rolodex", "add", Path("card")}).out, "1\n");
  std::string const editor = "EDITOR=true";
  EXPECT_EQ(Run("rolodex edit 1", {.environment = {editor}}).code, 2);
  EXPECT_EQ(Run("-y rolodex edit 1", {.environment = {editor}}).err, "card 1 Anna: unchanged\n");
  EXPECT_EQ(Run("rolodex export --format text " + Path("out")).code, 2);
  EXPECT_FALSE(std::filesystem::exists(Path("out")));
  EXPECT_EQ(Run("-y rolodex export --format text " + Path("out")).code, 0);
}

}  // namespace
}  // namespace zolt::testing
