#include "zolt41/interchange/card_text_export.h"

#include <tuple>

#include "tests/interchange/interchange_fixture.h"

namespace zolt::testing {
namespace {

std::string const kEmptyCard = "0.0.0.0\r\n0\r\n\r\n[Card Infos]\r\n";

class CardTextExportTest : public InterchangeTest {
 protected:
  PCardStorage card_;
  TYUserPrefs prefs_{PrefLevelCard, nullptr, 0};
};

TEST_F(CardTextExportTest, TheExampleInEveryForm) {
  EXPECT_EQ(TextOf(&card_), kEmptyCard);
  AddWide(&card_, "X-BRNDL-IP", 0, u"10.0.0.1");
  AddWide(&card_, "FN", 0, u"Al");
  AddText(&card_, "TEL", PropertyVoice | PropertyHome, "555=1234");
  prefs_.SetStr(kGeneral, "AutoOpen", "Yes");
  AddPrefs(&card_, &prefs_);
  std::string const text = WithLineEnds(ExampleOf("card_text.md"));
  EXPECT_EQ(TextOf(&card_), text);
  EXPECT_TRUE(Has(text, FromHex(ExampleOf("card_text.md", 1))));
  WriteContent(Path("card"), "an older and longer text" + text);
  EXPECT_EQ(ExportCard(&card_, Path("card").c_str()), static_cast<int32_t>(text.size()));
  EXPECT_EQ(ContentOf(Path("card")), text);
  WriteContent(Scratch(), "stale");
  uint32_t size = 0;
  void *const block = ExportCardData(&card_, &size);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::string(static_cast<char *>(GlobalLock(block)), size), text);
  GlobalFree(block);
  EXPECT_FALSE(std::filesystem::exists(Scratch()));
}

TEST_F(CardTextExportTest, ALineForEachProperty) {
  std::string const nul(1, '\0');
  std::string const allNames =
      "DOM,INTL,POSTAL,PARCEL,HOME,WORK,PREF,VOICE,FAX,MSG,CELL,PAGER,BBS,MODEM,CAR,ISDN,VIDEO,"
      "_local";
  std::tuple<uint32_t, uint32_t, std::string, std::string> const rows[] = {
      {0, 0, "a\tb\x7F\x80\xE9=~" + nul + "behind", "ASCII::a=09b\x7F=80=E9=3D~"},
      {3, 0x80000000, "no end", "DATETIME:_local:no end"},
      {5, 0x30, "http://x" + nul, "URL:HOME,WORK:http://x"},
      {6, 0x100000, "", "LOCATION::"},
      {1, 0xFFFFFFFF, "", "SOUND:" + allNames + ":<>"},
      {2, 0, "GIF", "BITMAP::<474946>"},
      {4, 0, nul, "TIMEZONE::<00>"},
      {7, 0, "=", "TEMPLATE::<3D>"},
      {8, 0x80020000, nul + "\xFF", "DATA:_local:<00FF>"},
      {9, 0, "x", "DATA::<78>"},
      {0x80000005, 0x20000, FromHex("E900 8000 0900 AC20 0000 4100"),
       "UNICODE::<E90080000900AC2000004100>?=80=09?"},
      {0x80000000, 0, FromHex("4100 42"), "UNICODE::<410042>A"}};
  for (auto const &[type, flags, value, line] : rows) {
    PCardStorage card;
    Add(&card, "Any Name", type, flags, value);
    EXPECT_EQ(TextOf(&card), kEmptyCard + "Any Name=" + line + "\r\n");
  }
}

TEST_F(CardTextExportTest, HeadLinesHold64Bytes) {
  // Wide: what becomes of 16-bit text of that length, which is not cut.
  std::pair<size_t, std::string> const cases[] = {
      {62, std::string(62, 'x')}, {63, "0.0.0.0"}, {65, "0.0.0.0"}};
  for (auto const &[length, wide] : cases) {
    PCardStorage card;
    AddWide(&card, "X-BRNDL-IP", 0, std::u16string(length, u'x'));
    AddText(&card, "X-BRNDL-CONFID", 0, std::string(length, 'y'));
    std::string const id(std::min<size_t>(length, 64), 'y');
    EXPECT_TRUE(TextOf(&card).starts_with(wide + "\r\n" + id + "\r\n\r\n[Card")) << length;
  }
}

TEST_F(CardTextExportTest, PreferencesInTheOrderOfTheStore) {
  AddPrefs(&card_, &prefs_);
  std::string const head = kEmptyCard + "\r\n[Preferences]\r\n";
  EXPECT_EQ(TextOf(&card_), head);
  card_.DeleteProp(0);
  prefs_.SetStr(kAudio, "beta", "a=b\t\xE9");
  prefs_.SetStr(kAudio, "Alpha", "");
  prefs_.SetStr(kGeneral, "Long", std::string(1025, 'l').c_str());
  prefs_.SetStr(0xFFFFFFFF, "Lost", "1");
  prefs_.SetStr(0x42000000, "Between", "2");
  AddPrefs(&card_, &prefs_);
  AddText(&card_, "l-brndl-typrefS behind", 0, "x");
  std::string const property = "l-brndl-typrefS behind=ASCII::x\r\n";
  std::string const values = "Between=2\r\n\r\n[Audio]\r\nAlpha=\r\nbeta=a=b\t\xE9\r\n";
  EXPECT_EQ(TextOf(&card_), kEmptyCard + property +
                                "\r\n[Preferences]\r\nLost=1\r\n\r\n[General]\r\nLong=" +
                                std::string(1023, 'l') + "\r\n" + values);
  WinPrefs *const names = GetSystemPrefs();
  SetSystemPrefs(nullptr);
  EXPECT_FALSE(Has(TextOf(&card_), "[General]"));
  EXPECT_TRUE(Has(TextOf(&card_), "[Preferences]\r\nLost=1\r\nLong=l"));
  SetSystemPrefs(names);
}

TEST_F(CardTextExportTest, ManyValuesThatShareTheirBytesStayBounded) {
  constexpr uint32_t kSlots = 1000;
  std::string blob = FromHex("01000000 E8030000");
  for (uint32_t i = 0; i < kSlots; i++) {
    std::string name = "n" + std::to_string(i);
    name.resize(32, '\0');
    blob += FromHex("4C524E47") + name + FromHex("00001000 00000000");
  }
  blob += FromHex("A903") + std::string(0x100000 - 2, 'x');
  Add(&card_, kCardPrefsProperty, PropertyData, PropertyLocal, blob);
  std::string const text = TextOf(&card_);
  EXPECT_LT(text.size(), kSlots * 1040 + 100);
  EXPECT_TRUE(Has(text, "\r\nn0=?")) << "what the code page lacks";
}

TEST_F(CardTextExportTest, AFailureLeavesTheOldFile) {
  Add(&card_, "PHOTO", PropertyBitmap, 0, std::string(100000, 'p'));
  std::string const path = Path("card");
  WriteContent(path, "old");
  EXPECT_EQ(ExportCard(&card_, Path("none/card").c_str()), -1);
  EXPECT_EQ(ExportCard(&card_, Path("").c_str()), -1);
  EXPECT_EQ(ExportCard(&card_, static_cast<char const *>(nullptr)), -1);
  EXPECT_TRUE(HoldsOnAFullDisk([&] {
    uint32_t size = 1;
    return ExportCard(&card_, path.c_str()) == -1 && ExportCardData(&card_, &size) == nullptr &&
           size == 0;
  }));
  EXPECT_EQ(ContentOf(path), "old");
  EXPECT_FALSE(std::filesystem::exists(Scratch()));
}

TEST_F(CardTextExportTest, TheScratchFileIsNotWrittenThroughALink) {
  uint32_t size = 0;
  WriteContent(Path("precious"), "mine");
  std::filesystem::create_symlink(Path("precious"), Scratch());
  GlobalFree(ExportCardData(&card_, &size));
  EXPECT_EQ(size, kEmptyCard.size());
  EXPECT_EQ(ContentOf(Path("precious")), "mine");
  std::filesystem::create_directory(Scratch());
  EXPECT_EQ(ExportCardData(&card_, &size), nullptr);
}

}  // namespace
}  // namespace zolt::testing
