#include "zolt41/prefs/tree_path.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "zolt41/foundation/a_string.h"

namespace zolt {

HKEY OpenTreePath(HKEY root, char const *path) {
  // Two NULs at the end: an empty component ends the path.
  char components[kTreePathLimit + 2] = {};
  AZStrCopy(path, components, kTreePathLimit);
  std::replace_if(
      components, components + kTreePathLimit, [](char c) { return c == ':' || c == '\\'; }, '\0');

  HKEY current = 0;
  for (char const *name = components; *name != '\0'; name += std::strlen(name) + 1) {
    HKEY next = 0;
    int32_t const result = RegCreateKeyA(current == 0 ? root : current, name, &next);
    if (current != 0) RegCloseKey(current);
    if (result == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
    if (result != ERROR_SUCCESS) return 0;
    current = next;
  }
  return current;
}

void UseBackslashes(char *path) {
  std::replace(path, path + std::strlen(path), ':', '\\');
}

}  // namespace zolt
