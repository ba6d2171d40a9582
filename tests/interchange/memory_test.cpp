// Text of cards when memory runs out.

#include <cstring>
#include <utility>

#include "tests/interchange/interchange_fixture.h"
#include "tests/support/failing_memory.h"
#include "zolt41/cardfile/call_card.h"
#include "zolt41/foundation/afs_file.h"
#include "zolt41/interchange/card_text_check.h"
#include "zolt41/interchange/card_text_export.h"
#include "zolt41/interchange/card_text_import.h"
#include "zolt41/interchange/card_text_load.h"
#include "zolt41/interchange/vcard_export.h"
#include "zolt41/platform/system/global_block.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt::testing {
namespace {

class CardTextMemoryTest : public InterchangeTest {
 protected:
  // Fails, with the file as it was, until there is memory enough.
  template <typename Work>
  void FailsUntilItWorks(int64_t failed, Work const &work) {
    int failures = 0;
    for (int64_t result = failed; failures < 1000; failures++) {
      WriteContent(Path("file"), "before");
      result = WithMemoryFor(failures, work);
      if (result != failed) break;
      EXPECT_EQ(ContentOf(Path("file")), "before");
    }
    EXPECT_GT(failures, 2);
    EXPECT_LT(failures, 1000);
  }
};

TEST_F(CardTextMemoryTest, EveryCallGivesItsFailure) {
  PCardStorage card;
  for (int i = 0; i < 20; i++)
    AddText(&card, ("A-PROPERTY-WITH-A-LONG-NAME-" + std::to_string(i)).c_str(), 0,
            "some text of a card");
  std::string const path = Path("file");
  uint32_t size = 0;
  FailsUntilItWorks(-1, [&] { return int64_t{ExportCard(&card, path.c_str())}; });
  FailsUntilItWorks(0, [&] { return int64_t{ExportVCard(&card, path.c_str())}; });
  for (VCardProfile const profile : {VCard3, VCard4})
    FailsUntilItWorks(
        0, [&] { return int64_t{ExportVCardAs(&card, path.c_str(), profile, nullptr)}; });
  FailsUntilItWorks(0, [&] {
    void *const block = ExportCard(&card, &size);
    GlobalFree(block);
    return int64_t{block != nullptr};
  });
  std::string const text = Path("text");
  ASSERT_GT(ExportCard(&card, text.c_str()), 0);
  PCardStorage back;
  FailsUntilItWorks(0, [&] { return int64_t{ImportCard(&back, text.c_str())}; });
}

// Text in every form, of which each line makes or replaces something.
constexpr char kText[] =
    "10.0.0.1\n7\n\n[Card Infos]\nTEL=ASCII:HOME:1\nTEL=ASCII:HOME:2\n"
    "FN=UNICODE::An Example\nPHOTO=BITMAP::<47494638>\nORG=UNICODE::<41000000>\n\n[General]\n"
    "A Name=of a value\nAnother=value\n\n[Flow Control]\nMaxCap=100\n";

// The card is whole, or `read` gives that it is not and why.
template <typename Card = PCardStorage, typename Read>
void IsWholeOrFails(int32_t failed, Read const &read) {
  Card whole;
  ASSERT_EQ(read(&whole), 1);
  std::string const expected = Taken(whole.Get());
  int32_t result = failed;
  int failures = 0;
  for (; result == failed && failures < 1000; failures++) {
    Card card;
    ClearFailure();
    result = WithMemoryFor(failures, [&] { return read(&card); });
    if (result == failed) {
      EXPECT_EQ(ZOLTLastFailure(nullptr, 0), static_cast<int32_t>(Failure::full)) << failures;
    } else {
      EXPECT_EQ(Taken(card.Get()), expected) << failures;
    }
  }
  EXPECT_EQ(result, 1);
  EXPECT_GT(failures, 20);
}

TEST_F(CardTextMemoryTest, AnImportIsWholeOrFails) {
  std::string const text = kText;
  WriteContent(Path("text"), text);
  std::string const path = Path("text");
  void *const block = GlobalAlloc(GMEM_MOVEABLE, text.size());
  std::memcpy(GlobalLock(block), text.data(), text.size());
  IsWholeOrFails(0, [&](PCardStorage *card) {
    return ImportCard(card, text.data(), static_cast<int32_t>(text.size()));
  });
  IsWholeOrFails(0, [&](PCardStorage *card) { return ImportCard(card, path.c_str()); });
  IsWholeOrFails<CallCard>(0, [&](CallCard *card) {
    int32_t const imported = ImportCard(card, path.c_str());
    auto *const store = static_cast<TYUserPrefs *>(card->Prefs());
    return imported == 1 && store->Count() != 3 ? 2 : imported;
  });
  IsWholeOrFails(0, [&](PCardStorage *card) {
    return ImportCardData(card, block, static_cast<uint32_t>(text.size()));
  });
  GlobalFree(block);
  IsWholeOrFails(kCardTextUnread, [&](PCardStorage *card) {
    int const left = std::exchange(allocationsLeft, -1);
    uint32_t file = 0;
    AFS_LZOpenFile(path.c_str(), 1, &file);
    allocationsLeft = left;
    return LoadCardText(card, file);
  });
  uint32_t file = 0;
  EXPECT_EQ(AFS_LZOpenFile(path.c_str(), 3, &file), 0) << "none is left open";
  AFS_CloseFile(file);
  // One of before is not told again.
  SetFailure(Failure::full, "");
  PCardStorage card;
  EXPECT_EQ(ImportCard(&card, kText, 1), 1);
  EXPECT_EQ(ImportCard(&card, kText, 0), 0);
  EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 0);
}

TEST_F(CardTextMemoryTest, ACheckTellsAllOrNothing) {
  int told = 0;
  auto const tell = [](void *context, CardTextFinding const &) { ++*static_cast<int *>(context); };
  FailsUntilItWorks(-1, [&] {
    EXPECT_EQ(told, 0);
    return int64_t{CheckCardText(kText, sizeof kText - 1, tell, &told)};
  });
  EXPECT_EQ(told, 1) << "the first TEL";
}

}  // namespace
}  // namespace zolt::testing
