#ifndef ZOLT41_PLATFORM_REGISTRY_CLASSES_ROOT_H_
#define ZOLT41_PLATFORM_REGISTRY_CLASSES_ROOT_H_

#include <cstdint>
#include <functional>

#include "zolt41/platform/registry/registry.h"

namespace zolt {

// What HKEY_CLASSES_ROOT stands for. All give a number of registry.h.

// Opens the classes in the tree of `root`, made where they are missing, for writing.
int32_t MakeClasses(HKEY root, HKEY *classes);

// Does something in the user's classes.
int32_t InUserClasses(std::function<int32_t(HKEY classes)> const &work);

// Opens a class's key, or one below it: for writing among the user's, for reading wherever it is
// found first.
int32_t OpenClass(char const *name, uint32_t access, HKEY *key);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_CLASSES_ROOT_H_
