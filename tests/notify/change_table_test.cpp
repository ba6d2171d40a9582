#include "zolt41/notify/change_table.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/temp_home.h"
#include "zolt41/foundation/text_field.h"
#include "zolt41/notify/channel_objects.h"
#include "zolt41/platform/kernel/shared_segment.h"

namespace zolt {
namespace {

// An appender that was held up knows the epoch of a transaction that is long over.
TEST(ChangeTable, ARecordOfALaterTransactionIsNotWrittenOver) {
  testing::TempHome const home;
  ChannelArea *const channel = Channel();
  ASSERT_TRUE(PrepareRecords(channel));
  std::tuple<uint32_t, uint32_t, uint32_t> const cases[] = {
      {5, 4, 0}, {5, 5, 1}, {5, 6, 1}, {0, 0xFFFFFFFF, 0}, {0xFFFFFFFF, 0, 1}};
  for (auto const &[known, marked, place] : cases) {
    channel->table.epoch.store(known);
    channel->block.recordCount.store(0);
    channel->table.marks[0].store(uint64_t{marked} << 32 | 2);
    channel->table.marks[1].store(0);
    FillField("theirs", channel->records[0].name);
    AppendChange("ours", "", "");
    EXPECT_STREQ(channel->records[place].name, "ours") << known << " " << marked;
    if (place != 0) {
      EXPECT_STREQ(channel->records[0].name, "theirs") << known << " " << marked;
    }
  }
  DetachSegment();
}

}  // namespace
}  // namespace zolt
