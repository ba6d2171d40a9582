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

// Where links lead to; the path itself if nothing is there.
std::string Resolved(std::string const &path) {
  char resolved[PATH_MAX];
  return realpath(path.c_str(), resolved) == nullptr ? path : resolved;
}

std::string FolderOf(std::string const &path) {
  size_t const slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

bool IsSpecial(std::string const &path) {
  struct stat found {};
  return stat(path.c_str(), &found) == 0 && !S_ISREG(found.st_mode);
}

int OpenBeside(std::string const &path, std::string *written) {
  *written = path + ".XXXXXX";
  int const file = mkostemp(written->data(), O_CLOEXEC);
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

}  // namespace

OutputFile::OutputFile(std::string const &path)
    : path_(Resolved(path)), out_(OpenTarget(path_, &written_), path) {}

OutputFile::~OutputFile() {
  if (!written_.empty()) unlink(written_.c_str());
}

void OutputFile::Finish() {
  out_.Flush();
  if (!written_.empty() && fsync(out_.descriptor()) != 0) throw SystemFailure(path_, errno);
  out_.Finish();
  if (written_.empty()) return;
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
