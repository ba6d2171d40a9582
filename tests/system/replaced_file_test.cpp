#include "zolt41/platform/system/replaced_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>

#include "tests/support/files.h"
#include "zolt41/platform/system/file_replacement.h"

namespace zolt::testing {
namespace {

// A list that lets one more user read and write: version 2, and by tag, rights and id the owner,
// that user, the group, the mask, and the others.
constexpr unsigned char kList[] = {2,    0, 0, 0,                          //
                                   0x01, 0, 6, 0, 0xFF, 0xFF, 0xFF, 0xFF,  //
                                   0x02, 0, 6, 0, 0xFE, 0xFF, 0,    0,     //
                                   0x04, 0, 6, 0, 0xFF, 0xFF, 0xFF, 0xFF,  //
                                   0x10, 0, 6, 0, 0xFF, 0xFF, 0xFF, 0xFF,  //
                                   0x20, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF};

class ReplacedFileTest : public FileTest {
 protected:
  static bool HasList(std::string const &path) {
    return getxattr(path.c_str(), "system.posix_acl_access", nullptr, 0) > 0;
  }
};

// A file that was moved into a folder with a default list, or made before the folder had one.
TEST_F(ReplacedFileTest, TheNewFileGivesNobodyMoreThanTheOldOne) {
  WriteContent(Path("f"), "old");
  ASSERT_EQ(chmod(Path("f").c_str(), 0660), 0);
  if (setxattr(home_.path().c_str(), "system.posix_acl_default", kList, sizeof kList, 0) != 0) {
    ASSERT_EQ(errno, EOPNOTSUPP);
    return;  // nor does any file here have a list
  }
  WriteContent(Path("other"), "");
  ASSERT_TRUE(HasList(Path("other"))) << "new files have one";
  {
    FileReplacement file(Path("f").c_str());
    file.Write("new");
    EXPECT_TRUE(file.Commit());
  }
  EXPECT_EQ(ContentOf(Path("f")), "new");
  EXPECT_FALSE(HasList(Path("f")));
  struct stat status {};
  stat(Path("f").c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777U, 0660U);
}

}  // namespace
}  // namespace zolt::testing
