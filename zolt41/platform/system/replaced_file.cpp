#include "zolt41/platform/system/replaced_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

namespace zolt {
namespace {

constexpr char kAccessList[] = "system.posix_acl_access";

// A new file has one from a folder with a default list, and a mode would open it.
bool RemoveAccessList(int descriptor) {
  return fremovexattr(descriptor, kAccessList) == 0 || errno == ENODATA || errno == EOPNOTSUPP;
}

}  // namespace

std::string PathOf(int descriptor) {
  char path[PATH_MAX];
  std::string const link = "/proc/self/fd/" + std::to_string(descriptor);
  ssize_t const length = readlink(link.c_str(), path, sizeof path);
  return length <= 0 ? "" : std::string(path, static_cast<size_t>(length));
}

std::string DirectoryOf(std::string const &path) {
  size_t const slash = path.rfind('/');
  return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

std::string NameOf(std::string const &path) {
  return path.substr(path.rfind('/') + 1);
}

std::string HiddenBeside(std::string const &path, std::string const &ending, size_t room) {
  std::string name = NameOf(path);
  size_t const most = NAME_MAX - 1 - ending.size() - room;
  if (name.size() > most) {
    size_t end = most;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) end--;
    name.resize(end);
  }
  return DirectoryOf(path) + "." + name + ending;
}

bool CanBeReplaced(int descriptor, struct stat *status) {
  return fstat(descriptor, status) == 0 && status->st_uid == geteuid() && status->st_nlink == 1 &&
         fgetxattr(descriptor, kAccessList, nullptr, 0) <= 0;
}

bool MakeLike(int descriptor, struct stat const &old) {
  return RemoveAccessList(descriptor) &&
         fchown(descriptor, static_cast<uid_t>(-1), old.st_gid) == 0 &&
         fchmod(descriptor, old.st_mode & 07777) == 0;
}

void SyncDirectoryOf(std::string const &path) {
  int const directory = open(DirectoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (directory < 0) return;
  // Not fdatasync: a name that takes another one's place need not change the directory's size, and
  // then is no data of it to some file systems.
  fsync(directory);
  close(directory);
}

}  // namespace zolt
