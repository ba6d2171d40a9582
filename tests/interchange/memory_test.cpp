// Text of cards when memory runs out.

#include "tests/interchange/interchange_fixture.h"
#include "tests/support/failing_memory.h"
#include "zolt41/interchange/vcard_export.h"

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

}  // namespace
}  // namespace zolt::testing
