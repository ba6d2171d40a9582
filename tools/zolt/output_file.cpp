#include "tools/zolt/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>

#include "tools/zolt/errors.h"

namespace zolt::tool {

namespace {

// Where links lead to, whether or not a file is there.
std::string Resolved(std::string const &path) {
  std::string at = path;
  for (int links = 0; links < 40; links++) {
    char target[PATH_MAX];
    ssize_t const length = readlink(at.c_str(), target, sizeof target);
    if (length < 0) return at;
    std::string const link(target, static_cast<size_t>(length));
    size_t const slash = at.rfind('/');
    bool const inFolder = !link.starts_with('/') && slash != std::string::npos;
    at.resize(inFolder ? slash + 1 : 0);
    at += link;
  }
  throw SystemFailure(path, ELOOP);
}

std::string FolderOf(std::string const &path) {
  size_t const slash = path.rfind('/');
  return slash == std::string::npos ? "./" : path.substr(0, slash + 1);
}

bool IsSpecial(std::string const &path) {
  struct stat found {};
  return stat(path.c_str(), &found) == 0 && !S_ISREG(found.st_mode);
}

// A file without a name, of which nothing is left if the process is ended; or with one, where there
// are none such.
int OpenBeside(std::string const &path, std::string *written) {
  if (access(path.c_str(), F_OK) == 0 && access(path.c_str(), W_OK) != 0) return -1;
  int file = open(FolderOf(path).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600);
  if (file < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == ENOENT)) {
    *written = FolderOf(path) + ".zolt-XXXXXX";
    file = mkostemp(written->data(), O_CLOEXEC);
  }
  struct stat found {};
  if (file >= 0 && stat(path.c_str(), &found) == 0) fchmod(file, found.st_mode & 0777);
  return file;
}

int OpenTarget(std::string const &path, std::string *written) {
  int const file =
      IsSpecial(path) ? open(path.c_str(), O_WRONLY | O_CLOEXEC) : OpenBeside(path, written);
  if (file < 0) throw SystemFailure(path, errno);
  return file;
}

// Gives a file without a name one beside its target.
std::string Named(int file, std::string const &path) {
  std::string const source = "/proc/self/fd/" + std::to_string(file);
  for (int number = 0;; number++) {
    std::string name =
        FolderOf(path) + ".zolt-" + std::to_string(getpid()) + "-" + std::to_string(number);
    if (linkat(AT_FDCWD, source.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
      return name;
    }
    if (errno != EEXIST) throw SystemFailure(path, errno);
  }
}

}  // namespace

OutputFile::OutputFile(std::string const &path)
    : path_(Resolved(path)), special_(IsSpecial(path_)), out_(OpenTarget(path_, &written_), path) {}

OutputFile::~OutputFile() {
  if (!written_.empty()) unlink(written_.c_str());
}

void OutputFile::Secure() {
  out_.Flush();
  if (special_) return;
  if (fsync(out_.descriptor()) != 0) throw SystemFailure(path_, errno);
  if (written_.empty()) written_ = Named(out_.descriptor(), path_);
}

void OutputFile::Finish() {
  Secure();
  out_.Finish();
  if (special_) return;
  if (rename(written_.c_str(), path_.c_str()) != 0) throw SystemFailure(path_, errno);
  written_.clear();
  int const folder = open(FolderOf(path_).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return;
  fsync(folder);
  close(folder);
}

bool IsThere(std::string const &path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0;
}

bool IsSameFile(std::string const &a, std::string const &b) {
  struct stat first {};
  struct stat second {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

}  // namespace zolt::tool
