// What programs read that we did not write.

#include "tests/interchange/interchange_fixture.h"
#include "zolt41/interchange/vcard_export.h"

namespace zolt::testing {
namespace {

std::string Repeated(std::string const &text, int count) {
  std::string all;
  for (int i = 0; i < count; i++) all += text;
  return all;
}

class VCardReadersTest : public InterchangeTest {
 protected:
  VCardReadersTest() {
    AddWide(&card_, "FN", 0, u"Ada \u00C9va King \u4E2D\u6587");
    AddText(&card_, "TEL", PropertyHome | PropertyVoice | PropertyPref, "555;1,2");
    AddText(&card_, "TEL", PropertyWork | PropertyCell | PropertyModem, "555 9");
    AddText(&card_, "FAX", PropertyWork, "555 2");
    AddText(&card_, "EMAIL", PropertyHome, "ada@example.org");
    Add(&card_, "URL", PropertyUrl, PropertyWork, "http://example.org/a,b;c?d=e\\f");
    AddWide(&card_, "TITLE", 0,
            u"First\r\nLine\u2028\u0085\tNo\\n " + std::u16string(100, u'\u00E9'));
    AddWide(&card_, "ORG", 0, u"Veltrane, Inc.;R&D");
    AddText(&card_, "LABEL", PropertyHome, "1 \"Oak\" St; A: B,\r\nTown");
    AddText(&card_, "ADR", PropertyWork, ";;2 Elm St;City");
    AddText(&card_, "X-BRNDL-IP", 0, "10.0.0.1");
    Add(&card_, "PHOTO", PropertyBitmap, 0, FromHex("FFD8FF") + std::string(100, '\xA5'));
    Add(&card_, "LOGO", PropertyBitmap, 0, "??");
  }

  std::string OutputOf(std::string const &command) const {
    EXPECT_EQ(std::system((command + " > '" + Path("output") + "'").c_str()), 0);
    return ContentOf(Path("output"));
  }

  void Export(std::string const &path, VCardProfile profile) {
    std::string key = "!;,\n";
    key.resize(32);
    EXPECT_EQ(ExportVCardAs(&card_, path.c_str(), profile, key.data()), 1);
  }

  std::string Read(VCardProfile profile) {
    Export(Path("card.vcf"), profile);
    return OutputOf("/usr/bin/python3 " ZOLT_DOCS "/../tests/interchange/read_vcard.py " +
                    Path("card.vcf"));
  }

  PCardStorage card_;
};

std::string const kNames = "N ('中文', 'Ada Éva King')\nFN 'Ada Éva King 中文'\n";
std::string const kTexts =
    "URL TYPE=work 'http://example.org/a,b;c?d=e\\\\f'\nTITLE "
    "'First\\nLine\\u2028\\x85\\tNo\\\\n " +
    Repeated("é", 100) +
    "'\nORG ['Veltrane, Inc.', 'R&D']\nX-BRNDL-IP '10.0.0.1'\n"
    "ADR TYPE=work ('2 Elm St', 'City')\n";

TEST_F(VCardReadersTest, VobjectReadsVersion3) {
  EXPECT_EQ(Read(VCard3),
            "VERSION '3.0'\n" + kNames +
                "TEL TYPE=home,voice,pref '555;1,2'\nTEL TYPE=work,cell,modem '555 9'\n"
                "TEL TYPE=work,fax '555 2'\nEMAIL TYPE=internet,home 'ada@example.org'\n" +
                kTexts +
                "LABEL TYPE=home '1 \"Oak\" St; A: B,\\nTown'\nPHOTO ENCODING=b TYPE=JPEG ffd8ff" +
                Repeated("a5", 100) + "\nLOGO ENCODING=b 3f3f\nUID '213B2C0A'\n");
}

TEST_F(VCardReadersTest, VobjectReadsVersion4) {
  // Three bytes to four digits, and one byte left over.
  std::string const photo = "/9j/" + Repeated("paWl", 33) + "pQ==";
  EXPECT_EQ(Read(VCard4),
            "VERSION '4.0'\n" + kNames +
                "TEL PREF=1 TYPE=home,voice '555;1,2'\nTEL TYPE=work,cell '555 9'\n"
                "TEL TYPE=work,fax '555 2'\nEMAIL TYPE=home 'ada@example.org'\n" +
                kTexts +
                "ADR LABEL=1 'Oak' St; A: B,\\nTown TYPE=home ('1 \"Oak\" St; A: B,\\nTown', '')\n"
                "PHOTO 'data:image/jpeg;base64," +
                photo +
                "'\n"
                "LOGO 'data:application/octet-stream;base64,Pz8='\nUID VALUE=text '213B2C0A'\n");
}

TEST_F(VCardReadersTest, KhardListsBothVersions) {
  WriteContent(Path("khard.conf"), "[addressbooks]\n[[main]]\npath = " + Path("book") + "\n");
  std::filesystem::create_directory(Path("book"));
  for (VCardProfile const profile : {VCard3, VCard4}) {
    Export(Path("book/card.vcf"), profile);
    std::string const khard = "HOME=" + Path("") + " khard -c " + Path("khard.conf");
    std::string const types = profile == VCard3 ? "home, voice, pref" : "home, voice, pref=1";
    EXPECT_TRUE(
        Has(OutputOf(khard + " phone --parsable"), "555;1,2\tAda Éva King 中文\t" + types + "\n"));
    EXPECT_TRUE(Has(OutputOf(khard + " email --parsable"), "ada@example.org\tAda Éva King 中文\t"));
    EXPECT_TRUE(Has(OutputOf(khard + " show King"), "2 Elm St"));
  }
}

}  // namespace
}  // namespace zolt::testing
