#include <chrono>

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

  static void New(std::initializer_list<char const *> names) {
    for (char const *name : names) EXPECT_EQ(RunTool({"rolodex", "new", name}).code, 0);
  }

  // Writes a card file: a first name, a key or none, and what a book keeps its key in.
  static void WriteCard(char const *path, std::string const &first, std::string const &key,
                        std::string const &kept = "") {
    CallCard card(CardFormatBinary);
    card.AddProp("FN", PropertyAscii, 0, first.c_str(), static_cast<int32_t>(first.size() + 1));
    if (!kept.empty())
      card.AddProp("L-ZOLT-KEY", PropertyData, 0, kept.data(), static_cast<int32_t>(kept.size()));
    card.SetKey((key + std::string(32, '\0')).data());
    ASSERT_EQ(card.SaveCardAs(CardFormatBinary, path), 1);
  }

  std::string const book_ = Path("contacts.rolodex");
};

TEST_F(RolodexToolTest, CardsAreMadeNamedTaggedAndFound) {
  Expect(
      {{"rolodex create", 2},
       {"rolodex new 'Anna \u0411ell' --email a@x.org --tel 555", 0, "1\n"},
       {"rolodex new Ben --email b@y.org", 0, "2\n"},
       {"rolodex new Ben", 0, "3\n"},
       {"rolodex tag 1 Ben --first +3,5 -4", 0, "",
        "card 1 Anna ?ell: in 3,5\ncard 2 Ben: in 3,5\n"},
       {"rolodex list --category 3 --category 5", 0,
        "1\tAnna ?ell\t\ta@x.org\t3,5\n2\tBen\t\tb@y.org\t3,5\n"},
       {"rolodex list" + Repeated(" --category 3", 300), 0,
        "1\tAnna ?ell\t\ta@x.org\t3,5\n2\tBen\t\tb@y.org\t3,5\n"},
       {"rolodex find nobody", 1},
       {"rolodex query \u0411ELL", 0, "1 address\na@x.org\tAnna ?ell\tHOME\n"},
       {"rolodex query nobody", 1, "0 addresses\n"},
       {"rolodex select EMAIL$=Y.ORG FN=ben", 0, "2\tBen\t\tb@y.org\t3,5\n"},
       {"rolodex select EMAIL", 2},
       {"rolodex dupes", 1, "2\tBen\t\tb@y.org\t3,5\n3\tBen\n"},
       {"rolodex get Ben", 1, "",
        "id:2  Ben  b@y.org\nid:3  Ben  \n"
        "zolt: Ben: 2 cards are so named; say which one with id:N, or use --first or --all\n"},
       {"rolodex get id:3", 0, "FN\tBen\tUNICODE\n"},
       {"rolodex category 3 Friends", 0, "", "category 3: named\n"},
       {"rolodex category 3 Friends", 0, "", "category 3: unchanged\n"},
       {"rolodex category 3", 0, "Friends\n"},
       {"rolodex category 128", 2},
       {"rolodex rm Ben --all", 2},
       {"-n --exit-code rolodex rm 3", 1, "", "card 3 Ben: would be removed\n"},
       {"rolodex rm 3 id:3", 0, "", "card 3 Ben: removed\n"},
       {"-n --exit-code rolodex rename 2 Benjamin", 1, "", "card 2 Ben: would be renamed\n"},
       {"rolodex rename 2 Benjamin", 0, "", "card 2 Benjamin: renamed\n"},
       {"-n --exit-code rolodex rename 2 Benjamin", 0, "", "card 2 Benjamin: unchanged\n"},
       {"--json rolodex rename 2 Benjamin", 0,
        R"({"schema":1,"id":2,"names":["Benjamin","","b@y.org"],"categories":[3,5],"changed":false}
)"},
       {"-n --exit-code rolodex new Dora", 1},
       {"-n --exit-code rolodex compact", 1, "", "zolt: " + book_ + ": would be compacted\n"},
       {"rolodex compact", 0, "", "zolt: " + book_ + ": compacted\n"},
       {"-n --exit-code rolodex compact", 0, "", "zolt: " + book_ + ": no gaps\n"},
       {"rolodex get 9", 1, "", "zolt: 9: no such card\n"}});
}

TEST_F(RolodexToolTest, ACategoryIsTakenByItsName) {
  New({"Anna", "Ben"});
  for (std::string const words :
       {"3 Friends", "4 friends", "5 Family", "6 Old,New", "7 Team", "8 TEAM", "9 12", "10 n"})
    Expect(0, {"rolodex category " + words});
  Expect({{"rolodex tag 1 +Friends,family,7", 0, "", "card 1 Anna: in 3,5,7\n"},
          {"rolodex tag 1 -Family -Friends", 0, "", "card 1 Anna: in 7\n"},
          {"rolodex tag 2 +Old,New +12 +n", 0, "", "card 2 Ben: in 6,10,12\n"},
          {"rolodex tag 2 -friends -- -n", 0, "", "card 2 Ben: in 6,12\n"},
          {"rolodex tag -fnone 2 +3", 1, "",
           "zolt: fnone: no such category; zolt rolodex info lists those with a name\n"},
          {"rolodex list --category old,new", 0, "2\tBen\t\t\t6,12\n"},
          {"rolodex list --category Old,New,Team", 1, "",
           "zolt: Old: no such category; zolt rolodex info lists those with a name\n"},
          {"rolodex list --category Famly", 1, "",
           "zolt: Famly: no such category; did you mean Family?\n"},
          {"rolodex list --category team", 1, "",
           "zolt: team: 2 categories are so named; say which one by its number: 7,8\n"},
          {"rolodex tag 1 +128", 2, "",
           "zolt: 128: is no number of a category; they are from 0 to 127\n"},
          {"rolodex list --category 3,", 0}});
}

TEST_F(RolodexToolTest, VCardsOfEveryProfileAreExported) {
  New({"Anna"});
  for (auto const &[profile, begin] : {std::pair("", "VERSION:3.0"),
                                       {" --profile 4.0", "VERSION:4.0"},
                                       {" --profile classic", "FN;ENCODING"}}) {
    Expect({{std::string("-q rolodex export out --format vcard") + profile}});
    EXPECT_EQ(ContentOf("out/id-1.vcf").substr(13).find(begin), 0U) << begin;
  }
  Expect({{"rolodex export out --format vcard --profile 2.1", 2},
          {"rolodex export out --profile 4.0", 2}});
}

TEST_F(RolodexToolTest, ASecondImportAddsNothingAndAnExportTouchesNothingThatIsTheSame) {
  std::filesystem::create_directory("in");
  for (std::string const name : {"a", "b"})
    Expect({{"-q card new in/" + name}, {"-q card set in/" + name + " FN " + name}});
  WriteContent("in/text", "1.2.3.4\n7\n[Card Infos]\nFN=ASCII::Carl\n");
  WriteContent("in/bad", "1\n2\n[Card Infos]\nP=BITMAP::x\n");
  ToolResult const first = Run("rolodex import in");
  EXPECT_EQ(first.code, 4);
  EXPECT_TRUE(first.err.ends_with("zolt: 3 read, 3 added, 0 changed, 1 refused\n")) << first.err;
  std::filesystem::remove("in/bad");
  Expect({{"rolodex import in", 0, "", "zolt: 3 read, 0 added, 0 changed, 0 refused\n"},
          {"-q card set in/a FN Adam"}});
  std::filesystem::remove("in/b");
  Expect({{"-y rolodex import in --prune", 0, "",
           "zolt: 2 read, 0 added, 1 changed, 0 refused, 1 removed\n"},
          {"rolodex list", 0, "3\tCarl\n1\tAdam\n"},
          {"rolodex export out", 0, "", "zolt: 2 written, 0 unchanged\n"},
          {"rolodex export out", 0, "", "zolt: 0 written, 2 unchanged\n"},
          {"rolodex import out", 0, "", "zolt: 2 read, 0 added, 0 changed, 0 refused\n"}});
}

TEST_F(RolodexToolTest, CheckNamesEveryCardAndRepairKeepsTheOldFile) {
  New({"Anna", "Ben", "Carl"});
  std::string const sound = ContentOf(book_);
  std::string const head = "zolt: " + book_ + ": ";
  auto const row = [&sound](std::string const &state, char const *name, char const *whole = "") {
    return state + "\t" + name + "\tbyte " + std::to_string(sound.find(name + 2) - kName) + "\t" +
           whole + "whole\n";
  };
  std::string const anna = row("sound", "1\tAnna");
  Expect({{"rolodex check", 0, anna + row("sound", "2\tBen") + row("sound", "3\tCarl"),
           head + "3 sound, 0 cut, 0 lost\n"}});
  // Of Ben the size, with no trailer to find Carl by.
  std::string damaged = sound.substr(0, sound.size() - 6);
  damaged[sound.find("Ben") - kName + kSize + 2] = '\x7F';
  WriteContent(book_, damaged);
  std::string const rows = anna + row("cut", "2\tBen", "not ") + row("lost", "3\tCarl");
  Expect(
      {{"rolodex check", 4, rows, head + "1 sound, 1 cut, 1 lost; it was not closed\n"},
       {"-n rolodex check --repair", 4, rows},
       // Nothing that only reads opens it, and what does tells what it cuts.
       {"rolodex list", 4, "",
        head + "is damaged, and reading it would leave cards out; zolt rolodex check names them, "
               "and with --repair mends it\n"},
       {"-n rolodex rm 1", 4}});
  EXPECT_EQ(ContentOf(book_), damaged);
  std::string const piece = book_ + ".lost-1";
  std::string const brings = "zolt rolodex check --repair " + piece + " brings ";
  Expect({{"rolodex rename 1 Anna", 0, "",
           head + "was damaged; what stood behind the damage is in " + piece + "; " + brings +
               "its cards back\ncard 1 Anna: unchanged\n"},
          {"rolodex check", 0, anna,
           head + "1 sound, 0 cut, 0 lost\nzolt: " + piece +
               ": cut off when the book was opened; " + brings + "back what it has\n"}});
  std::filesystem::remove(piece);
  // Through a link, with the rights that the file had.
  WriteContent(book_, damaged);
  std::filesystem::permissions(book_, std::filesystem::perms(0640));
  std::filesystem::create_directory("other");
  std::filesystem::rename(book_, "other/book");
  std::filesystem::create_symlink("other/book", book_);
  std::string const kept = Path("other/book.damaged-1");
  Expect({{"rolodex check --repair", 0, rows, head + "has 2 cards; the old file is " + kept + "\n"},
          {"rolodex list", 0, "1\tAnna\n3\tCarl\n"},
          {"rolodex check piece", 2},
          {"rolodex check --repair piece", 3, "", "zolt: piece: No such file or directory\n"},
          {"rolodex check -f none", 3}});
  EXPECT_EQ(ContentOf(kept), damaged);
  EXPECT_TRUE(std::filesystem::is_symlink(book_));
  EXPECT_EQ(std::filesystem::status(book_).permissions(), std::filesystem::perms(0640));
  EXPECT_TRUE(Run("--json rolodex check")
                  .out.starts_with(R"({"schema":1,"file":")" + book_ +
                                   R"(","clean":true,"sound":2,"cut":0,"lost":0,"cards":[)"
                                   R"({"state":"sound","whole":true,"id":1,)"));
  WriteContent(book_, "no database");
  EXPECT_EQ(Run("rolodex check --repair").code, 4);
  EXPECT_EQ(ContentOf(book_), "no database");
}

TEST_F(RolodexToolTest, ABookThatIsOpenElsewhereIsWaitedForAndItsHolderNamed) {
  New({"Anna"});
  Rolodex other;
  ASSERT_EQ(other.Open(book_.c_str(), 0), 0);
  ToolResult const result = Run("--wait 0 rolodex list");
  EXPECT_EQ(result.code, 5);
  EXPECT_TRUE(Has(result.err, "open in another program; process " + std::to_string(getpid())));
  other.Close();
  WriteContent("junk", "no database");
  Expect(
      {{"rolodex list", 0, "1\tAnna\n"}, {"-f none rolodex list", 3}, {"-f junk rolodex list", 4}});
}

TEST_F(RolodexToolTest, ABookThatWasNotClosedIsReadAndStaysAsItIs) {
  New({"Anna", "Ben"});
  std::string const sound = ContentOf(book_);
  size_t const index = sound.find("\xFF\xFF\xFF\xFF", sound.find("Ben"));
  std::string const open = sound.substr(0, index + 4);
  for (std::string const &content : {open, BigEndian(open)}) {
    WriteContent(book_, content);
    Expect({{"rolodex list", 0, "1\tAnna\n2\tBen\n"},
            {"-n rolodex rm 2", 0, "", "card 2 Ben: would be removed\n"}});
    EXPECT_EQ(ContentOf(book_), content);
  }
  Expect({{"-q rolodex rm 2"}, {"rolodex list", 0, "1\tAnna\n"}});
}

TEST_F(RolodexToolTest, NobodyWritesToABookWhileItIsRepaired) {
  New({"Anna"});
  std::filesystem::copy_file(book_, "piece");
  // The repair comes no further than to this.
  uint32_t held = 0;
  ASSERT_EQ(AFS_LZOpenFile("piece", 3, &held), 0);
  BackgroundTool tool("--wait 60 rolodex check --repair piece");
  auto const deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!IsLocked(book_) && std::chrono::steady_clock::now() < deadline) std::this_thread::yield();
  for (int i = 0; i < 100; i++) ASSERT_NE(Rolodex().Open(book_.c_str(), 0), 0) << i;
  AFS_CloseFile(held);
  EXPECT_EQ(tool.Wait(), 0);
  EXPECT_EQ(Run("rolodex list").out, "1\tAnna\n");
}

TEST_F(RolodexToolTest, AWriteThatFailsIsTold) {
  New({"Anna", "Ben", "Carl"});
  EXPECT_EQ(Run("-q rolodex rm 2").code, 0);
  std::string const whole = ContentOf(book_);
  WriteCard("card", "Dora", "");
  for (std::string const line : {"rename 1 Anne", "tag 1 +3", "category 3 Friends", "compact",
                                 "rm 1", "new Eve", "replace 1 card"}) {
    WriteContent(book_, whole);
    SCOPED_TRACE(line);
    FullDisk const full;
    ToolResult const result = Run("rolodex " + line);
    EXPECT_EQ(result.code, 3);
    EXPECT_TRUE(result.err.starts_with("zolt: ")) << result.err;
  }
}

TEST_F(RolodexToolTest, AKeyIsNoneOnlyIfAllItsBytesAreZero) {
  using namespace std::string_literals;
  std::filesystem::create_directory("in");
  WriteCard("in/a", "Anna", "", "short");
  WriteCard("in/b", "Ben", "", "\0kept"s + std::string(27, 'k'));
  WriteCard("in/c", "Carl", "\0key"s);
  WriteCard("in/d", "Dora", "\0key"s);
  Expect({{"rolodex import in", 1},
          {"rolodex import in", 1, "",
           "zolt: in/d: has the key of in/c; only that one is taken; give one of them a key of its "
           "own\nzolt: 4 read, 0 added, 0 changed, 1 refused\n"}});
  // As an older book may have them.
  std::string const key = "\0key"s + std::string(28, '\0');
  Rolodex book;
  ASSERT_EQ(book.Open(book_.c_str(), 0), 0);
  for (std::string const &kept : {key, "short"s}) {
    PCardStorage card;
    card.AddProp("L-ZOLT-KEY", PropertyData, PropertyLocal, kept.data(),
                 static_cast<int32_t>(kept.size()));
    EXPECT_NE(book.CreateCard(&card, "Twin", "", "", nullptr), 0U);
  }
  book.Close();
  Expect({{"--json rolodex export out", 0,
           "{\"schema\":1,\"written\":5,\"unchanged\":0,\"removed\":0}\n"}});
  std::string const stem = "006b6579" + std::string(40, '0');
  for (std::string const &name :
       {"id-1"s, "006b657074" + Repeated("6b", 19), stem, stem + "-2", "id-5"s})
    EXPECT_TRUE(std::filesystem::exists("out/" + name + ".card")) << name;
  EXPECT_EQ(Run("-q rolodex edit 5", {.environment = {"EDITOR=echo FN=ASCII::Eve >>"}}).code, 0);
  EXPECT_FALSE(Has(Run("--json rolodex get 5").out, "L-ZOLT-KEY"));
}

TEST_F(RolodexToolTest, WhatTextCannotHoldNeedsAYes) {
  WriteCard("card", "Anna", "");
  ToolSetting const editor{.environment = {"EDITOR=true"}};
  Expect({{"-q card set card " + std::string(64, 'N') + " x"},
          {"rolodex add card", 0, "1\n"},
          {"rolodex edit 1", 2, "", "", editor},
          {"-y rolodex edit 1", 0, "", "card 1 Anna: unchanged\n", editor},
          {"rolodex export --format text out", 2}});
  EXPECT_FALSE(std::filesystem::exists("out"));
  EXPECT_EQ(Run("-y rolodex export --format text out").code, 0);
}

}  // namespace
}  // namespace zolt::testing
