#ifndef ZOLT41_PLATFORM_REGISTRY_HIVE_FILE_H_
#define ZOLT41_PLATFORM_REGISTRY_HIVE_FILE_H_

#include <string>

#include "zolt41/platform/registry/generation.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt {

// Where a hive's file really lies: `path` with its links resolved, so that everybody who reaches
// it by another name meets the same log and the same words beside it. A path that does not exist is
// given as it is, and so is a link that leads nowhere; the file is then refused when it is opened.
std::string ResolveHivePath(std::string const &path);

// What may be done with a hive's file before it is opened.
enum class HiveAccess { missing, readable, writable };

// Looks at the file and the directory around it. Fails with denied for a file that another
// user (but root) owns or that is no regular file, and with io for one on a network file system,
// where the locks and the shared words do not reach the other machines. An empty file that may not
// be written counts as missing.
Failure InspectHive(std::string const &path, HiveAccess *access);

// Makes an empty file, with the mode given. None if it is there already.
Failure MakeHiveFile(std::string const &path, uint32_t mode);

// Device and inode of the hive and inode of its log, 0 for what does not exist.
Generation::Identity HiveIdentity(std::string const &path);

// Takes the log and its index of a hive that is gone out of the way of the hive that is now at
// `path`: SQLite would apply the log to it.
void RemoveStaleLog(std::string const &path);

// The size of the hive's log in bytes.
uint64_t LogSize(std::string const &path);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_HIVE_FILE_H_
