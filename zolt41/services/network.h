#ifndef ZOLT41_SERVICES_NETWORK_H_
#define ZOLT41_SERVICES_NETWORK_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// Whether the machine can call, and under which address. Any thread may ask; the answer can take as
// long as a look-up of a name.

// 1 if the machine is connected, through a network or a dial-up link, else 0. A machine that cannot
// say counts as connected.
ZOLT_API int32_t IsNetworkOn();

// Writes the machine's address as dotted text with a NUL, at most 16 bytes, and gives 1; or
// "0.0.0.0" and 0 if it has none. Of several it is the first that a look-up of its name gives.
ZOLT_API int32_t GetMyIP(char *destination);

#endif  // ZOLT41_SERVICES_NETWORK_H_
