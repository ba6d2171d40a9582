#include "zolt41/comserver/stream_view.h"

#include <fstream>
#include <tuple>

#include "tests/comserver/com_fixture.h"
#include "tests/support/child.h"
#include "tests/support/stream.h"
#include "zolt41/platform/com/memory_stream.h"

namespace zolt::testing {
namespace {

constexpr char kTen[] = "0123456789";

ULARGE_INTEGER Wide(uint64_t number) {
  return {.QuadPart = number};
}

class StreamTest : public ServerTest {
 protected:
  StreamTest() { Store("v", kTen); }

  static void Store(char const *name, std::string const &bytes, TYPrefs *store = GetUserPrefs()) {
    store->WriteFree(kSection, name, REG_BINARY, reinterpret_cast<uint8_t const *>(bytes.data()),
                     static_cast<uint32_t>(bytes.size()), PrefLevelThis);
  }
  static std::string Stored(char const *name = "v") { return ReadBytes(name, kGeneral); }

  static ComPtr<IStream> OpenStream(DWORD mode, char const *name = "v") {
    ComPtr<IStream> stream;
    EXPECT_EQ(GetUserPrefs()->GetStream(kSection, name, stream.Place(), mode), 0);
    return stream;
  }
};

TEST_F(StreamTest, TheModeDecidesWhatIsAllowed) {
  std::tuple<DWORD, HRESULT, HRESULT> const cases[] = {
      {STGM_READ, S_OK, STG_E_ACCESSDENIED},
      {STGM_WRITE, STG_E_ACCESSDENIED, S_OK},
      {STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE, S_OK, S_OK},
      {STGM_WRITE | STGM_READWRITE, STG_E_ACCESSDENIED, S_OK},
      {STGM_TRANSACTED, S_OK, STG_E_ACCESSDENIED}};
  for (auto const &[mode, read, write] : cases) {
    auto const stream = OpenStream(mode);
    char byte = 0;
    ULONG count = 9;
    EXPECT_EQ(stream->Read(&byte, 0, &count), read) << mode;
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(stream->Write("x", 0, nullptr), write) << mode;
    EXPECT_EQ(stream->Commit(0), write) << mode;
    EXPECT_EQ(stream->SetSize(Wide(10)), S_OK) << "whatever the mode";
    EXPECT_EQ(stream->Revert(), S_OK);
  }
  EXPECT_EQ(Stored(), kTen);
}

TEST_F(StreamTest, AWriteEndsTheValue) {
  auto const stream = OpenStream(STGM_READWRITE);
  Write(stream, "abcd");
  EXPECT_EQ(Stored(), "abcd");
  Write(stream, "efgh");
  EXPECT_EQ(Stored(), "abcdefgh");
  EXPECT_EQ(Seek(stream, 2, STREAM_SEEK_END), S_OK);
  Write(stream, "!");
  EXPECT_EQ(Stored(), std::string("abcdefgh\0\0!", 11)) << "the gap is 0";
  EXPECT_EQ(Seek(stream, 4, STREAM_SEEK_SET), S_OK);
  Write(stream, "E");
  EXPECT_EQ(Seek(stream, 7, STREAM_SEEK_SET), S_OK);
  Write(stream, "H");
  EXPECT_EQ(Stored(), std::string("abcdE\0\0H", 8)) << "nothing comes back that was cut";
}

TEST_F(StreamTest, SeeksForwardOnly) {
  auto const stream = OpenStream(STGM_READ);
  EXPECT_EQ(Seek(stream, 3, STREAM_SEEK_SET), S_OK);
  std::tuple<int64_t, DWORD, HRESULT, uint64_t> const cases[] = {
      {-1, STREAM_SEEK_CUR, STG_E_INVALIDFUNCTION, 0},
      {-1, STREAM_SEEK_END, STG_E_INVALIDFUNCTION, 0},
      {int64_t{1} << 32, STREAM_SEEK_SET, STG_E_INVALIDFUNCTION, 0},
      {0x80000000, STREAM_SEEK_SET, STG_E_INVALIDFUNCTION, 0},
      {0x7FFFFFFF, STREAM_SEEK_CUR, STG_E_INVALIDFUNCTION, 0},
      {0, 9, S_OK, 3},
      {2, STREAM_SEEK_CUR, S_OK, 5},
      {5, STREAM_SEEK_END, S_OK, 15},
      {0x7FFFFFFF, STREAM_SEEK_SET, S_OK, 0x7FFFFFFF}};
  for (auto const &[move, origin, result, reported] : cases) {
    uint64_t place = 0;
    EXPECT_EQ(Seek(stream, move, origin, &place), result) << move;
    EXPECT_EQ(place, reported) << move;
  }
}

TEST_F(StreamTest, ATransactedStreamWaitsForCommit) {
  auto const stream = OpenStream(STGM_READWRITE | STGM_TRANSACTED);
  Write(stream, "new");
  EXPECT_EQ(Stored(), kTen);
  ComPtr<IStream> clone;
  ASSERT_EQ(stream->Clone(clone.Place()), S_OK);
  EXPECT_EQ(Read(clone, 20), "3456789") << "from the place of its source, out of the store";
  EXPECT_EQ(stream->Commit(0), S_OK);
  EXPECT_EQ(Stored(), "new");
  Write(stream, "er");
  EXPECT_EQ(stream->Revert(), S_OK);
  EXPECT_EQ(Read(stream, 20), "new");
  EXPECT_EQ(stream->SetSize(Wide(1)), S_OK);
  EXPECT_EQ(Stored(), "new");
}

TEST_F(StreamTest, RefusesWhatDoesNotFitInto32Bits) {
  auto const stream = OpenStream(STGM_READWRITE | STGM_TRANSACTED);
  EXPECT_EQ(stream->SetSize(Wide(uint64_t{1} << 32)), STG_E_MEDIUMFULL);
  EXPECT_EQ(stream->SetSize(Wide(0xFFFFFFFF)), STG_E_MEDIUMFULL);
  EXPECT_EQ(Seek(stream, 0x7FFFFFFF, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(stream->Write("a", 0xFFFFFFFF, nullptr), STG_E_MEDIUMFULL);
  EXPECT_EQ(Seek(stream, 0, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(Read(stream, 20), kTen) << "as it was";
}

// ThreadSanitizer keeps records of all memory that is given out.
#if !defined(__SANITIZE_THREAD__)
TEST_F(StreamTest, AFarPlaceTakesNoMemory) {
  auto const residentMebibytes = [] {
    long size = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return resident * sysconf(_SC_PAGESIZE) >> 20;
  };
  long const before = residentMebibytes();
  auto const sized = OpenStream(STGM_READWRITE | STGM_TRANSACTED);
  EXPECT_EQ(sized->SetSize(Wide(256 << 20)), S_OK);
  auto const written = OpenStream(STGM_READWRITE | STGM_TRANSACTED);
  EXPECT_EQ(Seek(written, 256 << 20, STREAM_SEEK_SET), S_OK);
  Write(written, "end");
  EXPECT_LT(residentMebibytes() - before, 64);
  EXPECT_EQ(Seek(written, (256 << 20) - 2, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(Read(written, 9), std::string("\0\0end", 5));
  EXPECT_EQ(Seek(written, 8, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(Read(written, 4), std::string("89\0\0", 4));
}
#endif

TEST_F(StreamTest, CopiesToAnotherStreamAndToItself) {
  ComPtr<IStream> target;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, 1, target.Place()), S_OK);
  auto const stream = OpenStream(STGM_READWRITE);
  EXPECT_EQ(Seek(stream, 2, STREAM_SEEK_SET), S_OK);
  ULARGE_INTEGER read = Wide(UINT64_MAX);
  ULARGE_INTEGER written = Wide(UINT64_MAX);
  EXPECT_EQ(stream->CopyTo(target.get(), Wide((uint64_t{7} << 32) + 3), &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 3U) << "the low half counts";
  EXPECT_EQ(written.QuadPart, 3U);
  EXPECT_EQ(Seek(stream, 20, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(Read(stream, 5), "") << "behind the end";
  EXPECT_EQ(stream->CopyTo(target.get(), Wide(5), &read, nullptr), S_OK);
  EXPECT_EQ(read.QuadPart, 0U);
  EXPECT_EQ(Seek(target, 0, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(Read(target, 20), "234");
  EXPECT_EQ(Seek(stream, 4, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(stream->CopyTo(stream.get(), Wide(4), nullptr, nullptr), S_OK);
  EXPECT_EQ(Stored(), "01234567");
}

TEST_F(StreamTest, AValueThatIsGoneTakesTheStreamWithIt) {
  auto const stream = OpenStream(STGM_READWRITE);
  GetUserPrefs()->RemoveValue(kSection, "v");
  ComPtr<IStream> clone;
  EXPECT_EQ(stream->Clone(clone.Place()), E_FAIL);
  EXPECT_EQ(stream->Revert(), E_FAIL);
  char byte = 0;
  HRESULT const results[] = {stream->Read(&byte, 1, nullptr),
                             stream->Write("a", 1, nullptr),
                             stream->SetSize(Wide(1)),
                             Seek(stream, 0, 0),
                             stream->Commit(0),
                             stream->CopyTo(stream.get(), Wide(1), nullptr, nullptr),
                             stream->Clone(clone.Place())};
  for (HRESULT const result : results) EXPECT_EQ(result, STG_E_REVERTED);
  EXPECT_EQ(Stored(), "-");
  Store("v", "back");
  EXPECT_EQ(stream->Revert(), S_OK);
  EXPECT_EQ(Read(stream, 20), "back");
}

TEST_F(StreamTest, OpensAnyTypeAlongTheChainAndWritesToItsStore) {
  Store("low", "system", GetSystemPrefs());
  EXPECT_EQ(Read(OpenStream(STGM_READ, "low"), 20), "system");
  Write(OpenStream(STGM_WRITE, "low"), "user");
  EXPECT_EQ(Stored("low"), "user");
  GetUserPrefs()->SetStr(kSection, "text", "abc");
  Write(OpenStream(STGM_WRITE, "text"), "xyz");
  EXPECT_EQ(Read(OpenStream(STGM_READ, "text"), 20), "xyz");
  EXPECT_EQ(testing::Read(UserPrefs(), "text"), "-") << "it is no text any more";
  Store("empty", "");
  Store("large", std::string(100000, 'l'));
  EXPECT_EQ(Read(OpenStream(STGM_READ, "empty"), 20), "");
  EXPECT_EQ(Read(OpenStream(STGM_READ, "large"), 200000), std::string(100000, 'l'));
}

TEST_F(StreamTest, RefusesNamesAndPlacesThatCannotBe) {
  std::string const longest(259, 'n');
  IStream *stream = nullptr;
  std::tuple<uint32_t, std::string, HRESULT> const cases[] = {
      {0x12345678, "v", E_FAIL},
      {kSection, "", E_FAIL},
      {kSection, longest, E_FAIL},
      {kSection, longest + 'n', STG_E_INVALIDNAME},
      {kSection, std::string(10000, 'n'), STG_E_INVALIDNAME}};
  for (auto const &[section, name, result] : cases) {
    EXPECT_EQ(GetUserPrefs()->GetStream(section, name.c_str(), &stream, 0), result);
    EXPECT_EQ(stream, nullptr);
  }
  Store(longest.c_str(), "long");
  EXPECT_EQ(Read(OpenStream(0, longest.c_str()), 9), "long");
}

TEST_F(StreamTest, AnswersNullAndOtherInterfaces) {
  auto const stream = OpenStream(STGM_READWRITE);
  HRESULT const results[] = {stream->Read(nullptr, 1, nullptr), stream->Write(nullptr, 1, nullptr),
                             stream->CopyTo(nullptr, Wide(1), nullptr, nullptr),
                             stream->Clone(nullptr)};
  for (HRESULT const result : results) EXPECT_EQ(result, STG_E_INVALIDPOINTER);
  EXPECT_EQ(GetUserPrefs()->GetStream(kSection, "v", nullptr, 0), E_INVALIDARG);
  void *out = &out;
  EXPECT_EQ(stream->QueryInterface(IID_ISequentialStream, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
}

TEST_F(StreamTest, KeepsTheLibraryUp) {
  auto stream = OpenStream(STGM_READWRITE);
  server_.reset();
  EXPECT_EQ(ServerReferences(), 1);
  Write(stream, "kept");
  EXPECT_EQ(Stored(), "kept");
  stream.Reset();
  EXPECT_EQ(ServerReferences(), 0);
}

// Another process changes the size all the time; the sanitizers see what is overrun.
TEST_F(StreamTest, AValueThatGrowsMeanwhileIsReadWhole) {
  Child writer([](Child::Pipe &pipe) {
    pipe.Say("ready");
    for (int i = 0; i < 300; i++) Store("v", std::string(static_cast<size_t>(i * 97 % 3000), 'v'));
    return 0;
  });
  ASSERT_EQ(writer.pipe().Hear(), "ready");
  for (int i = 0; i < 300; i++) {
    std::string const bytes = Read(OpenStream(STGM_READ), 4000);
    ASSERT_EQ(bytes.find_first_not_of(bytes == kTen ? kTen : "v"), std::string::npos);
  }
  EXPECT_EQ(writer.Wait(), 0);
}

}  // namespace
}  // namespace zolt::testing
