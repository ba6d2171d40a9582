#ifndef ZOLT41_PLATFORM_REGISTRY_PRIVATE_COPY_H_
#define ZOLT41_PLATFORM_REGISTRY_PRIVATE_COPY_H_

#include <cstdint>
#include <string>

#include "zolt41/platform/registry/connection.h"

namespace zolt {

// How a hive, its log and its journal stood when a copy of them was taken.
struct CopyState {
  uint64_t inodes[3];
  int64_t sizes[3];
  int64_t times[3];

  bool operator==(CopyState const &) const = default;
};

CopyState StateOfHive(std::string const &path);

// Opens a copy of the hive at `path`, for a process that may read it but neither lock nor mend it.
// File, log and journal are copied as they belong together, under SQLite's shared lock, into a
// directory that is gone again when this returns. Fails with locked if they do not hold still.
Failure OpenPrivateCopy(std::string const &path, Connection &connection, CopyState *state);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_PRIVATE_COPY_H_
