#ifndef ZOLT41_PLATFORM_SYSTEM_FILE_CALLS_H_
#define ZOLT41_PLATFORM_SYSTEM_FILE_CALLS_H_

#include <sys/types.h>

#include <cstddef>

namespace zolt {

// The system's calls through which files that have handles are read, changed and replaced. Each is
// as the system has it. A test puts others in their place, which keep a record, fail, or do less
// than was asked for; that is safe only while no other thread works with files.
struct FileCalls {
  int (*open)(char const *path, int flags, mode_t mode);
  ssize_t (*read)(int descriptor, void *bytes, size_t count);
  ssize_t (*write)(int descriptor, void const *bytes, size_t count);
  ssize_t (*readAt)(int descriptor, void *bytes, size_t count, off_t position);
  ssize_t (*writeAt)(int descriptor, void const *bytes, size_t count, off_t position);
  int (*resize)(int descriptor, off_t size);
  int (*sync)(int descriptor);  // the content, and what is needed to find it
  int (*rename)(char const *from, char const *to);
  int (*unlink)(char const *path);
};

FileCalls &TheFileCalls();

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_FILE_CALLS_H_
