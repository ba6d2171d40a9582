#include "zolt41/interchange/vcard_export.h"

#include <tuple>

#include "tests/interchange/interchange_fixture.h"

namespace zolt::testing {
namespace {

class VCardExportTest : public InterchangeTest {
 protected:
  std::string Exported(VCardProfile profile, char const *key = nullptr) {
    EXPECT_EQ(ExportVCardAs(&card_, Path("vcf").c_str(), profile, key), 1);
    return ContentOf(Path("vcf"));
  }
  // What stands between the first and the last line.
  std::string Classic() {
    EXPECT_EQ(ExportVCard(&card_, Path("classic").c_str()), 1);
    std::string const text = ContentOf(Path("classic"));
    EXPECT_EQ(Exported(VCardClassic, "ignored"), text);
    EXPECT_TRUE(text.starts_with("BEGIN:VCARD\r\n") && text.ends_with("END:VCARD\r\n"));
    return text.substr(13, text.size() - 13 - 11);
  }
  // The lines behind the version and before the end, unfolded.
  std::string Lines(VCardProfile profile) {
    std::string text = Exported(profile);
    for (size_t fold; (fold = text.find("\r\n ")) != std::string::npos;) text.erase(fold, 3);
    std::string const head =
        "BEGIN:VCARD\r\nVERSION:" + std::string(profile == VCard3 ? "3" : "4") + ".0\r\n";
    EXPECT_TRUE(text.starts_with(head) && text.ends_with("END:VCARD\r\n")) << text;
    return text.substr(head.size(), text.size() - head.size() - 11);
  }

  PCardStorage card_;
};

TEST_F(VCardExportTest, TheExampleInEveryProfile) {
  AddWide(&card_, "FN", 0, u"\u00C9va K");
  AddText(&card_, "TEL", PropertyHome | PropertyPref, "5,5");
  Add(&card_, "PHOTO", PropertyBitmap, 0, "GIF8");
  std::string key = "a key";
  key.resize(32);
  std::string const three = Exported(VCard3, key.data());
  EXPECT_EQ(three, WithLineEnds(ExampleOf("vcard.md")));
  EXPECT_TRUE(Has(three, FromHex(ExampleOf("vcard.md", 1))));
  EXPECT_EQ(Exported(VCard4, key.data()), WithLineEnds(ExampleOf("vcard.md", 2)));
  EXPECT_EQ(Exported(VCardClassic), WithLineEnds(ExampleOf("vcard.md", 3)));
  key.assign(32, '\0');
  EXPECT_FALSE(Has(Exported(VCard3, key.data()), "UID"));
  key[1] = 'k';
  EXPECT_TRUE(Has(Exported(VCard3, key.data()), "\r\nUID:006B\r\n"));
}

TEST_F(VCardExportTest, ClassicRowsInTheirOrder) {
  EXPECT_EQ(Classic(), "");
  for (char const *const name : {"SOUND", "PHOTO", "LOGO"})
    Add(&card_, name, PropertySound, 0, "x");
  for (char const *const name : {"URL", "X-BRNDL-TYNAME", "EMAIL", "ORG", "X-BRNDL-IP",
                                 "X-BRNDL-CONFID", "TITLE", "FAX", "TEL", "FN", "label"}) {
    AddText(&card_, name, PropertyVoice, "voice");
    AddText(&card_, name, PropertyHome | PropertyWork, "both");
    AddText(&card_, name, PropertyHome, "home");
  }
  EXPECT_EQ(Classic(),
            "LABEL;POSTAL;HOME:both\r\nLABEL;POSTAL;WORK:both\r\nFN:voice\r\nTEL;HOME:both\r\n"
            "TEL;WORK:both\r\nFAX;HOME:both\r\nFAX;WORK:both\r\nTITLE:voice\r\nORG:voice\r\n"
            "EMAIL;INTERNET;HOME:both\r\nEMAIL;INTERNET;WORK:both\r\nURL;HOME:both\r\n"
            "URL;WORK:both\r\nTITLE:voice\r\nX-BRNDL-IP:voice\r\nX-BRNDL-TYNAME:voice\r\n"
            "LOGO;TYPE=GIF;ENCODING=BASE64:\r\neA==\r\n\r\n"
            "PHOTO;TYPE=GIF;ENCODING=BASE64:\r\neA==\r\n\r\n"
            "SOUND;TYPE=WAVE;ENCODING=BASE64:\r\neA==\r\n\r\n");
}

TEST_F(VCardExportTest, ClassicValuesByType) {
  std::string const quoted = ";ENCODING=QUOTED-PRINTABLE;CHARSET=ISO-8859-1:";
  std::tuple<uint32_t, std::string, std::string> const rows[] = {
      {0, "a=,;\\\r\n\xE9", ":a=,;\\\r\n\xE9\r\n"},
      {5, std::string("up to\0here", 10), ":up to\r\n"},
      {4, "bytes", "\r\n"},
      {0x80000001, FromHex("E900 2D4E 3D00 0000 4100"), quoted + "=E9?=3D\r\n"},
      {0x80000000, FromHex("3100 0A00 5400 0000"), quoted + "1T\r\n"},
      {1, std::string(45, '\0'), ";ENCODING=BASE64:\r\n" + std::string(60, 'A') + "\r\n\r\n\r\n"},
      {2, "", ";ENCODING=BASE64:\r\n\r\n\r\n"}};
  for (auto const &[type, value, line] : rows) {
    card_.Set(nullptr, 0);
    Add(&card_, "ORG", type, 0, value);
    EXPECT_EQ(Classic(), "ORG" + line);
  }
}

TEST_F(VCardExportTest, TypesOfEachKindAndWhatStaysAtHome) {
  AddWide(&card_, "FN", 0, u" Ada King Lovelace ");
  AddText(&card_, "TEL", 0x7FFFFFFF, "1");
  AddText(&card_, "TEL", PropertyLocal, "secret");
  AddText(&card_, "tel", 0, "2");
  AddText(&card_, "TEL", 0, " ");
  Add(&card_, "TEL", PropertyData, 0, "no text");
  AddText(&card_, "EMAIL", PropertyHome | PropertyPref | PropertyVoice, "a@b");
  AddText(&card_, "EMAIL", 0, "c@d");
  AddText(&card_, "X-BRNDL-CONFID", 0, "7");
  AddText(&card_, "X-BRNDL-TYNAME", 0, "t");
  AddText(&card_, "L-NOTE", 0, "secret");
  AddText(&card_, "NOTE", 0, "of no line");
  std::string const names = "N:Lovelace;Ada King;;;\r\nFN: Ada King Lovelace \r\n";
  std::string const rest = "X-BRNDL-CONFID:7\r\nX-BRNDL-TYNAME:t\r\n";
  EXPECT_EQ(
      Lines(VCard3),
      names +
          "TEL;TYPE=home,work,voice,fax,msg,cell,pager,bbs,modem,car,isdn,video,pref:1\r\nTEL:2\r\n"
          "EMAIL;TYPE=internet,home,pref:a@b\r\nEMAIL;TYPE=internet:c@d\r\n" +
          rest);
  EXPECT_EQ(Lines(VCard4), names +
                               "TEL;TYPE=home,work,voice,fax,cell,pager,video;PREF=1:1\r\nTEL:2\r\n"
                               "EMAIL;TYPE=home;PREF=1:a@b\r\nEMAIL:c@d\r\n" +
                               rest);
}

TEST_F(VCardExportTest, AddressesAndTheirLabels) {
  AddText(&card_, "LABEL", PropertyHome | PropertyParcel, "1 \"Oak\" St,\r\nTown");
  AddText(&card_, "LABEL", PropertyWork, "2");
  AddText(&card_, "LABEL", PropertyWork, "3; 4\\n");
  AddText(&card_, "ADR", PropertyWork, ";;2 Elm St;City");
  AddText(&card_, "ADR", 0, "5 Ash St, X");
  std::string const names = "N:Unknown;;;;\r\nFN:Unknown\r\n";
  EXPECT_EQ(Lines(VCard3),
            names +
                "ADR;TYPE=work:;;2 Elm St;City;;;\r\nADR:;;5 Ash St\\, X;;;;\r\n"
                "LABEL;TYPE=parcel,home:1 \"Oak\" "
                "St\\,\\nTown\r\nLABEL;TYPE=work:2\r\nLABEL;TYPE=work:3\\; 4\\\\n\r\n");
  EXPECT_EQ(Lines(VCard4),
            names +
                "ADR;TYPE=work;LABEL=\"2\":;;2 Elm St;City;;;\r\nADR:;;5 Ash St\\, X;;;;\r\n"
                "ADR;TYPE=home;LABEL=\"1 'Oak' St,\\nTown\":;;1 \"Oak\" St\\,\\nTown;;;;\r\n"
                "ADR;TYPE=work;LABEL=\"3; 4\\\\n\":;;3\\; 4\\\\n;;;;\r\n");
}

TEST_F(VCardExportTest, ANameIsAlwaysThere) {
  std::tuple<char const *, char const *, std::string> const cases[] = {
      {"FN", "Ada", "N:Ada;;;;\r\nFN:Ada\r\n"},
      {"N", "King;Ada", "N:King;Ada\r\nFN:a b@c\r\n"},
      {"FN", " \t", "N:b@c;a;;;\r\nFN:a b@c\r\n"},
      {"X-BRNDL-TYNAME", "x;y", "N:x\\;y;;;;\r\nFN:x\\;y\r\n"}};
  for (auto const &[property, text, lines] : cases) {
    card_.Set(nullptr, 0);
    AddText(&card_, "EMAIL", 0, "a b@c");
    AddText(&card_, property, 0, text);
    EXPECT_TRUE(Lines(VCard3).starts_with(lines)) << Lines(VCard3);
  }
}

TEST_F(VCardExportTest, MediaByTheirFirstBytes) {
  std::tuple<std::string, std::string, std::string> const cases[] = {
      {FromHex("89504E470D0A1A0A"), ";TYPE=PNG", "image/png"},
      {"RIFF....WEBP", ";TYPE=WEBP", "image/webp"},
      {"RIFF....WAVE", ";TYPE=WAVE", "audio/wav"},
      {"RIFF....", "", "application/octet-stream"},
      {"RIF", "", "application/octet-stream"}};
  for (auto const &[bytes, three, four] : cases) {
    card_.Set(nullptr, 0);
    Add(&card_, "PHOTO", PropertyBitmap, 0, "");
    Add(&card_, "PHOTO", PropertyUrl, 0, "http://x");
    Add(&card_, "SOUND", PropertyData, 0, bytes);
    EXPECT_TRUE(
        Has(Lines(VCard3), "\r\nPHOTO;VALUE=uri:http://x\r\nSOUND;ENCODING=b" + three + ":"));
    EXPECT_TRUE(Has(Lines(VCard4), "\r\nPHOTO:http://x\r\nSOUND:data:" + four + ";base64\\,"));
  }
}

TEST_F(VCardExportTest, TextIsUtf8InFoldedLines) {
  std::string const s70(70, 's');
  std::u16string const w70(70, u's');
  std::pair<std::u16string, std::string> const rows[] = {
      {w70 + u"t", "TITLE:" + s70.substr(1) + "\r\n st"},
      {w70.substr(1), "TITLE:" + s70.substr(1)},
      {w70.substr(2) + u"\u00E9", "TITLE:" + s70.substr(2) + "\r\n \u00E9"},
      {w70.substr(3) + u"\u00E9", "TITLE:" + s70.substr(3) + "\u00E9"},
      {w70.substr(4) + u"\U0001F600" + w70 + w70,
       "TITLE:" + s70.substr(4) + "\r\n \U0001F600" + s70 + "\r\n " + s70},
      {u"\xD800x\xDC00", "TITLE:\uFFFDx\uFFFD"},
      {u"a\tb\u0001\u007F\u0085c\\\r\nd\re\nf", "TITLE:a\tb\u0085c\\\\\\nd\\ne\\nf"}};
  for (auto const &[text, lines] : rows) {
    card_.Set(nullptr, 0);
    AddWide(&card_, "TITLE", 0, text);
    std::string const vcard = Exported(VCard4);
    EXPECT_EQ(vcard.substr(vcard.find("TITLE")), lines + "\r\nEND:VCARD\r\n");
  }
  card_.Set(nullptr, 0);
  AddText(&card_, "TITLE", 0, "\xE9\x80");
  EXPECT_TRUE(Has(Exported(VCard3), "TITLE:\u00E9\u20AC\r\n"));
}

TEST_F(VCardExportTest, AFailureLeavesTheOldFile) {
  Add(&card_, "PHOTO", PropertyBitmap, 0, std::string(100000, 'p'));
  std::string const path = Path("old");
  WriteContent(path, "old");
  EXPECT_EQ(ExportVCard(&card_, Path("none/card").c_str()), 0);
  EXPECT_EQ(ExportVCardAs(&card_, path.c_str(), static_cast<VCardProfile>(3), nullptr), 0);
  EXPECT_TRUE(HoldsOnAFullDisk([&] {
    return ExportVCard(&card_, path.c_str()) == 0 &&
           ExportVCardAs(&card_, path.c_str(), VCard4, nullptr) == 0;
  }));
  EXPECT_EQ(ContentOf(path), "old");
}

}  // namespace
}  // namespace zolt::testing
