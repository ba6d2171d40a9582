#ifndef ZOLT41_TESTS_SUPPORT_FILE_SHIM_H_
#define ZOLT41_TESTS_SUPPORT_FILE_SHIM_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "zolt41/platform/system/file_calls.h"

namespace zolt::testing {

// One call that changed a file, or brought it to the disk.
struct FileStep {
  enum Kind { create, write, resize, rename, unlink, sync } kind;
  std::string path;
  int64_t position = 0;    // of a write; the size of a resize
  std::string bytes = {};  // of a write; the new path of a rename
};

// Files by path, as calls leave them.
using Disk = std::map<std::string, std::string>;
void Do(FileStep const &step, Disk *disk);

// Stands between the library's files and the system for as long as it lives: keeps a record of all
// changes, and lets a call fail. Nothing is synced, which takes time and shows nothing here.
class FileShim {
 public:
  FileShim();
  ~FileShim();
  FileShim(FileShim const &) = delete;
  FileShim &operator=(FileShim const &) = delete;

  std::vector<FileStep> &steps() { return steps_; }
  // How many calls there were that can fail.
  int calls() const { return calls_; }

  // The call of that number from now on, from 1, fails with `error`; with `part` a write does a
  // part first. All later ones fail, too, if `forever`.
  void FailAt(int number, int error, bool part, bool forever);
  void FailNothing() { failAt_ = 0; }
  // New files beside others cannot be made.
  void set_noNewFiles(bool none) { noNewFiles_ = none; }

 private:
  static int Open(char const *path, int flags, mode_t mode);
  static ssize_t ReadAt(int descriptor, void *bytes, size_t count, off_t position);
  static ssize_t WriteAt(int descriptor, void const *bytes, size_t count, off_t position);
  static int Resize(int descriptor, off_t size);
  static int Sync(int descriptor);
  static int Rename(char const *from, char const *to);
  static int Unlink(char const *path);

  bool Fails();

  FileCalls real_;
  std::vector<FileStep> steps_;
  int calls_ = 0;
  int failAt_ = 0;
  int error_ = 0;
  bool part_ = false;
  bool forever_ = false;
  bool noNewFiles_ = false;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_FILE_SHIM_H_
