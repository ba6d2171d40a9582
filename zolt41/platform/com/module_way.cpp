#include "zolt41/platform/com/module_way.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace zolt {
namespace {

constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;
constexpr int kMostLinks = 40;  // as the system follows them

bool IsOurs(struct stat const &status) {
  return status.st_uid == 0 || status.st_uid == geteuid();
}

bool IsSafeFolder(struct stat const &status) {
  return IsOurs(status) &&
         ((status.st_mode & kOthersWrite) == 0 || (status.st_mode & S_ISVTX) != 0);
}

bool IsSafeFile(struct stat const &status) {
  return IsOurs(status) && S_ISREG(status.st_mode) && (status.st_mode & kOthersWrite) == 0;
}

// Where a path has come to, without links, and the names that are left of it.
struct Way {
  std::string place;
  std::string rest;
  bool isAtFile = false;
  int links = 0;

  // The next name; empty at the end.
  std::string Next() {
    rest.erase(0, rest.find_first_not_of('/'));
    std::string name = rest.substr(0, rest.find('/'));
    rest.erase(0, name.size());
    return name;
  }

  // Only its owner can change a link, or the folder's.
  HRESULT Through(std::string const &link) {
    char target[PATH_MAX];
    ssize_t const length = readlink(link.c_str(), target, sizeof target);
    if (length <= 0 || ++links > kMostLinks) return CO_E_DLLNOTFOUND;
    rest.insert(0, std::string(target, static_cast<size_t>(length)) + "/");
    if (rest.front() == '/') place.clear();
    return S_OK;
  }

  HRESULT Enter(std::string const &name) {
    std::string const next = place + "/" + name;
    struct stat status = {};
    if (lstat(next.c_str(), &status) != 0) return CO_E_DLLNOTFOUND;
    if (S_ISLNK(status.st_mode) && IsOurs(status)) return Through(next);
    place = next;
    isAtFile = !S_ISDIR(status.st_mode);
    return (isAtFile ? IsSafeFile(status) : IsSafeFolder(status)) ? S_OK : E_ACCESSDENIED;
  }

  HRESULT Step(std::string const &name) {
    if (isAtFile) return CO_E_DLLNOTFOUND;
    if (name == "..") place.erase(std::min(place.rfind('/'), place.size()));
    return name == "." || name == ".." ? S_OK : Enter(name);
  }
};

bool IsRootSafe() {
  struct stat status = {};
  return lstat("/", &status) == 0 && IsSafeFolder(status);
}

}  // namespace

HRESULT FollowModulePath(std::string const &path, std::string *place) {
  *place = path;
  if (path.empty() || path.front() != '/') return E_ACCESSDENIED;
  *place = "/";
  if (!IsRootSafe()) return E_ACCESSDENIED;
  Way way{.place = "", .rest = path};
  HRESULT result = S_OK;
  for (std::string name = way.Next(); result == S_OK && !name.empty(); name = way.Next()) {
    result = way.Step(name);
  }
  if (result == S_OK && !way.isAtFile) result = E_ACCESSDENIED;
  *place = way.place;
  return result;
}

}  // namespace zolt
