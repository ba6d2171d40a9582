#include <gtest/gtest.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "tests/support/child.h"
#include "tests/support/temp_home.h"
#include "zolt41/zolt41.h"

namespace {

std::atomic<int> allocations{0};

void *Allocate(std::size_t size) {
  allocations++;
  void *memory = std::malloc(size);
  if (memory == nullptr) std::abort();
  return memory;
}

}  // namespace

void *operator new(std::size_t size) {
  return Allocate(size);
}
void *operator new[](std::size_t size) {
  return Allocate(size);
}
void operator delete(void *memory) noexcept {
  std::free(memory);
}
void operator delete[](void *memory) noexcept {
  std::free(memory);
}
void operator delete(void *memory, std::size_t) noexcept {
  std::free(memory);
}
void operator delete[](void *memory, std::size_t) noexcept {
  std::free(memory);
}

namespace {

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
  zolt::testing::TempHome home;
  zolt::testing::Child reader([](zolt::testing::Child::Pipe &) {
    InitZOLT();
    InitPrefs(nullptr);
    UserPrefs()->WriteStr(kAudio, "Device", "speaker", PrefLevelUser);
    UserPrefs()->WriteNum(kAudio, "Volume", 70, PrefLevelSystem);
    UserPrefs()->WriteBool(kAudio, "Mute", 1, PrefLevelUser);
    if (!ReadAll()) return 1;
    int const before = allocations;
    // From here on any system call but exit ends the process.
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_STRICT);
    bool good = true;
    for (int i = 0; i < 1000; i++) good = good && ReadAll();
    good = good && allocations == before;
    syscall(SYS_exit, good ? 0 : 2);
    return 3;
  });
  EXPECT_EQ(reader.Wait(), 0);
}

}  // namespace
