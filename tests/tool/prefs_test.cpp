#include <array>

#include "tests/support/raw_hive.h"
#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

using PrefsTest = ToolTest;

TEST_F(PrefsTest, AChangeIsTold) {
  Expect(
      {{"-q prefs set Audio Volume 70"},
       {"prefs set Audio Volume 40", 0, "", "Conferencing:Audio Volume: 70 -> 40\n"},
       {"prefs set Audio Volume 40", 0, "", "Conferencing:Audio Volume: unchanged\n"},
       {"-n prefs set Audio Volume 9", 0, "", "Conferencing:Audio Volume: 40 -> 9 (not written)\n"},
       {"-n --exit-code prefs set Audio Volume 9", 1},
       {"-n --exit-code prefs set Audio Volume 40", 0, "",
        "Conferencing:Audio Volume: unchanged\n"},
       {"-q prefs get conferencing\\audio VOLUME", 0, "40\n"},
       {"-q prefs get @AUDI Volume", 0, "40\n"},
       {"prefs unset Audio Volume Other", 0, "",
        "Conferencing:Audio Volume: 40 -> unset\nConferencing:Audio Other: was not set\n"},
       {"prefs get Audio Volume --default -3", 0, "-3\n"}});
}

TEST_F(PrefsTest, ATerminalGetsColumnsThatAreLinedUp) {
  Set({"Audio", "Volume", "70", "M\u00fcte", "a\tb"});
  ToolSetting const terminal{.output = ToolOutput::terminal, .environment = {"NO_COLOR=1"}};
  EXPECT_EQ(Run("prefs list Audio", terminal).out,
            "Volume  70    text  user\nM\u00fcte    a\\tb  text  user\n");
  EXPECT_EQ(Run("prefs list Audio -z").out.substr(6, 14), std::string("\00070\0text\0user\0", 14));
  EXPECT_EQ(Run("--color always prefs explain Audio Volume").out.substr(0, 12),
            "user\t70\t\033[2m");
}

TEST_F(PrefsTest, WhatWouldBreakALineIsEscaped) {
  Set({"Audio", "T", "a\tb\nc\\d\x01\x7F\xC2\x81\u00e9"});
  std::string const escaped = "a\\tb\\nc\\\\d\\x01\\x7F\\xC2\\x81\u00e9\n";
  Expect({{"prefs get Audio T", 0, escaped},
          {"prefs get Audio T", 0, escaped, "", {.output = ToolOutput::terminal}},
          {"prefs get Audio T -z", 0, {"a\tb\nc\\d\x01\x7F\xC2\x81\u00e9\0", 14}},
          {"prefs get Audio 'x\n\033[2J'", 1, "",
           "zolt: Conferencing:Audio x\\n\\x1B[2J: no such value\n"}});
}

TEST_F(PrefsTest, AReadGoesAlongTheChain) {
  for (std::string const level : {"user", "system", "shared-user", "shared-system"})
    Set({"-L", level, "Audio", "V", level});
  Set({"-L", "system", "Audio", "Only there", "x"});
  Expect({{"prefs get Audio V", 0, "user\n"},
          {"prefs get Audio V -L shared-user", 0, "shared-user\n"},
          {"prefs get Audio V -L shared-user --parent-first", 0, "shared-system\n"},
          {"prefs get Audio V -L system --parent-first", 0, "system\n"},
          {"prefs list Audio", 0, "V\tuser\ttext\tuser\nOnly there\tx\ttext\tsystem\n"},
          {"prefs unset Audio V", 0, "", "Conferencing:Audio V: user -> unset\n"},
          {"prefs get Audio V --only", 1},
          {"prefs explain Audio V", 0, "user\t-\nsystem\tsystem\t<- answers\n"}});
}

TEST_F(PrefsTest, AValueThatIsNoTextIsPassedByAndSaid) {
  Set({"Audio", "V", "", "-L", "system"});
  Set({"Audio", "V", "x", "-L", "user"});
  std::string const text(256, 'x');
  for (char const *name : {"V", "Long"}) SetForeign(name, REG_SZ, text + '\0');
  SetForeign("Blob", REG_DWORD, std::string("\1\0\xFF\0", 4));
  Expect(
      {{"prefs get Audio V", 0, "\n"},
       {"prefs explain Audio V", 0,
        "user\t" + text + "\t<- answers bytes\nsystem\t\t<- answers text\n"},
       {"prefs get Audio Long", 1, "",
        "zolt: Conferencing:Audio Long: holds an unreadable text of 256 bytes; use -t bytes\n"},
       {"prefs get Audio Long -t bytes", 0, text + '\0'},
       {"prefs get Audio Blob", 1, "",
        "zolt: Conferencing:Audio Blob: holds bytes and no text; use -t bytes\n"},
       {"prefs get Audio Blob --default 7", 0, "7\n"},
       {"prefs list Audio", 0,
        "V\t\ttext\tsystem\nLong\t" + text + "\tunreadable\tuser\nBlob\t0x0100ff00\tbytes\tuser\n"},
       // The empty text, which the store takes for what it cannot read.
       {"-q prefs set Audio Long '' Blob ''"},
       {"prefs list Audio --only", 0,
        "V\t" + text + "\tunreadable\tuser\nLong\t\ttext\tuser\nBlob\t\ttext\tuser\n"}});
}

TEST_F(PrefsTest, NumbersAndBooleansAreCheckedTexts) {
  // As which type a value is set, what is stored, as which it is read, and what is read; "" is a
  // refusal.
  std::array<std::string, 5> const rows[] = {
      {"num", "0x7fFFffff", "2147483647", "num", "2147483647\n"},
      {"num", "-0x80000000", "-2147483648", "num", "-2147483648\n"},
      {"num", "2147483648"},
      {"num", "5x"},
      {"num", "99999999999999999999"},
      {"bool", "TRUE", "Yes", "bool", "Yes\n"},
      {"bool", "off", "No", "bool", "No\n"},
      {"bool", "1", "Yes", "num"},
      {"bool", "2"},
      {"text", "0x10", "0x10", "num", "16\n"},
      {"text", "010", "010", "num", "8\n"},
      {"text", "4294967296", "4294967296", "num"},
      {"text", "y", "y", "bool", "Yes\n"},
      {"text", "1", "1", "bool", "No\n"}};
  for (auto const &[type, value, stored, readType, read] : rows) {
    SCOPED_TRACE(type + " " + value);
    int const code = RunTool({"prefs", "set", "-t", type, "Audio", "V", value}).code;
    EXPECT_EQ(code, stored.empty() ? 2 : 0);
    if (stored.empty()) continue;
    Expect({{"prefs get Audio V", 0, stored + "\n"},
            {"prefs get Audio V -t " + readType, read.empty() ? 1 : 0, read, ""}});
  }
  EXPECT_EQ(Run("prefs get -t num --default 0x32 Audio None").out, "50\n");
}

TEST_F(PrefsTest, BytesComeFromFilesAndGoThere) {
  std::string const bytes("\0\xFF\n\t\x80", 5);
  WriteContent("in", bytes);
  std::string const unchanged = "Conferencing:Audio B: unchanged\n";
  ToolSetting const terminal{.output = ToolOutput::terminal};
  Expect(
      {{"prefs set -t bytes Audio B @in", 0, "", "Conferencing:Audio B: unset -> 0x00ff0a0980\n"},
       {"prefs set -t bytes Audio B 0x00FF0a0980", 0, "", unchanged},
       {"prefs get -t bytes Audio B -o out"},
       {"prefs set -t bytes Audio B --from out", 0, "", unchanged},
       {"prefs get -t bytes Audio B", 0, bytes},
       {"prefs get -t bytes Audio B", 2, "", "", terminal},
       {"prefs get -t bytes -o - Audio B", 0, bytes, "", terminal},
       {"prefs set Audio --from - T",
        0,
        "",
        "Conferencing:Audio T: unset -> two\\nlines\n",
        {"two\nlines\n"}},
       {"prefs set Audio --from - T", 2, "", "", {std::string("a\0b", 3)}}});
  for (std::string const wrong : {"0x0", "0xzz", "00", "''", "@"})
    EXPECT_NE(Run("prefs set -t bytes Audio B " + wrong).code, 0) << wrong;
}

TEST_F(PrefsTest, SetIsAllOrNothing) {
  Set({"Audio", "A", "1"});
  Expect({{"prefs set Audio A 2 B 2 --if 1", 1, "",
           "zolt: Conferencing:Audio B: is unset, not 1; nothing is written\n"},
          {"prefs set Audio C 1 A 2 --if-absent", 1, "",
           "zolt: Conferencing:Audio A: is 1, not unset; nothing is written\n"},
          {"prefs list Audio", 0, "A\t1\ttext\tuser\n"},
          {"prefs set Audio A 2 --if 1", 0, "", "Conferencing:Audio A: 1 -> 2\n"},
          {"prefs set Audio B 3 C 4 --if-absent", 0, "",
           "Conferencing:Audio B: unset -> 3\nConferencing:Audio C: unset -> 4\n"},
          {"-L system prefs set Audio A 9 --if 2", 1},
          {"-q prefs set Audio E ''"},
          {"prefs set Audio E x --if ''", 0, "", "Conferencing:Audio E: \"\" -> x\n"}});
}

TEST_F(PrefsTest, OnlySetMakesSections) {
  Set({"Outer:Inner", "V", "1"});
  // Those that every client makes are there now.
  std::string const count = "select count(*), group_concat(name) from key";
  std::string const user = RawHive(home_.UserHive()).Run(count);
  std::string const machine = RawHive(home_.MachineHive()).Run(count);
  Expect({{"prefs get Outer:Innr V", 1, "",
           "zolt: Outer:Innr: no such section; did you mean Outer:Inner?\n"},
          {"prefs explain Audio:Deep V", 1, "",
           "zolt: Audio:Deep: no such section; did you mean Conferencing:Audio:Deep?\n"},
          {"prefs unset None:There V", 0, "", "None:There V: was not set\n"},
          {"-n prefs set None:There V 1", 0, "", "None:There V: unset -> 1 (not written)\n"},
          {"prefs set None:There V 1 --if 2", 1},
          {"prefs get outer:inner v", 0, "1\n"}});
  EXPECT_EQ(RawHive(home_.UserHive()).Run(count), user);
  EXPECT_EQ(RawHive(home_.MachineHive()).Run(count), machine);
}

TEST_F(PrefsTest, AListShowsSectionsBelow) {
  Set({"Chat", "C", "1"});
  Set({"-L", "system", "Chat:Deep", "D", "2"});
  Set({"Conferencing:Chat:Deep", "E", "3"});
  Set({":", "Top", "0"});
  Set({":Audio", "Other", "4"});
  Expect({{"prefs list -r", 0,
           ":\tTop\t0\ttext\tuser\n"
           "Conferencing:Chat\tC\t1\ttext\tuser\n"
           "Conferencing:Chat:Deep\tE\t3\ttext\tuser\n"
           "Chat:Deep\tD\t2\ttext\tsystem\n"
           ":Audio\tOther\t4\ttext\tuser\n",
           ""},
          {"prefs list -r Conferencing", 0,
           "Conferencing:Chat\tC\t1\ttext\tuser\nConferencing:Chat:Deep\tE\t3\ttext\tuser\n"},
          {"prefs get :Audio Other", 0, "4\n"},
          {"prefs list Conferencing:Chat", 0, "C\t1\ttext\tuser\nDeep\t\tsection\tuser\n"}});
  std::string const top = Run("prefs list").out;
  EXPECT_EQ(top.substr(0, top.find("Components")),
            "Top\t0\ttext\tuser\nInstaller\t\tsection\tuser\n");
  EXPECT_NE(top.find("\nChat\t\tsection\tuser\n"), std::string::npos);
}

}  // namespace
}  // namespace zolt::testing
