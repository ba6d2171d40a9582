#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <future>
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

  static std::string Slot(std::string const &section, std::string name, std::string const &place) {
    name.resize(32);
    return FromHex(section) + name + FromHex(place);
  }

  // A card file whose preferences have a head, slots, and a byte.
  std::string WithPreferences(std::string const &head, std::string const &slots) {
    std::string const blob = FromHex(head) + slots + "x";
    CallCard card(CardFormatBinary);
    card.AddProp("L-BRNDL-TYPREFS", PropertyData, PropertyLocal, blob.data(),
                 static_cast<int32_t>(blob.size()));
    card.SaveCardAs(CardFormatBinary, Path("prefs").c_str());
    return ContentOf(Path("prefs"));
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

TEST_F(CardTest, OneIsAddedBesideThoseOfItsName) {
  std::string const set = "card set " + New() + " ";
  Expect({
      {set + "TEL 1", 0, "", "TEL: unset -> 1\n"},
      {set + "TEL --add 2 --add 3", 0, "", "TEL: unset -> 2\nTEL: unset -> 3\n"},
      {set + "tel --add 1", 0, "", "TEL: unchanged\n"},
      {set + "TEL --add 1 --flags HOME", 0, "", "TEL HOME: unset -> 1\n"},
      {set + "-n TEL --add 4", 0, "", "TEL: unset -> 4 (not written)\n"},
      {set + "TEL 5", 2, "", ""},
      {set + "TEL 5 --flags 0x0", 2, "",
       "zolt: TEL: the card has several of this name and these flags; card unset removes them, "
       "--add puts another one beside them\n"},
      {set + "TEL 5 --flags HOME", 0, "", "TEL HOME: 1 -> 5\n"},
      {set + "TEL 5 --add 6", 2, "", ""},
      {set + "TEL", 2, "", ""},
      {"card show " + Path("a"), 0,
       "TEL\t1\tUNICODE\nTEL\t2\tUNICODE\nTEL\t3\tUNICODE\nTEL\t5\tUNICODE\tHOME\n", ""},
  });
}

TEST_F(CardTest, CardTextTellsNotOfWhichTypeATextIs) {
  std::string const card = New();
  std::string const text = Path("t");
  Expect({
      {"card set " + card + " TEL 5 --type ascii", 0, "", "TEL: unset -> 5\n"},
      {"card convert " + card + " " + text + " --to text", 0, "", ""},
      {"card diff " + card + " " + text, 0, "", ""},
      {"card set " + text + " TEL 5 --type ascii", 0, "", "TEL: unchanged\n"},
      {"card set " + text + " TEL --add 5 --type url", 0, "", "TEL: unchanged\n"},
      {"card set " + text + " TEL 6 --type ascii", 0, "", "TEL: 5 -> 6\n"},
      {"card set " + text + " TEL 6 --type ascii", 0, "", "TEL: unchanged\n"},
      {"card set " + card + " TEL 5 --type url", 0, "", "TEL: 5 -> 5\n"},
      {"card diff " + card + " " + text, 1, "modified\tTEL\t\t5\t6\n", ""},
      {"card set " + card + " TEL 0x35 --type data", 0, "", "TEL: 5 -> 0x35\n"},
      {"card set " + text + " TEL 0x35", 0, "", "TEL: 6 -> 0x35\n"},
      {"card diff " + card + " " + text, 1, "modified\tTEL\t\t0x35\t0x35\n", ""},
  });
}

TEST_F(CardTest, WhatTextCannotHoldNeedsAYes) {
  CallCard card(CardFormatBinary);
  card.AddProp("FN", PropertyUnicode | 5, 0, "A\0\0", 4);
  card.SaveCardAs(CardFormatBinary, Path("type").c_str());
  Expect({
      {"card convert " + Path("type") + " " + Path("t") + " --to text", 2, "", ""},
      {"-y card convert " + Path("type") + " " + Path("t") + " --to text", 0, "", ""},
      {"card set " + Path("t") + " NOTE x --flags 0x20000", 2, "", ""},
      {"card set " + Path("t") + " X-BRNDL-CONFID 22-Elm X-BRNDL-IP 10.0.0.1", 0, "",
       "X-BRNDL-CONFID: unset -> 22-Elm\nX-BRNDL-IP: unset -> 10.0.0.1\n"},
      {"card check " + Path("t"), 0, "", "zolt: " + Path("t") + ": sound\n"},
  });
  Card({"set", Path("t"), "X-BRNDL-IP", "10.0.0.1\tgone"}, 2);
  EXPECT_NE(error_.find("loses X-BRNDL-IP"), std::string::npos) << error_;
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
  EXPECT_EQ(Card({"diff", card, Path("b")}), "");
  Card({"set", card, "FN", "Ben"});
  EXPECT_EQ(Card({"diff", card, Path("b")}, 1), "modified\tFN\t\tBen\tAnna \u0411ell\n");
  // What text cannot hold.
  std::string const flags =
      "DOM,INTL,POSTAL,PARCEL,HOME,WORK,PREF,VOICE,FAX,MSG,CELL,PAGER,BBS,MODEM,CAR";
  for (Line line : {Line{"set", Path("t"), "TEL", "5", "--flags", flags},
                    Line{"set", Path("t"), std::string(64, 'N'), "x"},
                    Line{"prefs", Path("t"), "set", "Audio", "Name", "zw\u00F6lf"},
                    Line{"prefs", Path("t"), "set", "Lab:Inner", "x", "y"}}) {
    Card(line, 2);
    EXPECT_NE(error_.find("loses"), std::string::npos) << error_;
    EXPECT_EQ(ContentOf(Path("t")), text);
  }
  Card({"-y", "prefs", Path("t"), "set", "Audio", "Name", "zw\u00F6lf"});
  Card({"check", Path("t")}, 4);
  Card({"unset", Path("t"), "FN"}, 4);
}

TEST_F(CardTest, WhatIsNoCardIsLeftAlone) {
  std::string const bytes = ContentOf(New());
  std::string wrongMagic = bytes;
  wrongMagic[1] = 'X';
  struct Row {
    std::string content;
    std::string says;
  };
  for (Row const &row : {Row{"# Notes\n\nto [keep]\n", ": is no card"}, Row{"", ": is no card"},
                         Row{std::string("1\n2\n\n[Card Infos]\n\0", 19), ": is no card"},
                         Row{wrongMagic, ":byte 0: the first bytes are not those of a card file"},
                         Row{"LN_09", ":byte 0: the first bytes are not those of a card file"}}) {
    std::string const file = Path("notes");
    WriteContent(file, row.content);
    for (Line const &line :
         {Line{"set", file, "FN", "x"}, Line{"unset", file, "FN"}, Line{"show", file},
          Line{"get", file, "FN"}, Line{"prefs", file, "set", "Audio", "Volume", "1"},
          Line{"prefs", file, "list"}, Line{"convert", file, Path("out"), "--to", "card"},
          Line{"vcard", file}, Line{"diff", file, file}}) {
      Card(line, 4);
      EXPECT_TRUE(error_.starts_with("zolt: " + file + row.says)) << error_;
    }
    Card({"check", file}, 4);
    EXPECT_EQ(ContentOf(file), row.content);
  }
}

TEST_F(CardTest, OtherKindsOfFiles) {
  std::string const card = New();
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  for (char const *verb : {"check", "show"}) Card({verb, Path("pipe")}, 3);
  EXPECT_EQ(Card({"check", "-"}, 0, {.input = ContentOf(card)}), "");
  EXPECT_EQ(Card({"check", "-"}, 4, {.input = "notes"}), "-: is no card\n");
  std::filesystem::create_directory(Path("tmp"));
  Card({"vcard", card}, -13,
       {.output = ToolOutput::brokenPipe,
        .environment = {"TMPDIR=" + Path("tmp"), "XDG_RUNTIME_DIR=" + Path("tmp")}});
  for (auto const &entry : std::filesystem::recursive_directory_iterator(Path("tmp")))
    EXPECT_TRUE(entry.is_directory()) << entry.path();
}

TEST_F(CardTest, ACardThatIsOpenElsewhereIsWaitedFor) {
  std::string const card = New();
  uint32_t file = 0;
  ASSERT_EQ(AFS_LZOpenFile(card.c_str(), 3, &file), 0);
  for (Line const &line :
       {Line{"set", card, "FN", "x", "--wait", "0"}, Line{"show", card, "--wait", "0"}}) {
    Card(line, 5);
  }
  auto const set = [&card](std::string const &name) {
    return std::async(std::launch::async, [&card, name] {
      int code = 0;
      for (int i = 0; i < 5; i++) {
        code += RunTool({"card", "set", card, name + std::to_string(i), "x", "--wait", "60"}).code;
      }
      return code;
    });
  };
  auto first = set("A");
  auto second = set("B");
  AFS_CloseFile(file);
  EXPECT_EQ(first.get() + second.get(), 0);
  EXPECT_EQ(CallCard(card.c_str()).PropCount(), 10U) << "no change is lost to another";
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
               "line 5: bytes do not begin with <; nothing of the text is read"},
           Row{"1\n2\n\n[Card Infos]\nA=ASCII::x", 1, "line 5: has no line end: it may be cut"},
           Row{WithPreferences("00000000 00000001", Slot("00000000", "n", "00000002 00000000")), 4,
               "byte 96: the preference n lies outside of them"},
           Row{WithPreferences("01000000 01000000", Slot("00000000", "n", "02000000 00000000")), 4,
               "byte 96: the preference n lies outside of them"},
           Row{WithPreferences("01000000 01000000",
                               Slot("00000000", std::string(32, 'n'), "01000000 00000000")),
               1,
               "byte 100: the name of the preference nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn has no end"},
           // Names in the order of the folding table, where _ comes behind the letters.
           Row{WithPreferences("01000000 02000000", Slot("00000000", "_", "00000000 00000000") +
                                                        Slot("00000000", "b", "00000000 00000000")),
               1, "byte 140: the preference b does not stand in its order"},
           Row{WithPreferences("01000000 02000000", Slot("00000001", "b", "00000000 00000000") +
                                                        Slot("00000080", "a", "00000000 00000000")),
               1, "byte 140: the preference a does not stand in its order"},
           Row{WithPreferences("00000000 00000002", Slot("00000001", "b", "00000000 00000000") +
                                                        Slot("80000000", "a", "00000000 00000000")),
               1, "byte 140: the preference a does not stand in its order"},
       }) {
    WriteContent(Path("bad"), row.content);
    EXPECT_EQ(Card({"check", Path("bad")}, row.code), Path("bad") + ": " + row.says + "\n");
    Card({"show", Path("bad")}, row.code == 4 ? 4 : 0);
    Card({"set", Path("bad"), "FN", "x"}, 4);
    EXPECT_EQ(ContentOf(Path("bad")), row.content);
  }
  for (char const *verb : {"show", "check"}) Card({verb, Path("none")}, 3);
  Card({"show", home_.path()}, 3);
  EXPECT_EQ(error_, "zolt: " + home_.path() + ": is no plain file\n");
}

TEST_F(CardTest, WhatIsLeftOfADamagedCardIsSavedWithAYes) {
  std::string const lost = Slot("00000000", "n", "02000000 00000000");
  std::string const some =
      WithPreferences("01000000 02000000", lost + Slot("00000000", "o", "01000000 00000000"));
  std::string const none = WithPreferences("01000000 01000000", lost);
  struct Row {
    std::string content;
    int code;
    std::string left;
  };
  for (Row const &row :
       {Row{"1\n0\n\n[Card Infos]\nA=ASCII::x\nB=DATA::<0\nC=DATA::<01>\n", 0,
            "X-BRNDL-IP\t1\tUNICODE\nA\tx\tUNICODE\nC\t0x01\tDATA\n"},
        Row{some, 0, ":\to\n"}, Row{none, 4, ""}, Row{some.substr(0, some.size() - 1), 4, ""},
        Row{"LN_09", 4, ""}, Row{"notes", 4, ""}}) {
    WriteContent(Path("bad"), row.content);
    Card({"convert", Path("bad"), Path("new"), "--to", "card"}, row.code == 0 ? 2 : 4);
    EXPECT_FALSE(std::filesystem::exists(Path("new")));
    Card({"-y", "convert", Path("bad"), Path("new"), "--to", "card"}, row.code);
    if (row.code != 0) continue;
    EXPECT_EQ(Card({"show", Path("new")}) + Card({"prefs", Path("new"), "list"}), row.left);
    Card({"check", Path("new")});
    EXPECT_EQ(ContentOf(Path("bad")), row.content);
    std::filesystem::remove(Path("new"));
  }
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
