#include "zolt41/platform/com/memory_stream.h"

#include <gtest/gtest.h>

#include <string>

#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/system/global_block.h"

namespace zolt::testing {
namespace {

class MemoryStreamTest : public ::testing::Test {
 protected:
  MemoryStreamTest() { CreateStreamOnHGlobal(nullptr, 1, stream_.Place()); }

  void Write(std::string const &bytes) const {
    ULONG written = 0;
    EXPECT_EQ(stream_->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), S_OK);
    EXPECT_EQ(written, bytes.size());
  }
  HRESULT Seek(int64_t move, DWORD origin, uint64_t *place = nullptr) const {
    LARGE_INTEGER by;
    by.QuadPart = move;
    ULARGE_INTEGER at = {};
    HRESULT const result = stream_->Seek(by, origin, &at);
    if (place != nullptr) *place = at.QuadPart;
    return result;
  }
  // All bytes of the block.
  std::string Bytes() const {
    HGLOBAL block = nullptr;
    EXPECT_EQ(GetHGlobalFromStream(stream_.get(), &block), S_OK);
    return {static_cast<char *>(GlobalLock(block)), GlobalSize(block)};
  }

  ComPtr<IStream> stream_;
};

TEST_F(MemoryStreamTest, WritesGrowTheBlockAndFillGapsWithZeros) {
  Write("abcd");
  EXPECT_EQ(Seek(2, STREAM_SEEK_CUR), S_OK);
  Write(std::string(5000, 'x'));
  EXPECT_EQ(Bytes(), "abcd" + std::string(2, '\0') + std::string(5000, 'x'));
  EXPECT_EQ(Seek(1, STREAM_SEEK_SET), S_OK);
  Write("B");
  EXPECT_EQ(Bytes().substr(0, 4), "aBcd");
  ULARGE_INTEGER size;
  size.QuadPart = 3;
  EXPECT_EQ(stream_->SetSize(size), S_OK);
  EXPECT_EQ(Bytes(), "aBc");
}

TEST_F(MemoryStreamTest, SeeksWithin63Bits) {
  Write("abcd");
  uint64_t place = 0;
  EXPECT_EQ(Seek(-3, STREAM_SEEK_CUR, &place), S_OK);
  EXPECT_EQ(place, 1U);
  struct {
    int64_t move;
    DWORD origin;
  } const refused[] = {{-1, STREAM_SEEK_SET},        {-2, STREAM_SEEK_CUR},
                       {-5, STREAM_SEEK_END},        {0, 3},
                       {INT64_MAX, STREAM_SEEK_CUR}, {INT64_MIN, 2}};
  for (auto const &test : refused) {
    EXPECT_EQ(Seek(test.move, test.origin, &place), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(place, 1U) << "where it was";
  }
  EXPECT_EQ(Seek(INT64_MAX, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(stream_->Write("a", 1, nullptr), STG_E_MEDIUMFULL);
  char byte = 0;
  ULONG read = 9;
  EXPECT_EQ(stream_->Read(&byte, 1, &read), S_OK);
  EXPECT_EQ(read, 0U);
}

TEST_F(MemoryStreamTest, CopiesFromItsPlaceAndSharesTheBlockWithAClone) {
  Write(std::string(10000, 'a') + "end");
  ComPtr<IStream> clone;
  ASSERT_EQ(stream_->Clone(clone.Place()), S_OK);
  EXPECT_EQ(Seek(1, STREAM_SEEK_SET), S_OK);
  ULARGE_INTEGER all;
  all.QuadPart = UINT64_MAX;
  ULARGE_INTEGER read = {};
  ULARGE_INTEGER written = {};
  EXPECT_EQ(stream_->CopyTo(clone.get(), all, &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 10002U) << "what there was when it began";
  EXPECT_EQ(written.QuadPart, 10002U);
  EXPECT_EQ(Bytes(), std::string(10000, 'a') + "end" + std::string(9999, 'a') + "end");
}

TEST_F(MemoryStreamTest, LeavesABlockThatItDoesNotOwn) {
  HGLOBAL const block = GlobalAlloc(GMEM_ZEROINIT, 2);
  ComPtr<IStream> lent;
  ASSERT_EQ(CreateStreamOnHGlobal(block, 0, lent.Place()), S_OK);
  EXPECT_EQ(lent->Write("ab", 2, nullptr), S_OK);
  lent.Reset();
  EXPECT_EQ(std::string(static_cast<char *>(GlobalLock(block)), 2), "ab");
  GlobalFree(block);
}

}  // namespace
}  // namespace zolt::testing
