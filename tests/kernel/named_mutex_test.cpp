#include "zolt41/platform/kernel/named_mutex.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>

#include "tests/support/child.h"
#include "tests/support/files.h"
#include "zolt41/platform/kernel/shared_segment.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt::testing {
namespace {

class NamedMutexTest : public ::testing::Test {
 protected:
  ~NamedMutexTest() override { DetachSegment(); }

  TempHome home_;
  HANDLE mutex_ = CreateMutexA(nullptr, 0, "/ZO/ZOLT/SECURE2");
};

TEST_F(NamedMutexTest, ExcludesThreadsAndProcessesAndIsRecursive) {
  ASSERT_EQ(WaitForSingleObject(mutex_, 0), WAIT_OBJECT_0);
  ASSERT_EQ(WaitForSingleObject(mutex_, INFINITE), WAIT_OBJECT_0);
  HANDLE const other = CreateMutexA(nullptr, 0, "/ZO/ZOLT/SECURE1");
  EXPECT_EQ(WaitForSingleObject(other, 0), WAIT_OBJECT_0) << "another mutex";
  ReleaseMutex(other);
  auto tryIt = [this] { return static_cast<int>(WaitForSingleObject(mutex_, 10) & 0xFF); };
  auto inThread = [&] {
    int result = -1;
    std::thread([&] { result = tryIt(); }).join();
    return result;
  };
  EXPECT_EQ(inThread(), WAIT_TIMEOUT & 0xFF);
  EXPECT_EQ(Child([&](Child::Pipe &) { return tryIt(); }).Wait(), int{WAIT_TIMEOUT & 0xFF});
  EXPECT_EQ(ReleaseMutex(mutex_), 1);
  EXPECT_EQ(inThread(), WAIT_TIMEOUT & 0xFF) << "taken twice";
  EXPECT_EQ(ReleaseMutex(mutex_), 1);
  EXPECT_EQ(ReleaseMutex(mutex_), 0) << "not the owner any more";
  EXPECT_EQ(Child([&](Child::Pipe &) { return tryIt(); }).Wait(), 0);
}

TEST_F(NamedMutexTest, ADeadOwnerGivesItToTheNextWaiter) {
  // Attached before, so that the segment is not made anew when its only other user dies.
  ASSERT_EQ(WaitForSingleObject(mutex_, 0), WAIT_OBJECT_0);
  ReleaseMutex(mutex_);
  Child owner([&](Child::Pipe &pipe) {
    WaitForSingleObject(mutex_, INFINITE);
    pipe.Say("mine");
    pipe.Hear();
    return 0;
  });
  ASSERT_EQ(owner.pipe().Hear(), "mine");
  uint32_t result = WAIT_FAILED;
  std::thread waiter([&] {
    result = WaitForSingleObject(mutex_, 60000);
    ReleaseMutex(mutex_);
  });
  owner.Signal(SIGKILL);
  waiter.join();
  EXPECT_EQ(result, WAIT_ABANDONED);
  EXPECT_EQ(WaitForSingleObject(mutex_, 0), WAIT_OBJECT_0) << "told once";
  ReleaseMutex(mutex_);
}

TEST_F(NamedMutexTest, AChildOwnsNothingOfItsParent) {
  ASSERT_EQ(WaitForSingleObject(mutex_, 0), WAIT_OBJECT_0);
  EXPECT_TRUE(HoldsInChild(
      [&] { return ReleaseMutex(mutex_) == 0 && WaitForSingleObject(mutex_, 0) == WAIT_TIMEOUT; }));
  EXPECT_EQ(ReleaseMutex(mutex_), 1);
}

// Holds the file as an attached process does; to be closed.
int Attach(std::string const &path) {
  int const file = open(path.c_str(), O_RDWR | O_CLOEXEC);
  struct flock lock {};
  lock.l_type = F_RDLCK;
  EXPECT_EQ(fcntl(file, F_OFD_SETLK, &lock), 0);
  return file;
}

TEST_F(NamedMutexTest, AFileThatIsNoSegmentIsMadeAnewOrRefused) {
  ASSERT_NE(SegmentArea(), nullptr);
  std::string const path = SegmentPath();
  std::string const whole = ContentOf(path);
  DetachSegment();
  ZOLTSetLockWait(20);
  for (std::string const &bytes : {std::string(), whole.substr(0, 10), whole.substr(0, 0x2000),
                                   whole + "x", std::string(whole.size(), 'G')}) {
    WriteContent(path, bytes);
    chmod(path.c_str(), 0600);
    int const other = Attach(path);
    EXPECT_EQ(SegmentArea(), nullptr) << bytes.size();
    EXPECT_EQ(WaitForSingleObject(mutex_, 1000), WAIT_FAILED);
    EXPECT_TRUE(ContentOf(path) == bytes) << bytes.size();
    close(other);
    DetachSegment();
    auto const *const area = static_cast<char const *>(SegmentArea());
    ASSERT_NE(area, nullptr) << bytes.size();
    EXPECT_TRUE(std::all_of(area, area + kSegmentFrontSize, [](char c) { return c == 0; }));
    EXPECT_EQ(WaitForSingleObject(mutex_, 0), WAIT_OBJECT_0);
    ReleaseMutex(mutex_);
    DetachSegment();
  }
  ZOLTSetLockWait(5000);
  WriteContent(path, "open to others");
  chmod(path.c_str(), 0666);
  EXPECT_EQ(WaitForSingleObject(mutex_, 1000), WAIT_FAILED) << "the caller goes on alone";
  DetachSegment();
  std::filesystem::remove(path);
  EXPECT_EQ(WaitForSingleObject(mutex_, 0), WAIT_OBJECT_0);
  ReleaseMutex(mutex_);
}

TEST_F(NamedMutexTest, TheSegmentIsForItsUserAloneAndGoesWithTheLast) {
  WaitForSingleObject(mutex_, 0);
  ReleaseMutex(mutex_);
  EXPECT_EQ(std::filesystem::status(SegmentPath()).permissions(), std::filesystem::perms(0600));
  EXPECT_TRUE(HoldsInChild([] {
    DetachSegment();
    return std::filesystem::exists(SegmentPath());
  })) << "still used by its parent";
  std::atomic<uint32_t> const *const used = SegmentEvent();
  DetachSegment();
  EXPECT_FALSE(std::filesystem::exists(SegmentPath()));
  EXPECT_EQ(used->load(), 0U) << "a thread may be in the middle of something";
}

TEST_F(NamedMutexTest, AChildWhoseParentRemovedTheSegmentHasANewOne) {
  ASSERT_NE(SegmentEvent(), nullptr);
  std::filesystem::remove(SegmentPath());
  EXPECT_TRUE(HoldsInChild([this] {
    bool const got = WaitForSingleObject(mutex_, 0) == WAIT_OBJECT_0 && ReleaseMutex(mutex_) == 1;
    return got && std::filesystem::exists(SegmentPath());
  }));
}

}  // namespace
}  // namespace zolt::testing
