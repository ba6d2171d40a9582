#include "zolt41/platform/system/file_beside.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "zolt41/platform/system/file.h"
#include "zolt41/platform/system/file_calls.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/replaced_file.h"

namespace zolt {
namespace {

constexpr uint32_t kNoFile = INVALID_HANDLE_VALUE;
constexpr char kEnding[] = ".zolt-new";

std::string NewNameOf(std::string const &path) {
  return HiddenBeside(path, kEnding);
}

// It was not moved or removed since it was opened.
bool StandsAt(std::string const &path, struct stat const &opened) {
  struct stat named {};
  return stat(path.c_str(), &named) == 0 && opened.st_ino == named.st_ino &&
         opened.st_dev == named.st_dev;
}

}  // namespace

uint32_t CreateFileBeside(uint32_t file, std::string const &ending, bool *exists) {
  std::string const path = PathOf(DescriptorOf(file));
  *exists = false;
  if (path.empty()) return kNoFile;
  uint32_t const made = AdoptNewFile((path + ending).c_str());
  *exists = made == kNoFile && errno == EEXIST;
  return made;
}

void RemoveFileBeside(uint32_t file, std::string const &ending) {
  TheFileCalls().unlink((PathOf(DescriptorOf(file)) + ending).c_str());
}

FileBeside::FileBeside(uint32_t file) : file_(file) {
  int const descriptor = DescriptorOf(file);
  path_ = PathOf(descriptor);
  struct stat old {};
  if (path_.empty() || !CanBeReplaced(descriptor, &old) || !StandsAt(path_, old)) {
    SetFailure(Failure::denied, path_);
    return;
  }
  beside_ = NewNameOf(path_);
  TheFileCalls().unlink(beside_.c_str());
  uint32_t const made = AdoptNewFile(beside_.c_str());
  if (made == kNoFile) {
    beside_.clear();
    return;
  }
  handle_ = made;
  if (MakeLike(DescriptorOf(made), old)) return;
  SetFailure(FailureFromErrno(errno), path_);
  CloseHandle(handle_);
  handle_ = 0;
}

FileBeside::~FileBeside() {
  if (handle_ != 0) CloseHandle(handle_);
  if (!beside_.empty()) TheFileCalls().unlink(beside_.c_str());
}

bool FileBeside::Commit() {
  if (FlushFileBuffers(handle_) == 0) return false;
  if (TheFileCalls().rename(beside_.c_str(), path_.c_str()) != 0) {
    SetFailure(FailureFromErrno(errno), path_);
    return false;
  }
  beside_.clear();
  SyncDirectoryOf(path_);
  TakeHandle(file_, handle_);
  handle_ = 0;
  return true;
}

void FileBeside::RemoveRemains(uint32_t file) {
  std::string const path = PathOf(DescriptorOf(file));
  if (!path.empty()) TheFileCalls().unlink(NewNameOf(path).c_str());
}

}  // namespace zolt
