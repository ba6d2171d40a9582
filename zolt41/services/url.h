#ifndef ZOLT41_SERVICES_URL_H_
#define ZOLT41_SERVICES_URL_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// Opens links with what the desktop has for them; docs/services.md tells which that is. Any thread
// may call.

// 1 if the machine opens links, else 0. Asks anew at each call.
ZOLT_API int32_t URLEnabled();

// 1 if the desktop took the link, which is local text; 0 if not, and for an empty or null one, one
// that begins with '-', and one with control characters.
ZOLT_API int32_t URLLaunchFromString(char const *url);

#endif  // ZOLT41_SERVICES_URL_H_
