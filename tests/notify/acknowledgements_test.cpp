#include "zolt41/notify/acknowledgements.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tests/support/temp_home.h"
#include "zolt41/notify/channel_objects.h"
#include "zolt41/platform/kernel/shared_segment.h"

namespace zolt {
namespace {

// The test is writer and listener in turn.
class AcknowledgementsTest : public ::testing::Test {
 protected:
  AcknowledgementsTest() {
    channel_->slotsUsed.store(place_ + 1);
    slot_.listening.store(1);
  }
  ~AcknowledgementsTest() override { DetachSegment(); }
  uint32_t Expected(uint32_t number) {
    ExpectAnswers(channel_, number);
    return channel_->block.pendingAcks.load();
  }
  bool TimesOut(uint32_t number) {
    auto const start = std::chrono::steady_clock::now();
    AwaitAnswers(channel_, number, Pause::none);
    return std::chrono::steady_clock::now() - start >= std::chrono::milliseconds(50);
  }

  testing::TempHome home_;
  ChannelArea *channel_ = Channel();
  uint32_t place_ = TakeSegmentPlace();
  ProcessSlot &slot_ = channel_->slots[place_];
};

TEST_F(AcknowledgementsTest, OneThatLeavesBeforeTheAnnouncementIsOutIsNotWaitedFor) {
  EXPECT_EQ(Expected(7), 1U);
  slot_.listening.store(0);
  AnswerForAll(channel_, place_);
  AnswerForAll(channel_, place_);
  EXPECT_EQ(channel_->block.pendingAcks.load(), 0U);
  EXPECT_FALSE(TimesOut(7));
  EXPECT_EQ(Expected(8), 0U);
}

TEST_F(AcknowledgementsTest, TheDeadAndTheLaggingAreNotCounted) {
  EXPECT_EQ(Expected(7), 1U);
  EXPECT_TRUE(TimesOut(7));
  EXPECT_EQ(Expected(8), 0U) << "it lags";
  channel_->ring.published.store(uint64_t{8} << 32);
  AnswerFor(channel_, place_, 7);
  EXPECT_EQ(Expected(9), 0U) << "it has one more to hear";
  AnswerFor(channel_, place_, 8);
  EXPECT_EQ(Expected(9), 1U);
  LeaveSegmentPlace(place_);
  EXPECT_EQ(Expected(10), 0U) << "nobody is in its place";
  EXPECT_EQ(slot_.listening.load(), 0U);
}

}  // namespace
}  // namespace zolt
