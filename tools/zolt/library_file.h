#ifndef ZOLT41_TOOLS_ZOLT_LIBRARY_FILE_H_
#define ZOLT41_TOOLS_ZOLT_LIBRARY_FILE_H_

#include <dlfcn.h>

#include <string>

#include "tools/zolt/errors.h"

namespace zolt::tool {

// The library as the file that clients load. This program has the library within itself, and what
// lies in memory twice must not meet one hive: it is for a child process that has opened none.
class LibraryFile {
 public:
  // The file at `path`, or if that is empty the installed one. Throws if there is none, or if
  // clients would not load it.
  explicit LibraryFile(std::string const &path);

  template <typename Function>
  Function *Named(char const *name) const {
    auto *const found = reinterpret_cast<Function *>(dlsym(handle_, name));
    if (found == nullptr) throw ToolError(kFailed, "missing", path_, "is of another version");
    return found;
  }

  // As it is registered.
  std::string const &path() const { return path_; }

  // How long it waits for a lock, in milliseconds.
  void SetLockWait(uint32_t wait) const;
  // Why one of its functions failed.
  ToolError Failure() const;

 private:
  // For as long as the process lives: its threads and its exit are in it.
  void *handle_ = nullptr;
  std::string path_;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_LIBRARY_FILE_H_
