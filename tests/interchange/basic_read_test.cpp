#include "zolt41/interchange/basic_read.h"

#include "tests/interchange/interchange_fixture.h"

namespace zolt::testing {
namespace {

std::string AllOf(FBasicRead *reader) {
  std::string bytes;
  for (char byte = reader->GetByte(); byte != '\0'; byte = reader->GetByte()) bytes += byte;
  EXPECT_EQ(reader->GetByte(), '\0');
  EXPECT_EQ(reader->AtEnd(), 1);
  return bytes;
}

class BasicReadTest : public InterchangeTest {
 protected:
  // The same from memory and from a file.
  std::string Read(std::string const &text) const {
    FMemoryRead memory(text.data(), static_cast<int32_t>(text.size()));
    WriteContent(Path("source"), text);
    FFileRead file(Path("source").c_str());
    std::string const bytes = AllOf(&memory);
    EXPECT_EQ(AllOf(&file), bytes);
    return bytes;
  }
};

TEST_F(BasicReadTest, EveryLineEndIsCrLf) {
  EXPECT_EQ(Read(""), "");
  for (char const *const end : {"\n", "\r", "\r\n"}) {
    std::string const line = std::string("a\xE9") + end;
    EXPECT_EQ(Read(line + end + "b" + end), "a\xE9\r\n\r\nb\r\n");
  }
  EXPECT_EQ(Read("\n\r"), "\r\n\r\n");
}

TEST_F(BasicReadTest, BlocksOfAFile) {
  std::string const block(4094, 'x');
  for (char const *const end : {"", "1", "12", "1\r", "1\r\n", "1\n", "12\n", "12\r\n3"}) {
    std::string expected = block;
    for (char const *c = end; *c != '\0'; c++) {
      if (*c == '\n' && c[-1] == '\r') continue;
      *c == '\n' || *c == '\r' ? expected += "\r\n" : expected += *c;
    }
    EXPECT_EQ(Read(block + end), expected);
    EXPECT_EQ(Read(block + "xx" + block + end), block + "xx" + expected);
  }
}

TEST_F(BasicReadTest, APushedBackByteComesFirst) {
  FMemoryRead reader("\nb", 2);
  EXPECT_EQ(reader.GetByte(), '\r');
  reader.PushBack('x');
  EXPECT_EQ(reader.GetByte(), 'x');
  EXPECT_EQ(reader.GetByte(), '\n');
  FMemoryRead none(nullptr, 7);
  EXPECT_EQ(none.AtEnd(), 1);
  FMemoryRead negative("x", -1);
  EXPECT_EQ(negative.AtEnd(), 1);
  EXPECT_EQ(FFileRead(Path("none").c_str()).AtEnd(), 1);
}

}  // namespace
}  // namespace zolt::testing
