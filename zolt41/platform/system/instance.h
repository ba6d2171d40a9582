#ifndef ZOLT41_PLATFORM_SYSTEM_INSTANCE_H_
#define ZOLT41_PLATFORM_SYSTEM_INSTANCE_H_

#include <cstdint>

// Names a loaded library or program.
using HINSTANCE = uintptr_t;

#endif  // ZOLT41_PLATFORM_SYSTEM_INSTANCE_H_
