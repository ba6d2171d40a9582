#include "zolt41/prefs/empty_key.h"

#include <string>
#include <vector>

#include "zolt41/platform/system/last_failure.h"

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

namespace {

// No tree that the registry makes is deeper; a deeper one is another program's work.
constexpr int kDeepest = 512;

void EmptyTo(HKEY key, int depth, FirstFailure &failure) {
  auto const value = [key](uint32_t i, char *name, uint32_t *length) {
    return RegEnumValueA(key, i, name, length, nullptr, nullptr, nullptr, nullptr);
  };
  std::vector<std::string> const values = Names(value);
  failure.Note();
  for (std::string const &name : values) {
    RegDeleteValueA(key, name.c_str());
    failure.Note();
  }
  auto const subkey = [key](uint32_t i, char *name, uint32_t *length) {
    return RegEnumKeyExA(key, i, name, length, nullptr, nullptr, nullptr, nullptr);
  };
  for (std::string const &name : Names(subkey)) {
    HKEY below = 0;
    if (depth == 0 || RegOpenKeyA(key, name.c_str(), &below) != ERROR_SUCCESS) break;
    EmptyTo(below, depth - 1, failure);
    RegCloseKey(below);
    RegDeleteKeyA(key, name.c_str());
    failure.Note();
  }
  failure.Note();
}

}  // namespace

void EmptyKey(HKEY key) {
  FirstFailure failure;
  EmptyTo(key, kDeepest, failure);
}

}  // namespace zolt
