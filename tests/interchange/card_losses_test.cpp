#include <string>
#include <utility>
#include <vector>

#include "tests/interchange/interchange_fixture.h"
#include "zolt41/interchange/card_text_import.h"
#include "zolt41/interchange/property_view.h"
#include "zolt41/interchange/vcard_export.h"
#include "zolt41/prefs/section_name_hash.h"

namespace zolt::testing {
namespace {

struct Item {
  char const *name;
  uint32_t type;
  uint32_t flags;
  std::string value;
};

constexpr auto kGeneral = static_cast<uint32_t>(SectionLetters("GNRL"));
constexpr auto kAudio = static_cast<uint32_t>(SectionLetters("AUDI"));

std::string Wide(std::string const &text) {
  std::string wide;
  for (char const c : text + '\0') wide += {c, '\0'};
  return wide;
}

// Of docs/formats/card_losses.md what its rows say, a few of each.
class CardLossesTest : public InterchangeTest {
 protected:
  static void Fill(PCardStorage *card, std::vector<Item> const &items) {
    for (Item const &item : items) Add(card, item.name, item.type, item.flags, item.value);
  }

  static void ThereAndBack(PCardStorage *card, PCardStorage *back) {
    std::string const text = TextOf(card);
    ImportCard(back, text.data(), static_cast<int32_t>(text.size()));
  }

  // Behind those of the first two lines, each as name, type and flags.
  static std::string Back(std::vector<Item> const &items) {
    PCardStorage card;
    Fill(&card, items);
    PCardStorage back;
    ThereAndBack(&card, &back);
    std::string listed;
    for (uint32_t i = 2; i < back.PropCount(); i++) {
      PropertyView const property = PropertyAt(&back, i);
      listed += property.name;
      listed += IsUnicode(property.type) ? "/u" + std::to_string(property.type & ~PropertyUnicode)
                                         : "/" + std::to_string(property.type);
      listed += "/" + std::to_string(property.flags) + " ";
    }
    return listed;
  }

  // Of a card with Alpha, the given one and _z in General, and Volume in Audio; behind ? those that
  // are in no known section.
  static std::string PreferencesBack(char const *name) {
    TYUserPrefs prefs(PrefLevelCard, nullptr, 0);
    for (char const *each : {"Alpha", name, "_z"}) prefs.SetStr(kGeneral, each, "1");
    prefs.SetStr(kAudio, "Volume", "1");
    PCardStorage card;
    AddPrefs(&card, &prefs);
    PCardStorage back;
    ThereAndBack(&card, &back);
    uint32_t size = 0;
    uint32_t const index = back.FindProp(kCardPrefsProperty, 0, 0, 0, nullptr);
    char const *const blob = back.GetPropA(index, &size, nullptr, nullptr, nullptr);
    TYUserPrefs read(PrefLevelCard, blob, blob == nullptr ? 0 : size);
    std::string listed;
    for (int32_t i = 0; i < read.Count(); i++) {
      uint32_t section = 0;
      std::string const each = read.GetIndexedName(i, &section);
      listed += (section == 0xFFFFFFFF ? "?" : "") + each + " ";
    }
    return listed;
  }

  std::string VCard(VCardProfile profile, std::vector<Item> const &items) {
    PCardStorage card;
    Fill(&card, items);
    EXPECT_EQ(ExportVCardAs(&card, Path("v").c_str(), profile, nullptr), 1);
    return ContentOf(Path("v"));
  }
};

TEST_F(CardLossesTest, OfCardText) {
  std::string const nul(1, '\0');
  TYUserPrefs prefs(PrefLevelCard, nullptr, 0);
  std::string const none = Taken(prefs.GetData());
  prefs.SetStr(kGeneral, "Name", "1");
  std::string const one = Taken(prefs.GetData());
  std::pair<std::vector<Item>, std::string> const cases[] = {
      {{{"A", PropertyAscii, 0, nul}, {"B", PropertyUnicode, 0, Wide("")}}, "B/u0/0 "},
      {{{"P", PropertyBitmap, PropertyHome, "GIF8"}, {"P", PropertyUrl, 0, "x" + nul}}, "P/u0/0 "},
      {{{"P", PropertyBitmap, 0, "GIF8"}, {"P", PropertyUrl, PropertyHome, "x" + nul}},
       "P/2/0 P/u0/16 "},
      {{{"T", PropertyUnicode, PropertyHome, Wide("1")}, {"T", PropertyAscii, 0, "2" + nul}},
       "T/u0/0 "},
      {{{"T", PropertyUnicode | 5, 0, Wide("1")}, {"D", 77, 1U << 20, "1"}}, "T/u0/0 D/8/0 "},
      {{{"A", PropertyData, 0, "1"}, {"N=", PropertyData, 0, "1"}, {"B", PropertyData, 0, "1"}},
       "A/8/0 "},
      {{{"l-brndl-typrefs", PropertyBitmap, 0, one}, {"A", PropertyData, 0, "1"}},
       "A/8/0 L-BRNDL-TYPREFS/8/2147483648 "},
      {{{kCardPrefsProperty, PropertyData, PropertyLocal, one},
        {kCardPrefsProperty, PropertyData, PropertyLocal, none},
        {"A", PropertyData, 0, "1"}},
       "A/8/0 "},
  };
  for (auto const &[items, back] : cases) EXPECT_EQ(Back(items), back);
}

TEST_F(CardLossesTest, OfPreferencesInCardText) {
  std::pair<char const *, char const *> const cases[] = {
      {"Name", "Alpha Name _z Volume "},
      {"Gr\xFC", "Alpha Volume "},
      {"M\tx", "Alpha Volume "},
      {"[x]", "?_z Alpha Volume "},
  };
  for (auto const &[name, back] : cases) EXPECT_EQ(PreferencesBack(name), back) << name;
  std::string name = "Omega";
  name.resize(32);
  PCardStorage card;
  Add(&card, kCardPrefsProperty, PropertyData, PropertyLocal,
      FromHex("01000000 01000000 4C524E47") + name + FromHex("04000000 00000000 A9030000"));
  EXPECT_NE(TextOf(&card).find("\r\nOmega=?\r\n"), std::string::npos);
}

TEST_F(CardLossesTest, OfVCards) {
  std::string const nul(1, '\0');
  Item const label = {"LABEL", PropertyUnicode, PropertyHome, Wide("a\"b")};
  struct Row {
    VCardProfile profile;
    Item item;
    char const *part;
    bool there;
  };
  Row const rows[] = {
      {VCardClassic, {"FN", PropertyUnicode, 0, Wide("1\nT")}, ":1T\r\n", true},
      {VCardClassic, {"PHOTO", PropertyData, 0, "GIF8"}, "\r\nPHOTO;TYPE=GIF\r\n", true},
      {VCardClassic,
       {"TEL", PropertyBitmap, PropertyHome, "GIF8"},
       "BASE64:\r\nR0lGOA==\r\n",
       true},
      {VCardClassic, {"TEL", PropertyAscii, 0, "5" + nul}, "TEL", false},
      {VCardClassic, {"FN", PropertyDateTime, 0, "5" + nul}, "\r\nFN\r\n", true},
      {VCard3, {"PHOTO", PropertyData, 0, "GIF8"}, "PHOTO;ENCODING=b;TYPE=GIF:R0lGOA==", true},
      {VCard3, {"TEL", PropertyBitmap, PropertyHome, "GIF8"}, "TEL", false},
      {VCard3, {"EMAIL", PropertyAscii, 0, " " + nul}, "EMAIL", false},
      {VCard4, {"EMAIL", PropertyAscii, 0, " " + nul}, "EMAIL", false},
      {VCard3, label, ":a\"b\r\n", true},
      {VCard4, label, "LABEL=\"a'b\"", true},
  };
  std::string const names =
      VCard(VCard3, {{"N", PropertyAscii, 0, "One" + nul}, {"N", PropertyAscii, 0, "Two" + nul}});
  EXPECT_NE(names.find("\r\nN:One\r\n"), names.npos) << names;
  EXPECT_EQ(names.find("Two"), names.npos) << names;
  for (Row const &row : rows) {
    std::string const text = VCard(row.profile, {row.item});
    EXPECT_EQ(text.find(row.part) != text.npos, row.there) << text;
  }
}

}  // namespace
}  // namespace zolt::testing
