#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>

#include <cstddef>
#include <cstring>

#include "tests/support/child.h"
#include "tests/support/failing_memory.h"
#include "tests/support/temp_home.h"
#include "zolt41/zolt41.h"

namespace zolt::testing {
namespace {

// From here on any system call of this thread but the end of the process ends it with a signal.
void ForbidSystemCalls() {
  std::array<sock_filter, 4> program = {{
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
  }};
  sock_fprog const filter{program.size(), program.data()};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  if (prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) _exit(90);
}

constexpr uint32_t kAudio = 0x41554449;

// Reads of every kind, all of which were read before.
bool ReadAll() {
  char text[256];
  int32_t number = 0;
  int32_t flag = 0;
  return UserPrefs()->ReadStr(kAudio, "Device", text, "", 0) == 1 &&
         std::strcmp(text, "speaker") == 0 &&
         UserPrefs()->ReadNum(kAudio, "Volume", &number, 0, 0) == 1 && number == 70 &&
         UserPrefs()->ReadBool(kAudio, "Mute", &flag, 0, 0) == 1 && flag == 1 &&
         UserPrefs()->ReadStr(kAudio, "Nowhere", text, "default", 0) == 0 &&
         std::strcmp(text, "default") == 0;
}

TEST(HotPath, ACachedReadMakesNoSystemCallAndTakesNoMemory) {
  TempHome home;
  Child reader([](Child::Pipe &) {
    InitZOLT();
    InitPrefs(nullptr);
    UserPrefs()->WriteStr(kAudio, "Device", "speaker", PrefLevelUser);
    UserPrefs()->WriteNum(kAudio, "Volume", 70, PrefLevelSystem);
    UserPrefs()->WriteBool(kAudio, "Mute", 1, PrefLevelUser);
    if (!ReadAll()) return 1;
    ForbidSystemCalls();
    bool good = true;
    allocationsLeft = 1000;
    for (int i = 0; i < 1000; i++) good = good && ReadAll();
    good = good && allocationsLeft == 1000;
    syscall(SYS_exit_group, good ? 0 : 2);
    return 3;
  });
  EXPECT_EQ(reader.Wait(), 0);
}

}  // namespace
}  // namespace zolt::testing
