#include "zolt41/platform/system/machine_id.h"

#include <pwd.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "zolt41/platform/system/system_path.h"

namespace {

std::string UserName() {
  long const usual = sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(static_cast<size_t>(std::max(usual, 16384L)));
  passwd entry{};
  passwd *found = nullptr;
  getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found);
  return found == nullptr ? std::to_string(geteuid()) : found->pw_name;
}

void Store(uint32_t *place, uint64_t value) {
  if (place != nullptr) *place = static_cast<uint32_t>(value);
}

}  // namespace

uint32_t GetTickCount() {
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return static_cast<uint32_t>(time.tv_sec * 1000 + time.tv_nsec / 1000000);
}

int32_t GetUserNameA(char *buffer, uint32_t *size) {
  if (buffer == nullptr || size == nullptr || *size == 0) return 0;
  std::string const name = UserName().substr(0, *size - 1);
  std::memcpy(buffer, name.c_str(), name.size() + 1);
  *size = static_cast<uint32_t>(name.size() + 1);
  return 1;
}

int32_t GetDiskFreeSpaceA(char const *root, uint32_t *sectorsPerCluster, uint32_t *bytesPerSector,
                          uint32_t *freeClusters, uint32_t *clusters) {
  struct statvfs status {};
  std::string const path = root == nullptr ? "." : zolt::SystemPath(root);
  if (statvfs(path.c_str(), &status) != 0) return 0;
  Store(sectorsPerCluster, 1);
  Store(bytesPerSector, status.f_frsize);
  Store(freeClusters, status.f_bavail);
  Store(clusters, status.f_blocks);
  return 1;
}
