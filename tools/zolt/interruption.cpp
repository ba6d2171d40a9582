#include "tools/zolt/interruption.h"

#include <fcntl.h>
#include <limits.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zolt::tool {

namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Read by the handler, in which nothing may be done but plain calls of the system.
char folder[PATH_MAX];
std::atomic<bool> folderIsThere{false};
std::atomic<bool> lineIsDrawn{false};

// A record as getdents64 gives it.
struct Entry {
  uint64_t number;
  int64_t offset;
  uint16_t size;
  unsigned char type;
  char name[1];
};

void RemoveFolder() {
  int const opened = open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (opened < 0) return;
  alignas(Entry) char entries[4096];
  for (;;) {
    long const size = syscall(SYS_getdents64, opened, entries, sizeof entries);
    if (size <= 0) break;
    for (long at = 0; at < size;) {
      auto const *entry = reinterpret_cast<Entry const *>(entries + at);
      unlinkat(opened, entry->name, 0);
      at += entry->size;
    }
  }
  close(opened);
  rmdir(folder);
}

void End(int number) {
  int const before = errno;
  if (folderIsThere) RemoveFolder();
  constexpr char kClear[] = "\r\033[K";
  if (lineIsDrawn) {
    [[maybe_unused]] ssize_t const written = write(STDERR_FILENO, kClear, sizeof kClear - 1);
  }
  signal(number, SIG_DFL);
  errno = before;
  raise(number);
}

// A signal that is ignored stays so, as nohup wants it.
void Install() {
  static bool installed = false;
  if (installed) return;
  installed = true;
  for (int const number : kSignals) {
    struct sigaction old {};
    if (sigaction(number, nullptr, &old) != 0 || old.sa_handler != SIG_DFL) continue;
    struct sigaction action {};
    action.sa_handler = End;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
    sigaction(number, &action, nullptr);
  }
}

}  // namespace

void RemoveWhenInterrupted(std::string const &path) {
  folderIsThere = false;
  if (path.empty() || path.size() >= sizeof folder) return;
  std::memcpy(folder, path.c_str(), path.size() + 1);
  folderIsThere = true;
  Install();
}

void ClearLineWhenInterrupted(bool drawn) {
  lineIsDrawn = drawn;
  if (drawn) Install();
}

}  // namespace zolt::tool
