#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

using CommandLineTest = ToolTest;

TEST_F(CommandLineTest, ValuesArriveAsTheyAre) {
  for (std::string const value : {"[1,2]", "-5", "-0x10", "-", "get", "a=b", "", "%s", "@AUDI",
                                  "with blanks ", "\"quoted\"", "\u00e9\u20ac"}) {
    Set({"Audio", "Value", value});
    EXPECT_EQ(RunTool({"prefs", "get", "Audio", "Value", "-z"}).out, value + '\0');
  }
  Set({"Audio", "--", "--json", "-q"});
  EXPECT_EQ(Run("-- prefs get Audio --json").out, "-q\n");
}

TEST_F(CommandLineTest, OptionsStandAnywhere) {
  Set({"Audio", "V", "user"});
  Set({"-L", "system", "Audio", "V", "machine"});
  for (std::string const line :
       {"-Lsystem prefs get Audio V", "prefs -qzLsystem get Audio V",
        "prefs get --level=system -yq Audio --wait 0.5 V --progress never",
        "prefs --level system get Audio V", "-L user prefs -L system get Audio V"}) {
    EXPECT_EQ(Run(line).out.substr(0, 7), "machine") << line;
  }
}

TEST_F(CommandLineTest, TheHomeAndTheTreeAreChosen) {
  TempHome const other;
  std::string const home = "--home " + home_.path();
  Expect({{"prefs set Audio V other", 0, "", "Conferencing:Audio V: unset -> other\n"},
          {home + " prefs set Audio V first", 0, "", "Conferencing:Audio V: unset -> first\n"},
          {"--tree A:B prefs set Audio V tree", 0, "", "Conferencing:Audio V: unset -> tree\n"},
          {"--tree A\\B prefs get Audio V", 0, "tree\n"},
          {home + " prefs get Audio V", 0, "first\n"},
          {"prefs get Audio V", 0, "other\n", ""}});
}

TEST_F(CommandLineTest, WrongUsageIsOneLineThatHelps) {
  std::pair<std::string, std::string> const wrongs[] = {
      {"pref get Audio V", "pref: no such command; did you mean prefs?"},
      {"help repair", "repair: no such command; zolt help lists them"},
      {"prefs gte Audio V", "gte: no such command; did you mean get?"},
      {"prefs", "prefs: a verb is missing; zolt help prefs lists them"},
      {"prefs get Audio V --jsno", "unknown option --jsno; did you mean --json?"},
      {"prefs set Audio V -x5", "unknown option -x5; -- ends the options"},
      {"prefs get Audio V --default", "--default needs a value"},
      {"prefs get Audio V --only=1", "--only takes no value"},
      {"prefs list Audio --default 3", "prefs list takes no --default; see zolt help prefs list"},
      {"prefs get Audio", "prefs get needs more operands; usage: zolt prefs get SECTION NAME"},
      {"prefs get Audio V W", "prefs get takes fewer operands; usage: zolt prefs get SECTION NAME"},
      {"prefs set Audio V 1 v 2", "v: is named twice"},
      {"prefs set Audio V 1 --if 2 --if-absent", "--if and --if-absent exclude each other"},
      {"prefs get Audio V -t nmu", "-t nmu: no such type; did you mean num?"},
      {"prefs get Audio V -L usre", "-L usre: no such level; did you mean user?"},
      {"prefs get Audio V --wait -1", "--wait -1: is no number of seconds"},
      {"prefs get Audio V --color red", "--color red: it is auto, always or never"},
      {"prefs get @AUDO V", "@AUDO: no section has this id; did you mean @AUDI?"},
      {"--tree A::B prefs get Audio V", "--tree A::B: a name in the path is empty"},
      {"prefs set Audio V a\xF0\x9F\x98\x80",
       "a\xF0\x9F\x98\x80: the stores' code page has no \xF0\x9F\x98\x80, U+1F600; use -t bytes"},
      {"prefs get Audio \xED\xA0\x80", "argument 4: is no valid UTF-8"}};
  for (auto const &[line, says] : wrongs) Expect({{line, 2, "", "zolt: " + says + "\n"}});
  EXPECT_EQ(Run("prefs set Audio V").err.substr(0, 55),
            "zolt: prefs set takes names and values in pairs; usage:");
}

TEST_F(CommandLineTest, NamesAndTextsEndAtTheirLimits) {
  std::string const longest(259, 'n');
  std::string const text(255, 't');
  std::string const section(255, 's');
  Set({section, longest, text});
  EXPECT_EQ(RunTool({"prefs", "get", section, longest}).out, text + "\n");
  std::string const set = "prefs set " + section;
  Expect({{set + " " + longest + "n 1", 2},
          {set + " T " + text + "t", 2},
          {set + "s T 1", 2},
          {set + " '' 1", 2},
          {"prefs get Audio " + std::string(10000, 'n'), 1}});
}

TEST_F(CommandLineTest, HelpNamesWhatThereIs) {
  EXPECT_EQ(Run("--version").out.substr(0, 5), "zolt ");
  EXPECT_EQ(Run("").code, 2);
  std::string const about = Run("help prefs set").out;
  for (char const *part : {"--if-absent", "Examples:"}) EXPECT_TRUE(Has(about, part));
  Expect({{"prefs set --help", 0, about},
          {"prefs set Audio -h", 0, about},
          {"help set", 0, about + "\n" + Run("help card set").out}});
  EXPECT_TRUE(Has(Run("help").out, "prefs explain"));
}

}  // namespace
}  // namespace zolt::testing
