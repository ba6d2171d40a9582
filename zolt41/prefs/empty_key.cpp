#include "zolt41/prefs/empty_key.h"

#include <string>
#include <vector>

namespace zolt {

namespace {

constexpr uint32_t kNameSize = 260;

// All names are taken before the first is deleted: deleting shifts the positions.
template <typename Enumerate>
std::vector<std::string> Names(Enumerate enumerate) {
  std::vector<std::string> names;
  char name[kNameSize];
  uint32_t length = kNameSize;
  for (uint32_t i = 0; enumerate(i, name, &length) == ERROR_SUCCESS; ++i) {
    names.emplace_back(name, length);
    length = kNameSize;
  }
  return names;
}

}  // namespace

void EmptyKey(HKEY key) {
  auto const value = [key](uint32_t i, char *name, uint32_t *length) {
    return RegEnumValueA(key, i, name, length, nullptr, nullptr, nullptr, nullptr);
  };
  for (std::string const &name : Names(value)) RegDeleteValueA(key, name.c_str());

  auto const subkey = [key](uint32_t i, char *name, uint32_t *length) {
    return RegEnumKeyExA(key, i, name, length, nullptr, nullptr, nullptr, nullptr);
  };
  for (std::string const &name : Names(subkey)) {
    HKEY below = 0;
    if (RegOpenKeyA(key, name.c_str(), &below) != ERROR_SUCCESS) return;
    EmptyKey(below);
    RegCloseKey(below);
    RegDeleteKeyA(key, name.c_str());
  }
}

}  // namespace zolt
