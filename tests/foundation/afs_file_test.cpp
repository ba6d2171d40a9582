#include "zolt41/foundation/afs_file.h"

#include <sys/stat.h>

#include "tests/support/child.h"
#include "tests/support/files.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt::testing {
namespace {

constexpr uint32_t kNoFile = 0xFFFFFFFF;

class AfsFileTest : public FileTest {
 protected:
  std::string Make(char const *name, std::string const &content) const {
    WriteContent(Path(name), content);
    return Path(name);
  }
  static uint32_t Open(std::string const &path, int32_t mode) {
    uint32_t file = kNoFile;
    EXPECT_EQ(AFS_LZOpenFile(path.c_str(), mode, &file), 0);
    return file;
  }
};

TEST_F(AfsFileTest, MakingAndOpening) {
  std::string const path = Path("new");
  uint32_t file = 77;
  EXPECT_EQ(AFS_LZOpenFile(path.c_str(), 1, &file), -8991);
  EXPECT_EQ(file, 77U);
  EXPECT_EQ(AFS_LZCreateFile(path.c_str(), 0, 0x52444558), 0);
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
  std::string const full = Make("full", "kept");
  EXPECT_EQ(AFS_LZCreateFile(full.c_str(), 0, 0), -8990);
  EXPECT_EQ(ContentOf(full), "kept");
  std::filesystem::create_directory(Path("folder"));
  ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
  for (std::string const &name : {Path("folder"), Path("pipe"), std::string("/dev/full")})
    for (int32_t const mode : {1, 2, 3})
      EXPECT_EQ(AFS_LZOpenFile(name.c_str(), mode, &file), -8991) << name;
  EXPECT_EQ(AFS_LZOpenFile(nullptr, 1, &file), -8991);
  EXPECT_EQ(AFS_LZCreateFile((Path("none") + "/x").c_str(), 0, 0), -8990);
}

TEST_F(AfsFileTest, ReadsWritesAndPositions) {
  std::string const path = Make("f", "0123456789abcd");
  uint32_t const file = Open(path, 3);
  EXPECT_GE(file, 1U);
  EXPECT_EQ(AFS_SetFPos(file, 10, 1), 0);
  char buffer[16] = "";
  uint32_t count = 10;
  EXPECT_EQ(AFS_Read(file, &count, buffer), -8995);
  EXPECT_EQ(count, 4U);
  count = 0;
  EXPECT_EQ(AFS_Read(file, &count, buffer), 0);
  EXPECT_EQ(AFS_SetFPos(file, -12, 2), 0);
  EXPECT_EQ(AFS_GetFPos(file), 2);
  EXPECT_EQ(AFS_SetFPos(file, 3, 0x103), 0);
  EXPECT_EQ(AFS_GetFPos(file), 5);
  for (int32_t const origin : {0, 4, -1}) EXPECT_EQ(AFS_SetFPos(file, 1, origin), -8997);
  EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 0);
  EXPECT_EQ(AFS_SetFPos(file, -1, 1), -1);
  EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 6);
  EXPECT_EQ(AFS_GetFPos(file), 5);
  EXPECT_EQ(AFS_GetEOF(file), 14);
  EXPECT_EQ(AFS_GetFPos(file), 5);
  count = 2;
  EXPECT_EQ(AFS_Write(file, &count, "XY"), 0);
  EXPECT_EQ(AFS_CloseFile(file), 0);
  EXPECT_EQ(ContentOf(path), "01234XY789abcd");
  count = 1;
  EXPECT_EQ(AFS_Read(file, &count, buffer), -1) << "a number is not given out again";
}

TEST_F(AfsFileTest, CuttingAndExtending) {
  uint32_t const file = Open(Make("f", std::string(150, 'x')), 3);
  AFS_SetFPos(file, 40, 1);
  EXPECT_EQ(AFS_SetEOF(file, 100), 0);
  EXPECT_EQ(AFS_GetFPos(file), 40);
  EXPECT_EQ(AFS_SetEOF(file, 300), 0);
  AFS_SetFPos(file, 200, 1);
  EXPECT_EQ(AFS_SetEOF(file, 100), 0);
  EXPECT_EQ(AFS_GetFPos(file), 100);
  EXPECT_EQ(AFS_SetEOF(file, -1), -1);
  EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 6);
  EXPECT_EQ(AFS_SetEOF(file, 0), 0);
  EXPECT_EQ(AFS_SetFPos(file, 0x7FFFFFFF, 1), 0);
  uint32_t count = 10;
  EXPECT_EQ(AFS_Write(file, &count, "0123456789"), -1) << "beyond the last position";
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(AFS_GetEOF(file), 0);
  AFS_CloseFile(file);
}

TEST_F(AfsFileTest, NoFile) {
  uint32_t count = 9;
  char byte = 0;
  EXPECT_EQ(AFS_CloseFile(kNoFile), -8993);
  for (int32_t const result :
       {AFS_Read(kNoFile, &count, &byte), AFS_Write(kNoFile, &count, &byte), AFS_GetFPos(kNoFile),
        AFS_SetFPos(kNoFile, 0, 9), AFS_GetEOF(kNoFile), AFS_SetEOF(kNoFile, 0)}) {
    EXPECT_EQ(result, -8999);
  }
  EXPECT_EQ(count, 9U);
  AFS_FlushFile(kNoFile);
}

TEST_F(AfsFileTest, OnlyReadersShareAFileInAProcessAndBetweenTwo) {
  std::string const path = Make("f", "x");
  for (int32_t const first : {1, 2, 3}) {
    uint32_t const file = Open(path, first);
    for (int32_t const second : {1, 2, 3}) {
      int32_t const expected = first == 1 && second == 1 ? 0 : -8991;
      auto const open = [&] {
        uint32_t other = kNoFile;
        int32_t const result = AFS_LZOpenFile(path.c_str(), second, &other);
        if (result == 0) AFS_CloseFile(other);
        return result;
      };
      EXPECT_EQ(open(), expected) << first << second;
      EXPECT_TRUE(HoldsInChild([&] { return open() == expected; })) << first << second;
    }
    AFS_CloseFile(file);
  }
}

TEST_F(AfsFileTest, NamesAreUtf8OrLocalText) {
  Make("\u00FC", "u");
  Make("\u0416", "zh");
  for (char const *name : {"\xC3\xBC", "\xFC", "\xD0\x96"}) AFS_CloseFile(Open(Path(name), 1));
}

}  // namespace
}  // namespace zolt::testing
