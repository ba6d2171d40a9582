#include "zolt41/platform/system/file_calls.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace zolt {
namespace {

int Open(char const *path, int flags, mode_t mode) {
  return open(path, flags, mode);
}

}  // namespace

FileCalls &TheFileCalls() {
  static FileCalls calls = {.open = Open,
                            .read = read,
                            .write = write,
                            .readAt = pread,
                            .writeAt = pwrite,
                            .resize = ftruncate,
                            .sync = fdatasync,
                            .rename = rename,
                            .unlink = unlink};
  return calls;
}

}  // namespace zolt
