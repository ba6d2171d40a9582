#include "zolt41/platform/desktop/message_box.h"

#include "tests/services/stand_in.h"
#include "tests/support/child.h"

namespace zolt::testing {
namespace {

class MessageBoxTest : public StandInTest {
 protected:
  ~MessageBoxTest() override { unsetenv("DISPLAY"); }

  static std::string Errors() {
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(MessageBoxA(0, "Gr\xFC\xDF", "a", 0), 1);
    return ::testing::internal::GetCapturedStderr();
  }
};

TEST_F(MessageBoxTest, WhereNoHelperShowsItItIsALine) {
  setenv("DISPLAY", ":none", 1);
  std::string const line = "a: Gr\u00FC\u00DF\n";
  EXPECT_EQ(Errors(), line) << "no helper";
  for (auto const &[helper, last, errors] : {std::tuple("xmessage", "exit 1", line),
                                             {"kdialog", "kill -9 $$", line},
                                             {"zenity", "", std::string()}}) {
    StandIn(helper, last);
    EXPECT_EQ(Errors(), errors) << helper;
  }
  EXPECT_EQ(Heard("zenity"), "<--info><--no-markup><--title=a><--text=Gr\u00FC\u00DF>\n");
}

TEST_F(MessageBoxTest, AnErrorOutputThatTakesNothingIsNoHarm) {
  for (bool const full : {false, true}) {
    Child child([full](Child::Pipe &) {
      int ends[2];
      if (pipe2(ends, O_NONBLOCK) != 0) return 2;
      while (full && write(ends[1], "x", 1) == 1) continue;
      fcntl(ends[1], F_SETFL, 0);
      dup2(ends[1], STDERR_FILENO);
      if (!full) close(ends[0]);
      return MessageBoxA(0, "text", nullptr, 0) == 1 ? 0 : 1;
    });
    EXPECT_EQ(child.Wait(), 0) << full;
  }
}

}  // namespace
}  // namespace zolt::testing
