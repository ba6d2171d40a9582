#include "zolt41/cardfile/call_card.h"

#include <sys/stat.h>

#include <cerrno>
#include <tuple>

#include "tests/support/format_page.h"
#include "tests/support/full_disk.h"
#include "tests/support/mem_bytes.h"
#include "zolt41/cardfile/card_key.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/foundation/afs_file.h"
#include "zolt41/interchange/card_text_import.h"
#include "zolt41/platform/system/file_calls.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt::testing {
namespace {

class CallCardTest : public FileTest {
 protected:
  static void AddName(PCardStorage *card) {
    card->AddProp("FN", PropertyUnicode, 0, "A\0l\0\0\0", 6);
  }
  static std::string Text(PCardStorage *card, char const *name) {
    char buffer[64];
    card->GetStrProp(name, 0, 0, "-", buffer, 60);
    return buffer;
  }
  static TYUserPrefs *Prefs(CallCard *card) { return static_cast<TYUserPrefs *>(card->Prefs()); }
  static std::string KeyOf(std::string const &path) { return ContentOf(path).substr(16, 32); }
  int32_t SaveAs(std::string const &path) {
    return card_.SaveCardAs(CardFormatBinary, path.c_str());
  }
  // The files of the folder, links too.
  int64_t FileCount() const {
    return std::distance(std::filesystem::directory_iterator(home_.path()), {});
  }

  std::string const path_ = Path("c");
  CallCard card_{CardFormatBinary};
};

TEST_F(CallCardTest, BytesOfAFileAndItsVersion) {
  AddName(&card_);
  card_.SetKey("0123456789ABCDEFGHIJKLMN\0\0\0\0\0\0\0\0");
  EXPECT_EQ(SaveAs(path_), 1);
  EXPECT_EQ(card_.Modified(), 0);
  std::string const bytes = ContentOf(path_);
  EXPECT_EQ(bytes, FromHex(ExampleOf("card_file.md")));
  EXPECT_EQ(card_.SaveCard(), 1);
  EXPECT_EQ(ContentOf(path_), bytes) << "the version in memory stays";
  CallCard loaded(path_.c_str());
  EXPECT_EQ(loaded.Format(), CardFormatBinary);
  EXPECT_EQ(loaded.GetVersion(), 1);
  loaded.SetParentalControl(-2);
  EXPECT_EQ(loaded.Modified(), 1);
  EXPECT_EQ(loaded.SaveCard(), 1);
  EXPECT_EQ(ContentOf(path_).substr(12, 37), "\xFE\xFF\xFF\xFF" + bytes.substr(16, 32) + "\2");
}

TEST_F(CallCardTest, TheFirstSaveMakesAKeyThatStays) {
  EXPECT_STREQ(card_.GetKey(), "");
  EXPECT_EQ(card_.SaveCardAs(CardFormatBinary, (Path("none") + "/c").c_str()), 0);
  EXPECT_STREQ(card_.GetKey(), "") << "none without a file";
  SaveAs(path_);
  std::string const key = card_.GetKey();
  EXPECT_EQ(KeyOf(path_), key + std::string(8, '\0'));
  CallCard other(CardFormatBinary);
  other.SaveCardAs(CardFormatBinary, Path("d").c_str());
  EXPECT_NE(KeyOf(Path("d")), KeyOf(path_));
  for (int i = 0; i < 1000; i++) {
    char made[kCardKeySize];
    MakeCardKey(made);
    EXPECT_EQ(std::string(made, sizeof made).find('\0'), 24U);
  }
}

TEST_F(CallCardTest, PreferencesTravelInTheList) {
  EXPECT_EQ(SaveAs(path_), 1);
  EXPECT_EQ(card_.PropCount(), 0U) << "no preferences, no property";
  Prefs(&card_)->SetStr(7, "n", "v");
  EXPECT_EQ(card_.Modified(), 1);
  EXPECT_EQ(card_.SaveCard(), 1);
  EXPECT_EQ(card_.Modified(), 0);
  CallCard loaded(path_.c_str());
  EXPECT_EQ(loaded.Prefs()->Exists(7, "n"), 1);
  Prefs(&loaded)->SetStr(7, "m", "not saved");
  loaded.Load();
  EXPECT_EQ(loaded.Prefs()->Exists(7, "m"), 0);
  EXPECT_EQ(loaded.Modified(), 1) << "as after Set";
  Prefs(&loaded)->Clear();
  loaded.SaveCard();
  uint32_t length = 0;
  loaded.GetPropA(loaded.FindProp("L-BRNDL-TYPREFS", 0x80000000, 0, 0, nullptr), &length, nullptr,
                  nullptr, nullptr);
  EXPECT_EQ(length, 8U);
  std::string const list = Taken(card_.Get());
  CallCard copied(list.data(), static_cast<int32_t>(list.size()), CardFormatNone);
  EXPECT_EQ(copied.Prefs()->Exists(7, "n"), 1);
  std::string const text = "\n\n\n[Settings]\nAutoOpen=1\n";
  CallCard read(CardFormatNone);
  ImportCard(&read, text.data(), static_cast<int32_t>(text.size()));
  EXPECT_EQ(read.Prefs()->Exists(0x474E524C, "AutoOpen"), 1);
}

TEST_F(CallCardTest, CopiesHaveWhatIsSaid) {
  CallCard card(CardFormatText);
  AddName(&card);
  card.SetName(std::string(300, 'n').c_str());
  card.SetKey(std::string(32, 'k').c_str());
  card.SetPrivate(1);
  card.SetParentalControl(2);
  Prefs(&card)->SetStr(7, "n", "v");
  std::unique_ptr<CallCard> const copy(card.Copy());
  EXPECT_EQ(copy->Format(), CardFormatText);
  EXPECT_EQ(copy->GetName(), std::string(255, 'n'));
  EXPECT_EQ(copy->GetKey(), std::string(32, 'k'));
  EXPECT_EQ(copy->Private() + copy->ParentalControl(), 0);
  EXPECT_EQ(Text(copy.get(), "FN"), "Al");
  EXPECT_EQ(copy->Prefs()->Exists(7, "n"), 0);
}

TEST_F(CallCardTest, FormatsAndFailures) {
  static int32_t hookResult = 0;
  CallCard none(CardFormatNone);
  AddName(&none);
  EXPECT_EQ(none.SaveCard(), 1);
  EXPECT_EQ(none.Modified(), 0);
  CallCard host(CardFormatHost);
  AddName(&host);
  EXPECT_EQ(host.SaveCard(), 0);
  EXPECT_EQ(host.Modified(), 1);
  SetSaveCallCardProc([](CallCard *) { return hookResult; });
  EXPECT_EQ(host.SaveCard(), 0);
  hookResult = 1;
  EXPECT_EQ(host.SaveCard(), 1);
  SetSaveCallCardProc(nullptr);
  CallCard card(CardFormatText);
  AddName(&card);
  EXPECT_EQ(card.SaveCardAs(CardFormatBinary, nullptr), 0);
  EXPECT_STREQ(card.GetName(), "");
  card.SetName("kept");
  EXPECT_EQ(card.SaveCardAs(CardFormatBinary, home_.path().c_str()), 0) << "a folder";
  EXPECT_STREQ(card.GetName(), "kept");
  EXPECT_EQ(card.Format(), CardFormatText);
  EXPECT_EQ(card.Modified(), 1);
}

TEST_F(CallCardTest, WhatIsNoCardFileIsTakenForText) {
  CallCard missing(Path("none").c_str());
  EXPECT_EQ(missing.Format(), CardFormatText);
  EXPECT_EQ(missing.Modified(), 0);
  WriteContent(Path("t"), "10.0.0.1\r\n0\r\n\r\n[Card Infos]\r\nFN=ASCII::Al\r\n");
  CallCard text(Path("t").c_str());
  EXPECT_EQ(text.Format(), CardFormatText);
  EXPECT_EQ(Text(&text, "FN"), "Al");
  EXPECT_EQ(text.Modified(), 0);
  for (int i = 0; i < 2; i++) {
    text.SaveCard();
    text.Load();
    EXPECT_EQ(text.PropCount(), 2U) << "the first lines make none of their own each time";
  }
  EXPECT_EQ(Text(&text, "X-BRNDL-IP"), "10.0.0.1");
  WriteContent(Path("lines"),
               "a\r\nb-7\r\n\r\n[Card Infos]\r\nX-BRNDL-IP=UNICODE::<62000000>b\r\n"
               "X-BRNDL-CONFID=UNICODE::b-7\r\n");
  CallCard lines(Path("lines").c_str());
  EXPECT_EQ(lines.PropCount(), 3U) << "another text than that of the property stays";
  std::string const home = "X-BRNDL-IP=ASCII:HOME:1.1.1.1\r\n";
  std::string const work = "X-BRNDL-IP=ASCII:WORK:2.2.2.2\r\n";
  for (auto const &[line, others, address, count] :
       {std::tuple("1.1.1.1", home + work, "1.1.1.1", 2U),
        {"2.2.2.2", home + work, "2.2.2.2", 3U},
        {"2.2.2.2", "X-BRNDL-IP=ASCII:HOME:2.2.2.2\r\n" + home, "2.2.2.2", 2U},
        {"0.0.0.0", home + work, "1.1.1.1", 2U}}) {
    WriteContent(Path("two"), std::string(line) + "\r\n0\r\n\r\n[Card Infos]\r\n" + others);
    CallCard two(Path("two").c_str());
    EXPECT_EQ(two.PropCount(), count) << line << others;
    EXPECT_EQ(Text(&two, "X-BRNDL-IP"), address) << line << others;
  }
  WriteContent(Path("bad"), "1\n2\n[Card Infos]\nFN=ASCII::Ben\nP=BITMAP::x\n");
  text.SetName(Path("bad").c_str());
  text.Load();
  EXPECT_EQ(Text(&text, "FN"), "Al") << "text that cannot be read replaces nothing";

  AddName(&card_);
  SaveAs(path_);
  std::string bytes = ContentOf(path_);
  bytes.replace(0, 9, "ln_091296");
  WriteContent(Path("small"), bytes);
  EXPECT_EQ(CallCard(Path("small").c_str()).Format(), CardFormatBinary);
  bytes[9] = 'x';
  WriteContent(Path("other"), bytes);
  EXPECT_EQ(CallCard(Path("other").c_str()).Format(), CardFormatText);
}

TEST_F(CallCardTest, EveryCutAndFlippedFileIsReadOrRefused) {
  AddName(&card_);
  Prefs(&card_)->SetStr(7, "n", "v");
  SaveAs(path_);
  std::string const bytes = ContentOf(path_);
  for (size_t size = 0; size < bytes.size(); size++) {
    WriteContent(Path("cut"), bytes.substr(0, size));
    CallCard cut(Path("cut").c_str());
    // Without its head it is taken for text.
    if (size >= 56) {
      EXPECT_EQ(cut.PropCount(), 0U) << size;
    }
    EXPECT_EQ(cut.FindProp("FN", 0, 0, 0, nullptr), 0xFFFFFFFFU) << size;
  }
  for (size_t at = 0; at < bytes.size(); at++) {
    std::string flipped = bytes;
    flipped[at] = static_cast<char>(~flipped[at]);
    WriteContent(Path("cut"), flipped);
    CallCard loaded(Path("cut").c_str());
    Prefs(&loaded)->SetStr(7, "m", "w");
    loaded.SavePrefs();
    EXPECT_LT(loaded.FindProp("L-BRNDL-TYPREFS", 0, 0, 0, nullptr), loaded.PropCount()) << at;
  }
}

TEST_F(CallCardTest, ASaveKeepsLinksModesAndOtherNames) {
  SaveAs(path_);
  ASSERT_EQ(chmod(path_.c_str(), 0640), 0);
  ASSERT_EQ(symlink("c", Path("link").c_str()), 0);
  AddName(&card_);
  EXPECT_EQ(SaveAs(Path("link")), 1);
  EXPECT_TRUE(std::filesystem::is_symlink(Path("link")));
  EXPECT_EQ(std::filesystem::status(path_).permissions(), std::filesystem::perms(0640));
  ASSERT_EQ(link(path_.c_str(), Path("second").c_str()), 0);
  card_.SetParentalControl(9);
  EXPECT_EQ(card_.SaveCard(), 1);
  EXPECT_EQ(ContentOf(path_), ContentOf(Path("second")));
  ASSERT_EQ(symlink("nowhere/c", Path("dangling").c_str()), 0);
  EXPECT_EQ(SaveAs(Path("dangling")), 0);
  EXPECT_EQ(FileCount(), 4) << "nothing is left beside them";
}

TEST_F(CallCardTest, AFileThatIsOpenElsewhereIsNotReplaced) {
  SaveAs(path_);
  uint32_t file = 0;
  ASSERT_EQ(AFS_LZOpenFile(path_.c_str(), 1, &file), 0);
  AddName(&card_);
  EXPECT_EQ(card_.SaveCard(), 0);
  EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 2);
  AFS_CloseFile(file);
  EXPECT_EQ(card_.SaveCard(), 1);
}

TEST_F(CallCardTest, AFullDiskLeavesTheOldFile) {
  SaveAs(path_);
  std::string const bytes = ContentOf(path_);
  card_.AddProp("PHOTO", PropertyBitmap, 0, std::string(100000, 'p').data(), 100000);
  // With a second name the file is written in its place.
  for (char const *name : {"none", "second"}) {
    if (std::string(name) == "second") {
      ASSERT_EQ(link(path_.c_str(), Path(name).c_str()), 0);
    }
    EXPECT_TRUE(HoldsOnAFullDisk([&] {
      return card_.SaveCard() == 0 && card_.Modified() == 1 && ZOLTLastFailure(nullptr, 0) == 3;
    })) << name;
    EXPECT_EQ(ContentOf(path_), bytes) << name;
  }
  EXPECT_EQ(card_.SaveCard(), 1);
  EXPECT_GT(ContentOf(Path("second")).size(), 100000U);
  card_.DeleteProp(0);
  card_.SaveCard();
  EXPECT_EQ(ContentOf(path_), bytes) << "a shorter one is cut";
}

TEST_F(CallCardTest, WhatCannotBeReadWholeIsNotSavedOver) {
  SaveAs(path_);
  ASSERT_EQ(truncate(path_.c_str(), 0x80000000), 0);
  CallCard card(path_.c_str());
  EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 6);
  EXPECT_EQ(card.Format(), CardFormatNone);
  AddName(&card);
  EXPECT_EQ(card.SaveCard(), 0);
  EXPECT_EQ(card.Modified(), 1);
  EXPECT_EQ(std::filesystem::file_size(path_), 0x80000000U);
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  CallCard pipe(Path("pipe").c_str());
  EXPECT_NE(ZOLTLastFailure(nullptr, 0), 0);
  EXPECT_EQ(pipe.SaveCard(), 0);
}

// Reads of files until one fails, and all after it work again.
int readsLeft = 0;

std::string replaced;

ssize_t ReadOrFail(int descriptor, void *bytes, size_t count) {
  if (readsLeft-- != 0) return read(descriptor, bytes, count);
  errno = EIO;
  return -1;
}

TEST_F(CallCardTest, AReadThatFailsLeavesTheCardAndItsFile) {
  for (int32_t const format : {CardFormatBinary, CardFormatText}) {
    CallCard whole(format);
    for (int i = 0; i < 300; i++) AddName(&whole);
    ASSERT_EQ(whole.SaveCardAs(format, path_.c_str()), 1);
    std::string const bytes = ContentOf(path_);
    FileCalls const usual = TheFileCalls();
    int failures = 0;
    for (bool failed = true; failed; failures += failed) {
      readsLeft = failures;
      TheFileCalls().read = ReadOrFail;
      CallCard card(path_.c_str());
      TheFileCalls() = usual;
      failed = readsLeft < 0;
      EXPECT_EQ(card.PropCount(), failed ? 0U : CallCard(path_.c_str()).PropCount());
      if (!failed) break;
      EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 6) << failures;
      AddName(&card);
      EXPECT_EQ(card.SaveCard(), 0) << failures;
      EXPECT_EQ(card.Modified(), 1);
      std::unique_ptr<CallCard> const copy(card.Copy());
      AddName(copy.get());
      EXPECT_EQ(copy->SaveCard(), 0) << "nor is a copy saved over it";
      EXPECT_EQ(ContentOf(path_), bytes) << format << " " << failures;
      EXPECT_EQ(card.SaveCardAs(format, Path("other").c_str()), 1);
    }
    EXPECT_GT(failures, 1);
  }
}

// As one that another program puts in its place.
TEST_F(CallCardTest, AFileIsReadAsTheOneThatItsHeadWasReadOf) {
  WriteContent(path_, "10.0.0.1\r\n0\r\n\r\n[Card Infos]\r\nFN=ASCII::Al\r\n");
  FileCalls const usual = TheFileCalls();
  TheFileCalls().read = [](int file, void *bytes, size_t size) {
    ssize_t const count = read(file, bytes, size);
    unlink(replaced.c_str());
    return count;
  };
  replaced = path_;
  CallCard card(path_.c_str());
  TheFileCalls() = usual;
  EXPECT_EQ(Text(&card, "FN"), "Al");
}

TEST_F(CallCardTest, TheLongestNamesCanBeSaved) {
  std::filesystem::current_path(home_.path());
  for (size_t const length : {220U, 245U, 253U}) {
    // The place where the name of the new file is cut lies within a character.
    std::string name = std::string(length % 2, 'n');
    while (name.size() + 2 <= length) name += "\u00E9";
    EXPECT_EQ(SaveAs(name), 1) << length;
    EXPECT_EQ(card_.SaveCard(), 1) << length;
  }
  std::filesystem::current_path("/");
  EXPECT_EQ(FileCount(), 3);
}

TEST_F(CallCardTest, AWriterThatIsKilledLeavesTheOldFileOrTheNewOne) {
  SaveAs(path_);
  std::string const large(1 << 20, 'x');
  for (int i = 0; i < 20; i++) {
    Child writer([&](Child::Pipe &pipe) {
      for (int32_t number = 0;; number++) {
        pipe.Say("goes");
        card_.DeleteProp(0);
        card_.AddProp("N", 0, static_cast<uint32_t>(number), large.data(), 1 << 20);
        card_.SaveCard();
      }
      return 0;
    });
    for (int saves = 0; saves <= i % 4; saves++) writer.pipe().Hear();
    writer.Signal(9);
    writer.Wait();
    CallCard loaded(path_.c_str());
    ASSERT_EQ(loaded.Format(), CardFormatBinary);
    ASSERT_LE(loaded.PropCount(), 1U);
  }
  card_.SaveCard();
  EXPECT_EQ(FileCount(), 1) << "what dead writers left is removed";
}

}  // namespace
}  // namespace zolt::testing
