#include "zolt41/platform/registry/hive_file.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "zolt41/platform/system/home.h"

namespace zolt {
namespace {

// Magics of network file systems; those that linux/magic.h lacks stand as numbers.
constexpr uint32_t kNetworkFileSystems[] = {
    NFS_SUPER_MAGIC, SMB_SUPER_MAGIC, CODA_SUPER_MAGIC, AFS_SUPER_MAGIC,
    NCP_SUPER_MAGIC, V9FS_MAGIC,      CEPH_SUPER_MAGIC, 0xFF534D42,
    0xFE534D42,      0x0BD00BD0,      0x01161970,
};

Failure Refuse(Failure failure, std::string const &path) {
  SetFailure(failure, path);
  return failure;
}

Failure CheckFileSystem(std::string const &path) {
  struct statfs found {};
  if (statfs(path.c_str(), &found) != 0) return Failure::none;
  auto const magic = static_cast<uint32_t>(found.f_type);
  bool const network =
      std::ranges::find(kNetworkFileSystems, magic) != std::end(kNetworkFileSystems);
  return network ? Refuse(Failure::io, path) : Failure::none;
}

}  // namespace

std::string ResolveHivePath(std::string const &path) {
  std::error_code failed;
  auto resolved = std::filesystem::canonical(path, failed);
  if (!failed) return resolved.string();
  auto const name = std::filesystem::path(path);
  auto directory = std::filesystem::canonical(name.parent_path(), failed);
  return failed ? path : (directory / name.filename()).string();
}

Failure InspectHive(std::string const &path, HiveAccess *access) {
  std::string const directory = std::filesystem::path(path).parent_path();
  if (Failure failure = CheckFileSystem(directory); failure != Failure::none) return failure;
  struct stat found {};
  *access = HiveAccess::missing;
  if (lstat(path.c_str(), &found) != 0) {
    return errno == ENOENT ? Failure::none : Refuse(FailureFromErrno(errno), path);
  }
  bool const trusted = found.st_uid == geteuid() || found.st_uid == 0 || geteuid() == 0;
  if (!S_ISREG(found.st_mode) || !trusted) return Refuse(Failure::denied, path);
  // Journal and log are made beside the file, so the directory must be writable as well.
  if (eaccess(path.c_str(), W_OK) == 0 && eaccess(directory.c_str(), W_OK) == 0) {
    *access = HiveAccess::writable;
  } else if (found.st_size > 0) {
    if (eaccess(path.c_str(), R_OK) != 0) return Refuse(Failure::denied, path);
    *access = HiveAccess::readable;
  }
  return Failure::none;
}

Failure MakeHiveFile(std::string const &path, uint32_t mode) {
  int const file = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
  if (file < 0) return errno == EEXIST ? Failure::none : Refuse(FailureFromErrno(errno), path);
  // The mode asked for, whatever the process masks.
  fchmod(file, mode);
  close(file);
  GiveToOwnerOfParent(path);
  return Failure::none;
}

Generation::Identity HiveIdentity(std::string const &path) {
  Generation::Identity identity{};
  struct stat found {};
  if (stat(path.c_str(), &found) == 0) {
    identity.device = found.st_dev;
    identity.inode = found.st_ino;
  }
  if (stat((path + "-wal").c_str(), &found) == 0) identity.log = found.st_ino;
  return identity;
}

void RemoveStaleLog(std::string const &path) {
  unlink((path + "-wal").c_str());
  unlink((path + "-shm").c_str());
}

uint64_t LogSize(std::string const &path) {
  struct stat found {};
  return stat((path + "-wal").c_str(), &found) == 0 ? static_cast<uint64_t>(found.st_size) : 0;
}

}  // namespace zolt
