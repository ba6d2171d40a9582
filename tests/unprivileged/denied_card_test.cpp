#include <sys/stat.h>

#include "tests/support/files.h"
#include "zolt41/zolt41.h"

namespace zolt::testing {
namespace {

class DeniedCardTest : public FileTest {};

TEST_F(DeniedCardTest, ACardThatMayNotBeReadOrWrittenStaysAsItIs) {
  std::string const path = Path("c");
  ASSERT_EQ(CallCard(CardFormatBinary).SaveCardAs(CardFormatBinary, path.c_str()), 1);
  std::string const bytes = ContentOf(path);
  for (mode_t const mode : {0000U, 0400U}) {
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
    CallCard card(path.c_str());
    EXPECT_EQ(ZOLTLastFailure(nullptr, 0), mode == 0 ? 1 : 0);
    EXPECT_EQ(card.Format(), mode == 0 ? CardFormatText : CardFormatBinary);
    EXPECT_EQ(card.SaveCard(), 0) << "also where the directory would allow it";
    EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 1);
  }
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(ContentOf(path), bytes);
}

}  // namespace
}  // namespace zolt::testing
