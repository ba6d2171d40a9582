#ifndef ZOLT41_PLATFORM_SYSTEM_SYSTEM_PATH_H_
#define ZOLT41_PLATFORM_SYSTEM_SYSTEM_PATH_H_

#include <string>

namespace zolt {

// The path of a file that a client names. A name that is valid UTF-8 is taken as it stands, so that
// every file of such a system can be named; any other is text of the local code page, and becomes
// UTF-8.
std::string SystemPath(char const *name);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_SYSTEM_PATH_H_
