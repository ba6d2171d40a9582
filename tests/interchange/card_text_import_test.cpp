#include "zolt41/interchange/card_text_import.h"

#include "tests/interchange/interchange_fixture.h"
#include "zolt41/foundation/text_coding.h"
#include "zolt41/interchange/property_view.h"

namespace zolt::testing {
namespace {

// Two empty lines: a card text that gives no property.
std::string const kHead = "\n\n\n";
std::string const kCard = kHead + "[Card Infos]\n";

std::string Shown(std::string_view value, uint32_t type) {
  std::string text;
  for (size_t i = 0; IsUnicode(type) && i + 1 < value.size(); i += 2) {
    bool const plain = value[i + 1] == 0 && value[i] >= ' ';
    text += plain ? value[i] : value[i] == 0 && value[i + 1] == 0 ? '$' : '#';
  }
  if (!IsUnicode(type)) AppendHex(value, &text);
  return text;
}

std::string ShownPrefs(std::string_view blob) {
  TYUserPrefs prefs(PrefLevelCard, blob.data(), static_cast<uint32_t>(blob.size()));
  std::string text;
  std::string value(blob.size(), '\0');
  for (int32_t i = 0; i < prefs.Count(); i++) {
    uint32_t section = 0;
    char const *const name = prefs.GetIndexedName(i, &section);
    prefs.GetStr(section, name, value.data());
    char id[9];
    snprintf(id, sizeof id, "%08X", section);
    text += std::string(id) + "/" + name + "=" + value.substr(0, value.find('\0')) + ";";
  }
  return text;
}

// "NAME/type/flags/value " of each property: characters, $ for a NUL and # for what is not ASCII of
// 16-bit text, else hex; of preferences their texts.
std::string Listed(PCardStorage *card) {
  std::string text;
  for (uint32_t i = 0; i < card->PropCount(); i++) {
    PropertyView const property = PropertyAt(card, i);
    std::string const name = property.name;
    text += name + "/" + (IsUnicode(property.type) ? "u" : std::to_string(property.type)) + "/" +
            std::to_string(property.flags) + "/" +
            (name == kCardPrefsProperty ? ShownPrefs(property.value)
                                        : Shown(property.value, property.type)) +
            " ";
  }
  return text;
}

// What an import into an empty card gives, with "failed" behind it if it gives 0.
std::string Imported(std::string const &text) {
  PCardStorage card;
  int32_t const done = Import(&card, text);
  return Listed(&card) + (done == 1 ? "" : "failed");
}

using Cases = std::vector<std::pair<std::string, std::string>>;

void ExpectImported(std::string const &head, Cases const &cases) {
  for (auto const &[text, expected] : cases) EXPECT_EQ(Imported(head + text), expected) << text;
}

using CardTextImportTest = InterchangeTest;

TEST_F(CardTextImportTest, Head) {
  std::string const longest(255, '9');
  ExpectImported("", {{"", "failed"},
                      {"10.0.0.1\n12345\n", "X-BRNDL-IP/u/0/10.0.0.1$ X-BRNDL-CONFID/u/0/12345$ "},
                      {"a b\n-5\n", "X-BRNDL-IP/u/0/a b$ "},
                      {"x\xE9y\n12 3\n", "X-BRNDL-IP/u/0/x$ "},
                      {"x\ty12", "X-BRNDL-IP/u/0/x$ X-BRNDL-CONFID/u/0/12$ "},
                      {"only", "X-BRNDL-IP/u/0/only$ "},
                      {longest + "89\n" + longest + "89",
                       "X-BRNDL-IP/u/0/" + longest + "$ X-BRNDL-CONFID/u/0/" + longest + "$ "}});
}

TEST_F(CardTextImportTest, PropertyLines) {
  std::string const nul(1, '\0');
  std::string const word63(63, 'w');
  ExpectImported(
      kCard,
      {{"Foo=ASCII::a=3Db", "Foo/u/0/a=b$ "},
       {"Foo=url:HOME,Work:http://x\n", "Foo/u/48/http://x$ "},
       {"Foo=DATETIME::d\nBar=LOCATION::l", "Foo/u/0/d$ Bar/u/0/l$ "},
       {"Foo=ASCII::=E9=80\x7F", "Foo/u/0/##\x7F$ "},
       {"Foo=ASCII::a=00b", "Foo/u/0/a$ "},
       {"Foo=ASCII::a=\nBar=ASCII::b=4\nBaz=ASCII::=3:=3d=", "Foo/u/0/a$ Bar/u/0/b$ Baz/u/0/:]$ "},
       {"Foo=ASCII::a\xE9z\nBar=ASCII::b\tz\nBaz=ASCII::c", "Foo/u/0/a$ Bar/u/0/b$ Baz/u/0/c$ "},
       {"Foo=ASCII::b\tz\tz\nBaz=ASCII::c", "Foo/u/0/b$ "},
       {"Foo=ASCII:HOME:1\nFOO=ASCII:HOME:2", "FOO/u/16/2$ "},
       {"Foo=ASCII:HOME:1\nFoo=ASCII:WORK:2", "Foo/u/16/1$ Foo/u/32/2$ "},
       {"Foo=ASCII:HOME,WORK:1\nBar=ASCII::b\nFoo=ASCII:WORK:2", "Bar/u/0/b$ Foo/u/32/2$ "},
       {"Foo=DATA:HOME:<01>\nFoo=ASCII::1\nFoo=DATA::<02>", "Foo/u/0/1$ Foo/8/0/02 "},
       {"Foo=DATA:HOME:<01>\nFoo=ASCII::\nBar=ASCII::1", "Bar/u/0/1$ "},
       {"Foo=BITMAP::<00FF>\nFoo=BITMAP::<00FF>", "Foo/2/0/00FF Foo/2/0/00FF "},
       {"Foo=BITMAP::<>", "Foo/2/0/ "},
       {"Foo=BITMAP::<0A>rest\nBar=SOUND::<0B", "Foo/2/0/0A Bar/1/0/0B "},
       {"Foo=BITMAP::<0A0", "Foo/2/0/0A "},
       {"Foo=BITMAP::<0A" + nul + "x\nBar=SOUND::<0B>", "Foo/2/0/0A Bar/1/0/0B "},
       {"Foo=DATA::<0a>\nBar=DATA::<0A\nBaz=DATA::<0>\nBaz=DATA::<\xE9\x30>\nBaz=DATA::<0B>",
        "Baz/8/0/0B "},
       {"Foo=BITMAP::hello\nBar=ASCII::1", "failed"},
       {"Bar=ASCII::1\nFoo=DATA::", "Bar/u/0/1$ failed"},
       {"Foo=UNICODE::<41000000>B\nBar=UNICODE:_local:<>", "Foo/u/0/A$ Bar/u/2147483648/ "},
       {"Foo=UNICODE::<41004200>x=\t\nBar=UNICODE::<43>", "Foo/u/0/AB Bar/u/0/ "},
       {"Foo=UNICODE::hello", "Foo/u/0/hello$ "},
       {"Foo=UNICODE::=E9x\nBar=UNICODE::\nBaz=UNICODE::" + nul + "x",
        "Foo/u/0/?x$ Bar/u/0/$ Baz/u/0/$ "},
       {"=ASCII::1", "/u/0/1$ "},
       {"Foo=ASCII:HOME,bad,,WORK,:1", "Foo/u/131120/1$ "},
       {word63 + "=DATA::<01>", word63 + "/8/0/01 "},
       {"Foo=DATA::<01>\nw" + word63 + "=DATA::<01>\nBar=DATA::<01>", "Foo/8/0/01 "},
       {"Foo=DATA::<01>\nBar=NOTHING::1\nBar=DATA::<01>", "Foo/8/0/01 "},
       {"Foo=DATA::<01>\nN==DATA::<01>\nBar=DATA::<01>", "Foo/8/0/01 "},
       {"Foo=DATA::<01>\n\nBar=DATA::<01>", "Foo/8/0/01 "},
       {"Foo=DATA::<01>\nF\xE9=DATA::<01>\nBar=DATA::<01>", "Foo/8/0/01 "},
       {"Foo=DATA:DOM,INTL,POSTAL,PARCEL,HOME,WORK,PREF,VOICE,FAX,MSG,CELL,PAGER,BBS:<01>", ""}});
}

TEST_F(CardTextImportTest, Sections) {
  std::string const foo = "[card infos] rest\nFoo=DATA::<01>\n";
  std::string const name64(64, 'n');
  ExpectImported(kHead, {{foo, "Foo/8/0/01 "},
                         {"any\x80\n\nlines\n" + foo, "Foo/8/0/01 "},
                         {foo + "\n" + foo, "Foo/8/0/01 Foo/8/0/01 "},
                         {"\tline\n" + foo, ""},
                         {"a\tline\n" + foo, ""},
                         {"[" + name64 + "]\n\n" + foo, "Foo/8/0/01 "},
                         {"[n" + name64 + "]\n\n" + foo, ""},
                         {"[Card Infos", ""},
                         {"[Card Infos]", ""},
                         // The line that ends a section is its last one, whatever it says.
                         {"[Card Infos]\n" + foo, ""},
                         {foo + "[General]\nA=1\n", "Foo/8/0/01 "},
                         {foo + "w=BAD:" + foo, "Foo/8/0/01 Foo/8/0/01 "}});
}

TEST_F(CardTextImportTest, Preferences) {
  std::string const prefs = "L-BRNDL-TYPREFS/8/2147483648/";
  std::string const longest(1023, 'v');
  std::string const name40 = "a name of forty characters, which is cut";
  std::string const name31 = name40.substr(0, 31);
  ExpectImported(
      kHead,
      {{"[General]\n", ""},
       {"[General]", "failed"},
       {"[General]\nA=1\nb=2\nA=3\n", prefs + "474E524C/A=3;474E524C/b=2; "},
       {"[General]\nA=1\nB=2", "failed"},
       {"[general] x\nA=\n[Audio]\nB==\n", prefs + "474E524C/A=;41554449/B==; "},
       {"[Nobody]\nA=1\n", prefs + "FFFFFFFF/A=1; "},
       {"[Preferences]\nA=1\n", prefs + "FFFFFFFF/A=1; "},
       {"[General]\nA=" + longest + "cut\nB=1\n",
        prefs + "474E524C/A=" + longest + ";474E524C/B=1; "},
       {"[General]\nA=" + longest + "\nB=1\n", prefs + "474E524C/A=" + longest + ";474E524C/B=1; "},
       {"[General]\nA=" + longest + "\xE9x\nB=1\n",
        prefs + "474E524C/A=" + longest + ";474E524C/B=1; "},
       {"[General]\nA=1\xE9x\nB=2\tx\nC=3\n", prefs + "474E524C/A=1;474E524C/B=2;474E524C/C=3; "},
       {"[General]\nA=1\tx\tx\nB=2\n", "failed"},
       {"[General]\nA=" + longest + "\tx\nB=2\n", "failed"},
       {"[General]\nA=1\n\nB=2\n[Audio]\nC=3\n", prefs + "474E524C/A=1;41554449/C=3; "},
       {"[General]\nA=1\nno value\nB=2\n", prefs + "474E524C/A=1; "},
       {"[General]\nA=1\nGr\xFC=2\nB=3\n[Audio]\nC=4\n", prefs + "474E524C/A=1;41554449/C=4; "},
       {"[General]\nA=1\n[x]=2\nB=3\n", prefs + "FFFFFFFF/B=3;474E524C/A=1; "},
       {"[General]\n" + name40 + "=1\n" + name40 + "=2\n" + name31 + "=3\n",
        prefs + "474E524C/" + name31 + "=3;474E524C/" + name31 + "=3; "}});
}

TEST_F(CardTextImportTest, OldNames) {
  Cases const cases = {
      {"flow control]\nmaxcap=1\nMinCap=2",
       "434F5052/Max Transmission Rate=1;434F5052/Min Transmission Rate=2;"},
      {"Compressor Settings]\nCompressorType=1", "464F5250/VideoCodec=1;"},
      {"Audio Settings]\nDefaultPerformance=1\nMaxCap=2",
       "FFFFFFFF/MaxCap=2;474E524C/AudioHighRedundancy=1;"},
      {"Audio Settings]\nEncoding Method=Delta", "464F5250/AudioCodecIndex=2;"},
      {"Audio Settings]\nEncoding Method=LINEAR", "464F5250/AudioCodecIndex=1;"},
      {"Audio Settings]\nEncoding Method=Unknown", "464F5250/AudioCodecIndex=3;"},
      {"Audio Settings]\nEncoding Method=Compressed", "464F5250/AudioCodecIndex=0;"},
      {"Audio Settings]\nEncoding Method=Raw", "464F5250/AudioCodecIndex=R;"},
      {"Audio Settings]\nEncoding Method=", "464F5250/AudioCodecIndex=;"}};
  std::string const prefs = "L-BRNDL-TYPREFS/8/2147483648/";
  for (auto const &[text, expected] : cases)
    EXPECT_EQ(Imported(kHead + "[" + text + "\n"), prefs + expected + " ") << text;
  WinPrefs *const names = GetSystemPrefs();
  SetSystemPrefs(nullptr);
  EXPECT_EQ(Imported(kHead + "[Settings]\nAutoOpen=1\nOther=2\n"), prefs + "474E524C/AutoOpen=1; ");
  SetSystemPrefs(names);
}

TEST_F(CardTextImportTest, WhatACardHoldsStaysUnlessItIsReplaced) {
  PCardStorage card;
  AddText(&card, "X-BRNDL-IP", 0, "old");
  AddText(&card, "Foo", PropertyHome | PropertyWork, "old");
  AddText(&card, "FOO", PropertyHome, "stays");
  EXPECT_EQ(Import(&card, "new\n\n\n[Card Infos]\nFoo=ASCII:WORK:new\n"), 1);
  EXPECT_EQ(Listed(&card), "FOO/0/16/737461797300 X-BRNDL-IP/u/0/new$ Foo/u/32/new$ ");
}

TEST_F(CardTextImportTest, FilesAndBlocks) {
  PCardStorage card;
  for (char const *wrong : {"none", ""}) EXPECT_EQ(ImportCard(&card, Path(wrong).c_str()), 0);
  EXPECT_EQ(ImportCard(&card, nullptr, 5), 0);
  EXPECT_EQ(ImportCardData(&card, nullptr, 5), 0);
  std::string const text = kCard + "A=DATA::<01>\nB=DATA::<02>\n";
  WriteContent(Path("card"), text);
  EXPECT_EQ(ImportCard(&card, Path("card").c_str()), 1);
  void *const block = GlobalAlloc(GMEM_MOVEABLE, text.size());
  text.copy(static_cast<char *>(GlobalLock(block)), text.size());
  WriteContent(Scratch(), "");
  EXPECT_EQ(ImportCardData(&card, block, static_cast<uint32_t>(text.size())), 0);
  std::filesystem::remove(Scratch());
  auto const partOf = static_cast<uint32_t>(text.find("B="));
  EXPECT_EQ(ImportCardData(&card, block, partOf), 1);
  EXPECT_EQ(ImportCardData(&card, block, 0xFFFFFFFF), 1);
  EXPECT_FALSE(std::filesystem::exists(Scratch()));
  GlobalFree(block);
  EXPECT_EQ(Listed(&card), "A/8/0/01 B/8/0/02 A/8/0/01 A/8/0/01 B/8/0/02 ");
}

TEST_F(CardTextImportTest, ThereAndBack) {
  PCardStorage card;
  AddWide(&card, "X-BRNDL-IP", 0, u"10.0.0.1");
  AddWide(&card, "FN", PropertyHome, u"\u00C9va \u4E2D");
  AddText(&card, "TEL", PropertyHome, "5=5\t\xE9");
  AddText(&card, "TEL", PropertyWork, "6");
  Add(&card, "PHOTO", PropertyBitmap, 0, FromHex("00FF0D0A"));
  Add(&card, "DATE", PropertyDateTime, 0x100000, "1997");
  TYUserPrefs prefs(PrefLevelCard, nullptr, 0);
  prefs.SetStr(kGeneral, "AutoOpen", "Yes");
  prefs.SetStr(kAudio, "Volume", "70");
  AddPrefs(&card, &prefs);
  std::string const text = TextOf(&card);
  std::string const lines =
      "X-BRNDL-IP/u/0/10.0.0.1$ X-BRNDL-CONFID/u/0/0$ X-BRNDL-IP/u/0/10.0.0.1$ FN/u/16/#va #$ "
      "TEL/u/16/5=5##$ TEL/u/32/6$ PHOTO/2/0/00FF0D0A DATE/u/0/1997$ "
      "L-BRNDL-TYPREFS/8/2147483648/474E524C/AutoOpen=Yes;41554449/Volume=70; ";
  EXPECT_EQ(Imported(text), lines);
  for (size_t i = 0; i < text.size(); i++) {
    // Of a text that is cut only the last property may differ.
    std::string const cut = Imported(text.substr(0, i));
    std::string const before = cut.substr(0, cut.find_last_of(' ', cut.rfind(' ') - 1) + 1);
    EXPECT_TRUE(cut == "failed" || lines.starts_with(before)) << i << cut;
    std::string changed = text;
    changed[i] = static_cast<char>(~changed[i]);
    PCardStorage other;
    Import(&other, changed);
    EXPECT_NE(Imported(TextOf(&other)), "failed") << i;
  }
}

TEST_F(CardTextImportTest, LargeTexts) {
  constexpr int kLines = 5000;
  std::string properties = kCard;
  std::string values = kHead + "[General]\n";
  for (int i = 0; i < kLines; i++) properties += "N" + std::to_string(i) + "=ASCII::v\n";
  for (int i = 0; i < kLines; i += 2) values += "N" + std::to_string(i) + "=v\n";
  PCardStorage card;
  EXPECT_EQ(Import(&card, properties), 1);
  EXPECT_EQ(Import(&card, values), 1);
  EXPECT_EQ(card.PropCount(), static_cast<uint32_t>(kLines + 1));
  std::string const megabyte(1 << 20, 'A');
  EXPECT_EQ(Imported(kCard + "A=ASCII::" + megabyte + "\nB=DATA::<" + megabyte + ">"),
            "A/u/0/" + megabyte + "$ B/8/0/" + megabyte + " ");
  EXPECT_EQ(Imported(kCard + megabyte), "");
  EXPECT_EQ(Imported(megabyte), "X-BRNDL-IP/u/0/" + megabyte.substr(0, 255) + "$ ");
}

}  // namespace
}  // namespace zolt::testing
