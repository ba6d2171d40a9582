#include "zolt41/platform/com/memory_stream.h"

#include <utility>

#include "tests/support/stream.h"
#include "zolt41/platform/system/global_block.h"

namespace zolt::testing {
namespace {

class MemoryStreamTest : public ::testing::Test {
 protected:
  MemoryStreamTest() { CreateStreamOnHGlobal(nullptr, 1, stream_.Place()); }

  // All bytes of the block.
  std::string Bytes() const {
    HGLOBAL block = nullptr;
    EXPECT_EQ(GetHGlobalFromStream(stream_.get(), &block), S_OK);
    return {static_cast<char *>(GlobalLock(block)), GlobalSize(block)};
  }

  ComPtr<IStream> stream_;
};

TEST_F(MemoryStreamTest, WritesGrowTheBlockAndFillGapsWithZeros) {
  Write(stream_, "abcd");
  EXPECT_EQ(Seek(stream_, 2, STREAM_SEEK_CUR), S_OK);
  Write(stream_, std::string(5000, 'x'));
  EXPECT_EQ(Bytes(), "abcd" + std::string(2, '\0') + std::string(5000, 'x'));
  EXPECT_EQ(Seek(stream_, 1, STREAM_SEEK_SET), S_OK);
  Write(stream_, "B");
  EXPECT_EQ(Bytes().substr(0, 4), "aBcd");
  EXPECT_EQ(stream_->SetSize({.QuadPart = 3}), S_OK);
  EXPECT_EQ(Bytes(), "aBc");
}

TEST_F(MemoryStreamTest, SeeksWithin63Bits) {
  Write(stream_, "abcd");
  uint64_t place = 0;
  EXPECT_EQ(Seek(stream_, -3, STREAM_SEEK_CUR, &place), S_OK);
  EXPECT_EQ(place, 1U);
  std::pair<int64_t, DWORD> const refused[] = {{-1, STREAM_SEEK_SET},        {-2, STREAM_SEEK_CUR},
                                               {-5, STREAM_SEEK_END},        {0, 3},
                                               {INT64_MAX, STREAM_SEEK_CUR}, {INT64_MIN, 2}};
  for (auto const &[move, origin] : refused) {
    EXPECT_EQ(Seek(stream_, move, origin, &place), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(place, 1U) << "where it was";
  }
  EXPECT_EQ(Seek(stream_, INT64_MAX, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(stream_->Write("a", 1, nullptr), STG_E_MEDIUMFULL);
  EXPECT_EQ(Read(stream_, 1), "");
}

TEST_F(MemoryStreamTest, CopiesFromItsPlaceAndSharesTheBlockWithAClone) {
  Write(stream_, std::string(10000, 'a') + "end");
  ComPtr<IStream> clone;
  ASSERT_EQ(stream_->Clone(clone.Place()), S_OK);
  EXPECT_EQ(Seek(stream_, 1, STREAM_SEEK_SET), S_OK);
  ULARGE_INTEGER read = {};
  ULARGE_INTEGER written = {};
  EXPECT_EQ(stream_->CopyTo(clone.get(), {.QuadPart = UINT64_MAX}, &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 10002U) << "what there was when it began";
  EXPECT_EQ(written.QuadPart, 10002U);
  EXPECT_EQ(Bytes(), std::string(10000, 'a') + "end" + std::string(9999, 'a') + "end");
}

TEST_F(MemoryStreamTest, LeavesABlockThatItDoesNotOwn) {
  HGLOBAL const block = GlobalAlloc(GMEM_ZEROINIT, 2);
  ComPtr<IStream> lent;
  ASSERT_EQ(CreateStreamOnHGlobal(block, 0, lent.Place()), S_OK);
  Write(lent, "ab");
  lent.Reset();
  EXPECT_EQ(std::string(static_cast<char *>(GlobalLock(block)), 2), "ab");
  GlobalFree(block);
}

}  // namespace
}  // namespace zolt::testing
