#include "zolt41/platform/system/home.h"

#include <pwd.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace zolt {
namespace {

constexpr char kMachineHome[] = "/var/lib/zolt41";

std::string Environment(char const *name) {
  char const *value = secure_getenv(name);
  return value == nullptr ? "" : value;
}

std::string Absolute(std::string const &path) {
  std::error_code failed;
  auto absolute = std::filesystem::absolute(path, failed);
  return failed ? path : absolute.lexically_normal().string();
}

std::string WithoutLastSlash(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::string DataDirectory() {
  // A relative path in XDG_DATA_HOME is to be ignored, as the XDG base directory rules say.
  std::string xdg = Environment("XDG_DATA_HOME");
  if (!xdg.empty() && xdg.front() == '/') return xdg;
  std::string home = Environment("HOME");
  if (home.empty()) {
    passwd const *entry = getpwuid(geteuid());
    home = entry != nullptr ? entry->pw_dir : "/";
  }
  return home + "/.local/share";
}

}  // namespace

Homes ResolveHomes() {
  std::string const chosen = Environment("ZOLT_HOME");
  if (!chosen.empty()) {
    std::string const user = WithoutLastSlash(Absolute(chosen));
    return {user, user + "/machine", false};
  }
  return {WithoutLastSlash(Absolute(DataDirectory() + "/zolt41")), kMachineHome, true};
}

void GiveToOwnerOfParent(std::string const &path) {
  if (geteuid() != 0) return;
  struct stat parent {};
  std::string const directory = std::filesystem::path(path).parent_path();
  if (stat(directory.c_str(), &parent) != 0 || parent.st_uid == 0) return;
  // A failure leaves the file with us; the owner is then refused, and told so.
  [[maybe_unused]] int const given = lchown(path.c_str(), parent.st_uid, parent.st_gid);
}

Failure EnsureDirectory(std::string const &path, bool isPublic) {
  struct stat found {};
  if (stat(path.c_str(), &found) == 0) {
    if (S_ISDIR(found.st_mode)) return Failure::none;
    SetFailure(Failure::io, path);
    return Failure::io;
  }
  std::string const parent = std::filesystem::path(path).parent_path();
  if (!parent.empty() && parent != path) {
    if (Failure failure = EnsureDirectory(parent, isPublic); failure != Failure::none) {
      return failure;
    }
  }
  if (mkdir(path.c_str(), 0700) == 0) {
    if (isPublic) chmod(path.c_str(), 0755);
    GiveToOwnerOfParent(path);
    return Failure::none;
  }
  if (errno == EEXIST) return Failure::none;
  Failure const failure = FailureFromErrno(errno);
  SetFailure(failure, path);
  return failure;
}

}  // namespace zolt
