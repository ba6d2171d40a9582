#ifndef ZOLT41_PLATFORM_COM_MODULE_PATH_H_
#define ZOLT41_PLATFORM_COM_MODULE_PATH_H_

#include <cstdint>

#include "zolt41/platform/system/instance.h"

// Copies the absolute path of the file that a module was loaded from, with its NUL. Gives its
// length; 0, and nothing is copied, for an unknown module or if it does not fit.
uint32_t GetModuleFileNameA(HINSTANCE module, char *path, uint32_t size);

#endif  // ZOLT41_PLATFORM_COM_MODULE_PATH_H_
