#include "zolt41/platform/system/temp_path.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "zolt41/platform/system/last_failure.h"

namespace {

std::string SystemDirectory() {
  for (char const *const name : {"XDG_RUNTIME_DIR", "TMPDIR"}) {
    char const *const value = secure_getenv(name);
    if (value != nullptr && *value == '/') return value;
  }
  return "/tmp";
}

// A directory, and no link to one, that only this user can use.
bool IsOurs(std::string const &path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return false;
  errno = EACCES;
  return S_ISDIR(status.st_mode) && status.st_uid == geteuid() && (status.st_mode & 077) == 0;
}

}  // namespace

uint32_t GetTempPathA(uint32_t size, char *buffer) {
  std::string path = SystemDirectory() + "/zolt41-" + std::to_string(geteuid());
  bool const made = mkdir(path.c_str(), 0700) == 0;
  if ((!made && errno != EEXIST) || !IsOurs(path)) {
    zolt::SetFailure(zolt::FailureFromErrno(errno), path);
    return 0;
  }
  path += '/';
  if (path.size() >= size) {
    zolt::SetFailure(zolt::Failure::io, path);
    return 0;
  }
  std::memcpy(buffer, path.c_str(), path.size() + 1);
  return static_cast<uint32_t>(path.size());
}
