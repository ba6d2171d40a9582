#ifndef ZOLT41_LIBRARY_LIBRARY_H_
#define ZOLT41_LIBRARY_LIBRARY_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// Start and stop of the library. A program calls InitZOLT, then InitPrefs, and DisposeZOLT at the
// end, all from one thread while no other uses the library.

// Counts one user more and gives 1; builds nothing.
ZOLT_API int32_t InitZOLT();

// Builds the four stores on the preference tree `path` and registers the standard sections, making
// the keys that are missing. In a path, colons and backslashes part the components; null stands
// for the default trees. Does nothing if the stores are built already. What cannot be opened is
// left out quietly; ZOLTLastFailure tells why. Where memory runs out it throws std::bad_alloc, and
// there are no stores.
//
// Stores and channel, on which changes are told, are those of the home that the environment names
// now. A program that holds registry keys open since before DisposeZOLT stays with both in the home
// that it had.
//
// Waits at most a second for a process that holds the channel mutex, then goes on without it.
ZOLT_API void InitPrefs(char const *path);

// Counts one user less. When that makes the count exactly 0, all sections and stores go, and every
// pointer to a store or section is void; walks and trees that were set must have ended before.
// InitPrefs may then be called again.
ZOLT_API void DisposeZOLT();

// The number of the code page that the stores keep names and texts in, for example 1252.
ZOLT_API uint32_t ZOLTCodePage();

#endif  // ZOLT41_LIBRARY_LIBRARY_H_
