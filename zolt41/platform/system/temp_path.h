#ifndef ZOLT41_PLATFORM_SYSTEM_TEMP_PATH_H_
#define ZOLT41_PLATFORM_SYSTEM_TEMP_PATH_H_

#include <cstdint>

// The directory for files that live shortly, which no other user can open or change: a directory
// of the user's own (mode 0700), made if it is missing, in the first of XDG_RUNTIME_DIR, TMPDIR and
// /tmp that allows it. Ends in a slash and a NUL. Gives its length; 0, with the reason for
// ZOLTLastFailure, if none does or `size` is too small.
uint32_t GetTempPathA(uint32_t size, char *buffer);

#endif  // ZOLT41_PLATFORM_SYSTEM_TEMP_PATH_H_
