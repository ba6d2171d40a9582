#include "zolt41/platform/system/file_replacement.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <memory>
#include <new>

#include "zolt41/platform/system/file.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/replaced_file.h"
#include "zolt41/platform/system/system_path.h"
#include "zolt41/platform/system/with_memory.h"

namespace zolt {
namespace {

constexpr size_t kBlock = 65536;
constexpr mode_t kOwnerOnly = 0600;
constexpr char kMark[] = ".zolt-new-";
// The mark, followed by the number of the process, a hyphen and a serial number.
constexpr size_t kNumbers = 21;

// Where links lead, also if no file is there yet. Empty if they lead nowhere.
std::string Resolved(std::string const &path) {
  std::string at = path;
  for (int links = 0; links < 40; links++) {
    char target[PATH_MAX];
    ssize_t const length = readlink(at.c_str(), target, sizeof target);
    if (length < 0) return at;
    std::string const link(target, static_cast<size_t>(length));
    size_t const slash = at.rfind('/');
    bool const relative = !link.starts_with('/') && slash != std::string::npos;
    at.resize(relative ? slash + 1 : 0);
    at += link;
  }
  errno = ELOOP;
  return "";
}

bool IsAlive(std::string_view process) {
  int id = 0;
  auto const result = std::from_chars(process.data(), process.data() + process.size(), id);
  return result.ec != std::errc() || id <= 0 || kill(id, 0) == 0 || errno != ESRCH;
}

void RemoveRemains(std::string const &path) {
  std::string const directory = DirectoryOf(path);
  std::string const prefix = NameOf(HiddenBeside(path, kMark, kNumbers));
  std::unique_ptr<DIR, int (*)(DIR *)> const entries(opendir(directory.c_str()), closedir);
  if (entries == nullptr) return;
  while (dirent const *const entry = readdir(entries.get())) {
    std::string_view const name = entry->d_name;
    if (!name.starts_with(prefix) || IsAlive(name.substr(prefix.size()))) continue;
    unlink((directory + std::string(name)).c_str());
  }
}

}  // namespace

FileReplacement::FileReplacement(char const *name) {
  ClearFailure();
  // What was opened until then is closed by the destructor, which one that throws would not call.
  good_ = WithMemory(false, [&] {
    Open(name);
    return good_;
  });
}

void FileReplacement::Open(char const *name) {
  if (name == nullptr || *name == '\0') return Fail(ENOENT);
  path_ = SystemPath(name);
  path_ = Resolved(path_);
  if (path_.empty()) return Fail(errno);
  OpenTarget();
}

FileReplacement::~FileReplacement() {
  if (!beside_.empty()) DropBeside();
  if (target_ != 0) CloseHandle(target_);
}

void FileReplacement::Fail(int error) {
  if (good_) SetFailure(FailureFromErrno(error), path_);
  good_ = false;
}

void FileReplacement::OpenTarget() {
  struct stat status {};
  if (lstat(path_.c_str(), &status) != 0) {
    if (errno != ENOENT) return Fail(errno);
    return OpenBeside();
  }
  target_ = CreateFileA(path_.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                        FILE_ATTRIBUTE_NORMAL, 0);
  if (target_ == INVALID_HANDLE_VALUE) {
    target_ = 0;
    good_ = false;  // told already
    return;
  }
  int const descriptor = DescriptorOf(target_);
  if (CanBeReplaced(descriptor, &status) && OpenBesideLike(status)) return;
  if (!good_) return;
  descriptor_ = descriptor;
}

// False with all as before where a new file may not be made, or cannot be as the old one.
bool FileReplacement::OpenBesideLike(struct stat const &old) {
  OpenBeside();
  if (!good_) {
    good_ = ZOLTLastFailure(nullptr, 0) == static_cast<int32_t>(Failure::denied);
    if (good_) ClearFailure();
    return false;
  }
  // In a group that is not the user's the file could not stay.
  if (MakeLike(descriptor_, old)) return true;
  DropBeside();
  return false;
}

void FileReplacement::DropBeside() {
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
  unlink(beside_.c_str());
  beside_.clear();
}

void FileReplacement::OpenBeside() {
  static std::atomic<uint32_t> serial = 0;
  RemoveRemains(path_);
  int const flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  do {
    beside_ = HiddenBeside(path_, kMark, kNumbers) + std::to_string(getpid()) + "-" +
              std::to_string(++serial);
    descriptor_ = open(beside_.c_str(), flags, kOwnerOnly);
    if (descriptor_ >= 0) return;
  } while (errno == EEXIST);
  Fail(errno);
  beside_.clear();
}

void FileReplacement::Write(std::string_view bytes) {
  if (!good_) return;
  waiting_ += bytes;
  // In its place nothing is touched until all is known.
  if (beside_.empty() || waiting_.size() < kBlock) return;
  WriteOut(waiting_);
  waiting_.clear();
}

void FileReplacement::WriteOut(std::string_view bytes) {
  while (good_ && !bytes.empty()) {
    ssize_t const written = write(descriptor_, bytes.data(), bytes.size());
    if (written >= 0) {
      bytes.remove_prefix(static_cast<size_t>(written));
    } else if (errno != EINTR) {
      Fail(errno);
    }
  }
}

bool FileReplacement::Rename() {
  close(descriptor_);
  descriptor_ = -1;
  if (rename(beside_.c_str(), path_.c_str()) != 0) {
    Fail(errno);
    DropBeside();
    return false;
  }
  beside_.clear();
  try {
    SyncDirectoryOf(path_);
  } catch (std::bad_alloc const &) {
    // It is in its place; a power cut may undo that for some seconds.
  }
  return true;
}

// Room for the new content is had before the old one is touched.
void FileReplacement::MakeRoom() {
  struct stat old {};
  if (fstat(descriptor_, &old) != 0) return Fail(errno);
  auto const size = static_cast<off_t>(waiting_.size());
  if (size <= old.st_size) return;
  int const error = posix_fallocate(descriptor_, 0, size);
  if (error == 0) return;
  Fail(error);
  static_cast<void>(ftruncate(descriptor_, old.st_size) == 0);
}

bool FileReplacement::Commit() {
  bool const inPlace = beside_.empty();
  auto const size = static_cast<off_t>(waiting_.size());
  if (good_ && inPlace) MakeRoom();
  WriteOut(waiting_);
  waiting_.clear();
  if (good_ && inPlace && ftruncate(descriptor_, size) != 0) Fail(errno);
  if (good_ && fdatasync(descriptor_) != 0) Fail(errno);
  if (!good_) return false;
  return inPlace || Rename();
}

}  // namespace zolt
