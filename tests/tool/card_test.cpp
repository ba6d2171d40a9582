#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/support/format_page.h"
#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

using nlohmann::json;

class CardTest : public ToolTest {
 protected:
  std::string Card(Line operands, int code = 0, ToolSetting const &setting = {}) {
    operands.insert(operands.begin(), "card");
    ToolResult const result = RunTool(operands, setting);
    EXPECT_EQ(result.code, code) << result.err;
    error_ = result.err;
    return result.out;
  }
  std::string New() {
    Card({"new", Path("a")});
    return Path("a");
  }

  std::string error_;
};

TEST_F(CardTest, ACardIsMadeFilledReadAndEmptied) {
  std::string const card = New();
  Card({"new", card}, 2);
  Card({"set", card, "FN", "Anna \u0411ell", "ORG", "a\tb"});
  EXPECT_EQ(error_, "FN: unset -> Anna \u0411ell\nORG: unset -> a\\tb\n");
  Card({"set", card, "TEL", "5", "--flags", "work,VOICE", "--type", "ascii"});
  Card({"set", card, "TEL", "6", "--flags", "HOME"});
  Card({"set", card, "TEL", "7"}, 2);
  Card({"set", card, "tel", "8", "--flags", "HOME"});
  EXPECT_EQ(error_, "TEL HOME: 6 -> 8\n");
  Card({"set", card, "PHOTO", "0x00FF", "--type", "bitmap"});
  Card({"set", card, "FN", "Anna \u0411ell"});
  EXPECT_EQ(error_, "FN: unchanged\n");
  EXPECT_EQ(Card({"show", card}),
            "FN\tAnna \u0411ell\tUNICODE\nORG\ta\\tb\tUNICODE\nTEL\t5\tASCII\tWORK,VOICE\n"
            "TEL\t8\tUNICODE\tHOME\nPHOTO\t0x00ff\tBITMAP\n");
  EXPECT_EQ(Card({"get", card, "tel", "--flags", "HOME"}), "8\n");
  EXPECT_EQ(Card({"get", card, "PHOTO"}), std::string("\0\xFF", 2));
  Card({"get", card, "PHOTO"}, 2, {.output = ToolOutput::terminal});
  Card({"get", card, "TELL"}, 1);
  EXPECT_EQ(error_, "zolt: TELL: the card has no such property; did you mean TEL?\n");
  Card({"-n", "unset", card, "TEL"});
  Card({"unset", card, "TEL", "NONE"});
  EXPECT_EQ(error_, "TEL HOME: 8 -> unset\nTEL WORK,VOICE: 5 -> unset\n");
  for (Line const &wrong :
       {Line{"set", card, "\u00E9", "x"}, Line{"set", card, "N", "x", "--flags", "HOM"},
        Line{"set", card, "N", "\u0411", "--type", "ascii"},
        Line{"set", card, "N", "x", "--type", "asci"}, Line{"set", card, "N"}}) {
    Card(wrong, 2);
  }
}

TEST_F(CardTest, PreferencesOfACard) {
  std::string const card = New();
  Card({"prefs", card, "set", "Audio", "Volume", "0x28", "-t", "num"});
  Card({"prefs", card, "set", "Lab", "x", "y"});
  EXPECT_EQ(error_, "Lab x: unset -> y\n");
  EXPECT_EQ(Card({"prefs", card, "list"}), "0x42414C00\tx\ty\nConferencing:Audio\tVolume\t40\n");
  EXPECT_EQ(Card({"prefs", card, "get", "Audio", "volume"}), "40\n");
  Card({"prefs", card, "unset", "Lab", "x"});
  Card({"prefs", card, "get", "Lab", "x"}, 1);
  Card({"prefs", card, "set", "Audio", std::string(32, 'n'), "x"}, 2);
  Card({"prefs", card, "put", "Audio", "n", "x"}, 2);
  json const document = json::parse(Card({"--json", "show", card}));
  EXPECT_EQ(document["preferences"],
            json::parse(R"([{"section":"Conferencing:Audio","name":"Volume","value":"40"}])"));
  EXPECT_EQ(document["key"].get<std::string>().size(), 48U);
}

TEST_F(CardTest, TextAndBackLosesOnlyWhatIsSaid) {
  std::string const card = New();
  Card({"set", card, "FN", "Anna \u0411ell", "X-BRNDL-IP", "10.0.0.1", "X-BRNDL-CONFID", "7"});
  Card({"set", card, "PHOTO", "0x00FF", "--type", "bitmap", "--flags", "HOME"});
  Card({"prefs", card, "set", "Audio", "Volume", "40"});
  Card({"convert", card, "--to", "text", Path("t")});
  std::string const text = ContentOf(Path("t"));
  EXPECT_NE(text.find("[Preferences]\r\n\r\n[Audio]\r\nVolume=40\r\n"), std::string::npos) << text;
  Card({"convert", Path("t"), "--to", "card", card}, 2);
  Card({"-y", "convert", Path("t"), "--to", "card", Path("b")});
  EXPECT_EQ(Card({"diff", card, Path("b")}, 1),
            "created\tX-BRNDL-IP\t\t\t10.0.0.1\ncreated\tX-BRNDL-CONFID\t\t\t7\n");
  EXPECT_EQ(Card({"diff", card, card}), "");
}

TEST_F(CardTest, DamageIsNamedWithItsPlace) {
  std::string const card = New();
  Card({"set", card, "FN", "Al"});
  Card({"check", card});
  std::string const bytes = ContentOf(card);
  struct Row {
    std::string content;
    int code;
    char const *says;
  };
  for (Row const &row : {
           Row{bytes.substr(0, 58), 4, "byte 58: is cut short within its head"},
           Row{bytes.substr(0, 70), 4, "byte 60: the list is cut short before a property"},
           Row{bytes.substr(0, 80), 4, "byte 68: the value of FN would have 6 bytes"},
           Row{bytes + "more", 1, "byte 84: bytes stand behind the last property"},
           Row{"1\n2\n[Card Infos]\nA=ASCII::x\nP=BITMAP::x\n", 4,
               "line 5: bytes do not begin with <"},
           Row{"", 4, "line 1: is no card, or its last line has no end"},
       }) {
    WriteContent(Path("bad"), row.content);
    EXPECT_EQ(Card({"check", Path("bad")}, row.code), Path("bad") + ": " + row.says + "\n");
    if (row.code == 4) Card({"show", Path("bad")}, 4);
  }
  for (char const *verb : {"show", "check"}) Card({verb, Path("none")}, 3);
  Card({"show", home_.path()}, 3);
  EXPECT_EQ(error_, "zolt: " + home_.path() + ": is no plain file\n");
}

TEST_F(CardTest, VCardsOfEveryProfile) {
  std::string const card = New();
  Card({"set", card, "FN", "Anna Bell"});
  Card({"set", card, "TEL", "5", "--flags", "HOME", "--type", "ascii"});
  EXPECT_EQ(Card({"vcard", card, "--profile", "classic"}),
            "BEGIN:VCARD\r\nFN;ENCODING=QUOTED-PRINTABLE;CHARSET=ISO-8859-1:Anna Bell\r\n"
            "TEL;HOME:5\r\nEND:VCARD\r\n");
  for (char const *profile : {"3.0", "4.0"}) {
    Card({"vcard", card, "--profile", profile, "-o", Path("v")});
    std::string const text = ContentOf(Path("v"));
    EXPECT_TRUE(text.starts_with(std::string("BEGIN:VCARD\r\nVERSION:") + profile + "\r\n"))
        << text;
    EXPECT_NE(text.find("\r\nN:Bell;Anna;;;\r\n"), std::string::npos) << text;
    std::filesystem::remove(Path("v"));
  }
  Card({"vcard", card, "--profile", "2.1"}, 2);
  Card({"vcard", card}, 3, {.output = ToolOutput::fullDevice});
}

}  // namespace
}  // namespace zolt::testing
