#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>
#include <tuple>

#include "tests/support/format_page.h"
#include "tests/tool/tool_fixture.h"

namespace zolt::testing {
namespace {

using nlohmann::json;
using namespace std::string_literals;

class CardTest : public ToolTest {
 protected:
  static std::string Card(std::string const &line, int code = 0, ToolSetting const &setting = {}) {
    ToolResult const result = Run("card " + line, setting);
    EXPECT_EQ(result.code, code) << line << result.err;
    return result.out;
  }
  static void New() { Card("new a"); }

  static std::string Slot(std::string const &section, std::string name, std::string const &place) {
    name.resize(32);
    return FromHex(section) + name + FromHex(place);
  }

  // A card file whose preferences have a head, slots, and a byte.
  static std::string WithPreferences(std::string const &head, std::string const &slots) {
    std::string const blob = FromHex(head) + slots + "x";
    CallCard card(CardFormatBinary);
    card.AddProp("L-BRNDL-TYPREFS", PropertyData, PropertyLocal, blob.data(),
                 static_cast<int32_t>(blob.size()));
    card.SaveCardAs(CardFormatBinary, "prefs");
    return ContentOf("prefs");
  }
};

TEST_F(CardTest, ACardIsMadeFilledReadAndEmptied) {
  New();
  Expect(
      {{"card new a", 2},
       {"card set a FN 'Anna \u0411ell' ORG 'a\tb'", 0, "",
        "FN: unset -> Anna \u0411ell\nORG: unset -> a\\tb\n"},
       {"-q card set a TEL 5 --flags work,VOICE --type ascii"},
       {"-q card set a TEL 6 --flags HOME"},
       {"card set a TEL 7", 2},
       {"card set a tel 8 --flags HOME", 0, "", "TEL HOME: 6 -> 8\n"},
       {"-q card set a PHOTO 0x00FF --type bitmap"},
       {"card set a FN 'Anna \u0411ell'", 0, "", "FN: unchanged\n"},
       {"card show a", 0,
        "FN\tAnna \u0411ell\tUNICODE\nORG\ta\\tb\tUNICODE\nTEL\t5\tASCII\tWORK,VOICE\n"
        "TEL\t8\tUNICODE\tHOME\nPHOTO\t0x00ff\tBITMAP\n"},
       {"card get a tel --flags HOME", 0, "8\n"},
       {"card get a PHOTO", 0, {"\0\xFF", 2}},
       {"card get a PHOTO", 2, "", "", {.output = ToolOutput::terminal}},
       {"card get a TELL", 1, "", "zolt: TELL: the card has no such property; did you mean TEL?\n"},
       {"-n -q card unset a TEL"},
       {"card unset a TEL NONE", 0, "", "TEL HOME: 8 -> unset\nTEL WORK,VOICE: 5 -> unset\n"}});
  Expect(2, {"card set a \u00E9 x", "card set a N x --flags HOM",
             "card set a N \u0411 --type ascii", "card set a N x --type asci", "card set a N"});
}

TEST_F(CardTest, OneIsAddedBesideThoseOfItsName) {
  New();
  std::string const set = "card set a ";
  Expect({{set + "TEL 1", 0, "", "TEL: unset -> 1\n"},
          {set + "TEL --add 2 --add 3", 0, "", "TEL: unset -> 2\nTEL: unset -> 3\n"},
          {set + "tel --add 1", 0, "", "TEL: unchanged\n"},
          {set + "TEL --add 1 --flags HOME", 0, "", "TEL HOME: unset -> 1\n"},
          {set + "-n TEL --add 4", 0, "", "TEL: unset -> 4 (not written)\n"},
          {set + "TEL 5", 2},
          {set + "TEL 5 --flags 0x0", 2, "",
           "zolt: TEL: the card has several of this name and these flags; card unset removes them, "
           "--add puts another one beside them\n"},
          {set + "TEL 5 --flags HOME", 0, "", "TEL HOME: 1 -> 5\n"},
          {set + "TEL 5 --add 6", 2},
          {set + "TEL", 2},
          {"card show a", 0,
           "TEL\t1\tUNICODE\nTEL\t2\tUNICODE\nTEL\t3\tUNICODE\nTEL\t5\tUNICODE\tHOME\n"}});
}

TEST_F(CardTest, CardTextTellsNotOfWhichTypeATextIs) {
  New();
  Expect({{"-q card set a TEL 5 --type ascii"},
          {"card convert a t --to text"},
          {"card diff a t"},
          {"card set t TEL 5 --type ascii", 0, "", "TEL: unchanged\n"},
          {"card set t TEL --add 5 --type url", 0, "", "TEL: unchanged\n"},
          {"card set t TEL 6 --type ascii", 0, "", "TEL: 5 -> 6\n"},
          {"card set t TEL 6 --type ascii", 0, "", "TEL: unchanged\n"},
          {"card set a TEL 5 --type url", 0, "", "TEL: 5 -> 5\n"},
          {"card diff a t", 1, "modified\tTEL\t\t5\t6\n"},
          {"card set a TEL 0x35 --type data", 0, "", "TEL: 5 -> 0x35\n"},
          {"card set t TEL 0x35", 0, "", "TEL: 6 -> 0x35\n"},
          {"card diff a t", 1, "modified\tTEL\t\t0x35\t0x35\n"}});
}

TEST_F(CardTest, WhatIsAskedAboutIsWhatDiffShows) {
  std::string const empty = FromHex("01000000 00000000");
  std::string const one = FromHex("01000000 01000000") + Slot("4C524E47", "A", "04000000 00000000");
  std::string const swapped =
      FromHex("00000000 00000001") + Slot("474E524C", "A", "00000004 00000002");
  std::string const sizeless =
      FromHex("01000000 01000000") + Slot("4C524E47", "A", "00000000 00000000");
  std::string const is1 = FromHex("31000000");
  std::string const label = "L-BRNDL-TYPREFS _local";
  using Properties = std::vector<std::pair<char const *, std::string>>;
  std::tuple<Properties, std::string> const rows[] = {
      {{{"L-BRNDL-TYPREFS", empty}}, ""},
      {{{"L-BRNDL-TYPREFS", one + is1}}, ""},
      {{{"L-BRNDL-TYPREFS", swapped + "xx" + is1}}, ""},
      {{{"L-BRNDL-TYPREFS", sizeless}}, "General A"},
      {{{"L-BRNDL-TYPREFS", one + FromHex("11040000")}}, "General A"},
      {{{"L-BRNDL-TYPREFS", one + is1}, {"L-BRNDL-TYPREFS", one + is1}}, label},
      {{{"L-BRNDL-TYPREFS", empty}, {"L-BRNDL-TYPREFS", one + is1}}, label},
      {{{"L-BRNDL-TYPREFS", one + is1}, {"l-brndl-typrefs", empty}}, "General A"}};
  for (auto const &[properties, loses] : rows) {
    CallCard card(CardFormatBinary);
    for (auto const &[name, value] : properties)
      card.AddProp(name, PropertyData, PropertyLocal, value.data(),
                   static_cast<int32_t>(value.size()));
    card.AddProp("FN", PropertyUnicode, 0, "A\0\0", 4);
    card.SaveCardAs(CardFormatBinary, "a");
    bool const lost = !loses.empty();
    std::filesystem::remove("t");
    ToolResult const asked = Run("card convert a t --to text");
    EXPECT_EQ(asked.code, lost ? 2 : 0);
    if (lost) {
      EXPECT_TRUE(Has(asked.err, "loses " + loses + ", which"));
      Card("convert -y a t --to text");
    }
    EXPECT_EQ(Card("diff a t", lost ? 1 : 0).empty(), !lost) << loses;
  }
  // Text under that name is a property as any other.
  std::string const head = "1\n2\n\n[Card Infos]\n";
  WriteContent("a", head + "L-BRNDL-TYPREFS=UNICODE:_local:one\n");
  WriteContent("t", head + "L-BRNDL-TYPREFS=UNICODE:_local:two\n");
  EXPECT_TRUE(Has(Card("diff a t", 1), "L-BRNDL-TYPREFS"));
}

TEST_F(CardTest, PreferencesOfACard) {
  New();
  Expect({{"-q card prefs a set Audio Volume 0x28 -t num"},
          {"card prefs a set Lab x y", 0, "", "Lab x: unset -> y\n"},
          {"card prefs a list", 0, "0x42414C00\tx\ty\nConferencing:Audio\tVolume\t40\n"},
          {"card prefs a get Audio volume", 0, "40\n"},
          {"-q card prefs a unset Lab x"},
          {"card prefs a get Lab x", 1}});
  Expect(2,
         {"card prefs a set Audio " + std::string(32, 'n') + " x", "card prefs a put Audio n x"});
  json const document = json::parse(Run("--json card show a").out);
  EXPECT_EQ(document["preferences"],
            json::parse(R"([{"section":"Conferencing:Audio","name":"Volume","value":"40"}])"));
  EXPECT_EQ(document["key"].get<std::string>().size(), 48U);
}

TEST_F(CardTest, TextAndBackLosesOnlyWhatIsSaid) {
  New();
  Expect(0, {"card set a FN 'Anna \u0411ell' X-BRNDL-IP 10.0.0.1 X-BRNDL-CONFID 7",
             "card set a PHOTO 0x00FF --type bitmap --flags HOME",
             "card prefs a set Audio Volume 40", "card convert a --to text t"});
  std::string const text = ContentOf("t");
  EXPECT_TRUE(Has(text, "[Preferences]\r\n\r\n[Audio]\r\nVolume=40\r\n"));
  Expect({{"card convert t --to card a", 2},
          {"-y card convert t --to card b"},
          {"card diff a b"},
          {"-q card set a FN Ben"},
          {"card diff a b", 1, "modified\tFN\t\tBen\tAnna \u0411ell\n"}});
  // What text cannot hold.
  for (std::string const &line :
       {"set t TEL 5 --flags DOM,INTL,POSTAL,PARCEL,HOME,WORK,PREF,VOICE,FAX,MSG,CELL,PAGER,BBS,"
        "MODEM,CAR"s,
        "set t NOTE x --flags 0x20000"s, "set t X-BRNDL-IP '10.0.0.1\tgone'"s,
        "set t " + std::string(64, 'N') + " x", "prefs t set Audio Name zw\u00F6lf"s,
        "prefs t set Lab:Inner x y"s}) {
    ToolResult const result = Run("card " + line);
    EXPECT_EQ(result.code, 2);
    EXPECT_TRUE(Has(result.err, "loses"));
    EXPECT_EQ(ContentOf("t"), text);
  }
  CallCard card(CardFormatBinary);
  card.AddProp("FN", PropertyUnicode | 5, 0, "A\0\0", 4);
  card.SaveCardAs(CardFormatBinary, "type");
  Expect(2, {"card convert type t2 --to text"});
  Expect(0, {"-y card convert type t2 --to text",
             "card set t2 X-BRNDL-CONFID 22-Elm X-BRNDL-IP 10.0.0.1", "card check t2"});
  Card("-y prefs t set Audio Name zw\u00F6lf");
  Card("check t", 4);
  Card("unset t FN", 4);
}

TEST_F(CardTest, OtherKindsOfFiles) {
  New();
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  std::filesystem::create_directory("tmp");
  std::string const tmp = Path("tmp");
  Expect(3, {"card check pipe", "card show pipe"});
  Expect({{"-q card check -", 0, "", "", {ContentOf("a")}},
          {"card check -", 4, "-: is no card\n", "", {"notes"}}});
  ToolSetting const broken = {
      "", ToolOutput::brokenPipe, {"TMPDIR=" + tmp, "XDG_RUNTIME_DIR=" + tmp}};
  EXPECT_EQ(Run("card vcard a", broken).code, -SIGPIPE);
  for (auto const &entry : std::filesystem::recursive_directory_iterator("tmp"))
    EXPECT_TRUE(entry.is_directory()) << entry.path();
}

TEST_F(CardTest, ACardThatIsOpenElsewhereIsWaitedFor) {
  New();
  uint32_t file = 0;
  ASSERT_EQ(AFS_LZOpenFile("a", 3, &file), 0);
  Expect(5, {"card set a FN x --wait 0", "card show a --wait 0"});
  auto const set = [](char const *name) {
    for (int i = 0; i < 5; i++) Card("set a " + (name + std::to_string(i)) + " x --wait 60");
  };
  {
    std::jthread const first(set, "A");
    std::jthread const second(set, "B");
    AFS_CloseFile(file);
  }
  EXPECT_EQ(CallCard("a").PropCount(), 10U) << "no change is lost to another";
}

TEST_F(CardTest, DamageIsNamedWithItsPlace) {
  New();
  Expect(0, {"card set a FN Al", "card check a"});
  std::string const bytes = ContentOf("a");
  std::tuple<std::string, int, char const *> const rows[] = {
      {"# Notes\n\nto [keep]\n", 4, "is no card"},
      {"", 4, "is no card"},
      {{"1\n2\n\n[Card Infos]\n\0", 19}, 4, "is no card"},
      {"LX" + bytes.substr(2), 4, "byte 0: the first bytes are not those of a card file"},
      {"LN_09", 4, "byte 0: the first bytes are not those of a card file"},
      {bytes.substr(0, 58), 4, "byte 58: is cut short within its head"},
      {bytes.substr(0, 70), 4, "byte 60: the list is cut short before a property"},
      {bytes.substr(0, 80), 4, "byte 68: the value of FN would have 6 bytes"},
      {bytes + "more", 1, "byte 84: bytes stand behind the last property"},
      {"1\n2\n[Card Infos]\nA=ASCII::x\nP=BITMAP::x\n", 4,
       "line 5: bytes do not begin with <; nothing of the text is read"},
      {"1\n2\n\n[Card Infos]\nA=ASCII::x", 1, "line 5: has no line end: it may be cut"},
      {WithPreferences("00000000 00000001", Slot("00000000", "n", "00000002 00000000")), 4,
       "byte 96: the preference n lies outside of them"},
      {WithPreferences("01000000 01000000", Slot("00000000", "n", "02000000 00000000")), 4,
       "byte 96: the preference n lies outside of them"},
      {WithPreferences("01000000 01000000",
                       Slot("00000000", std::string(32, 'n'), "01000000 00000000")),
       1, "byte 100: the name of the preference nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn has no end"},
      // Names in the order of the folding table, where _ comes behind the letters; what has no
      // value leads nowhere.
      {WithPreferences("01000000 02000000", Slot("00000000", "_", "00000000 09000000") +
                                                Slot("00000000", "b", "00000000 00000000")),
       1, "byte 140: the preference b does not stand in its order"},
      {WithPreferences("01000000 02000000", Slot("00000001", "b", "00000000 00000000") +
                                                Slot("00000080", "a", "00000000 00000000")),
       1, "byte 140: the preference a does not stand in its order"},
      {WithPreferences("00000000 00000002", Slot("00000001", "b", "00000000 00000000") +
                                                Slot("80000000", "a", "00000000 00000000")),
       1, "byte 140: the preference a does not stand in its order"}};
  for (auto const &[content, code, says] : rows) {
    WriteContent("bad", content);
    EXPECT_EQ(Card("check bad", code), std::string("bad: ") + says + "\n");
    for (char const *line :
         {"set bad FN x", "unset bad FN", "prefs bad set Audio Volume 1", "show bad", "get bad FN",
          "prefs bad list", "vcard bad", "diff bad bad"}) {
      ToolResult const result = Run(std::string("card ") + line);
      EXPECT_EQ(result.code, 4) << line;
      EXPECT_TRUE(Has(result.err, "zolt: bad:") && Has(result.err, says));
      if (code == 1) break;
    }
    if (code == 1) Card("show bad");
    EXPECT_EQ(ContentOf("bad"), content);
  }
  Expect(3, {"card show none", "card check none"});
  Expect({{"card show .", 3, "", "zolt: .: is no plain file\n"}});
}

TEST_F(CardTest, WhatIsLeftOfADamagedCardIsSavedWithAYes) {
  std::string const lost = Slot("00000000", "n", "02000000 00000000");
  std::string const some =
      WithPreferences("01000000 02000000", lost + Slot("00000000", "o", "01000000 00000000"));
  std::string const none = WithPreferences("01000000 01000000", lost);
  std::tuple<std::string, int, std::string> const rows[] = {
      {"1\n0\n\n[Card Infos]\nA=ASCII::x\nB=DATA::<0\nC=DATA::<01>\n", 0,
       "X-BRNDL-IP\t1\tUNICODE\nA\tx\tUNICODE\nC\t0x01\tDATA\n"},
      {some, 0, ":\to\n"},
      {none, 4, ""},
      {some.substr(0, some.size() - 1), 4, ""},
      {"LN_09", 4, ""},
      {"notes", 4, ""}};
  for (auto const &[content, code, left] : rows) {
    WriteContent("bad", content);
    Card("convert bad new --to card", code == 0 ? 2 : 4);
    EXPECT_FALSE(std::filesystem::exists("new"));
    Card("-y convert bad new --to card", code);
    if (code != 0) continue;
    EXPECT_EQ(Card("show new") + Card("prefs new list"), left);
    Card("check new");
    EXPECT_EQ(ContentOf("bad"), content);
    std::filesystem::remove("new");
  }
}

TEST_F(CardTest, AVCardOfAnotherProfileGoesToAFile) {
  New();
  Expect(0, {"card set a FN 'Anna Bell'", "card vcard a --profile 4.0 -o v"});
  EXPECT_TRUE(ContentOf("v").starts_with("BEGIN:VCARD\r\nVERSION:4.0\r\nN:Bell;Anna;;;\r\n"));
  Expect(2, {"card vcard a --profile 2.1"});
  EXPECT_EQ(Run("card vcard a", {.output = ToolOutput::fullDevice}).code, 3);
}

}  // namespace
}  // namespace zolt::testing
