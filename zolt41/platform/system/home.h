#ifndef ZOLT41_PLATFORM_SYSTEM_HOME_H_
#define ZOLT41_PLATFORM_SYSTEM_HOME_H_

#include <string>

#include "zolt41/platform/system/last_failure.h"

namespace zolt {

// The directories in which the hives are kept, as absolute paths. They need not exist.
struct Homes {
  std::string user;
  std::string machine;
  bool machineIsPublic;  // the machine's directory is for all users to read

  bool operator==(Homes const &) const = default;
};

// Asks the environment: ZOLT_HOME names the user's home and the machine's is its subdirectory
// "machine"; without it the user's is "zolt41" in the XDG data directory and the machine's is
// /var/lib/zolt41. The environment is not heeded in a program that runs with raised rights.
Homes ResolveHomes();

// Makes the directory `path`, and those above it that are missing, with mode 0700
// (0755 if `isPublic`). What a privileged process makes below another user's directory belongs
// to that user. Gives none if the directory is there afterwards.
Failure EnsureDirectory(std::string const &path, bool isPublic);

// Gives the file or directory `path` to the owner of the directory that it lies in, if this process
// may do that and another user owns it. So a privileged writer locks nobody out.
void GiveToOwnerOfParent(std::string const &path);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_HOME_H_
