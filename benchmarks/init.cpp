// A program that starts the library and stops it. With the argument "files" it lists, between the
// two, the files of shared memory that the library has mapped.

#include <cstdio>
#include <cstring>

#include "zolt41/zolt41.h"

namespace {

void ListSharedMemory() {
  std::FILE *maps = std::fopen("/proc/self/maps", "r");
  char line[4096];
  while (maps != nullptr && std::fgets(line, sizeof line, maps) != nullptr) {
    char const *file = std::strstr(line, "/dev/shm/zolt41-");
    if (file != nullptr) std::fputs(file, stdout);
  }
  if (maps != nullptr) std::fclose(maps);
}

}  // namespace

int main(int count, char **arguments) {
  InitZOLT();
  InitPrefs(nullptr);
  bool const open = UserPrefs() != nullptr;
  if (count > 1 && std::strcmp(arguments[1], "files") == 0) ListSharedMemory();
  DisposeZOLT();
  return open ? 0 : 1;
}
