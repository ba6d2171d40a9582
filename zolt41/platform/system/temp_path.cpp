#include "zolt41/platform/system/temp_path.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>

#include "zolt41/platform/system/last_failure.h"

namespace {

// A directory, and no link to one, that only this user can use.
bool IsOurs(std::string const &path) {
  struct stat status {};
  if (lstat(path.c_str(), &status) != 0) return false;
  errno = EACCES;
  return S_ISDIR(status.st_mode) && status.st_uid == geteuid() && (status.st_mode & 077) == 0 &&
         access(path.c_str(), W_OK | X_OK) == 0;
}

// The user's own directory in that one, or "" with the failure told.
std::string OwnIn(std::string const &directory, uint32_t size) {
  std::string path = directory + "/zolt41-" + std::to_string(geteuid());
  if (path.size() + 1 >= size) {
    zolt::SetFailure(zolt::Failure::io, path);
    return "";
  }
  bool const made = mkdir(path.c_str(), 0700) == 0;
  if ((made || errno == EEXIST) && IsOurs(path)) return path += '/';
  zolt::SetFailure(zolt::FailureFromErrno(errno), path);
  return "";
}

}  // namespace

uint32_t GetTempPathA(uint32_t size, char *buffer) {
  for (char const *const directory : {static_cast<char const *>(secure_getenv("XDG_RUNTIME_DIR")),
                                      static_cast<char const *>(secure_getenv("TMPDIR")), "/tmp"}) {
    if (directory == nullptr || *directory != '/') continue;
    std::string const path = OwnIn(directory, size);
    if (path.empty()) continue;
    zolt::ClearFailure();
    std::memcpy(buffer, path.c_str(), path.size() + 1);
    return static_cast<uint32_t>(path.size());
  }
  return 0;
}
