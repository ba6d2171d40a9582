#ifndef ZOLT41_TESTS_SUPPORT_KEY_H_
#define ZOLT41_TESTS_SUPPORT_KEY_H_

#include <cstdint>
#include <string>
#include <vector>

#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt::testing {

// An open key with verbs for tests. Values are texts with their NUL unless said otherwise.
class Key {
 public:
  explicit Key(HKEY root, std::string const &name = "Test") {
    opened = RegCreateKeyA(root, name.c_str(), &handle);
  }
  ~Key() { RegCloseKey(handle); }
  Key(Key const &) = delete;
  Key &operator=(Key const &) = delete;

  int32_t Set(std::string const &name, std::string const &text) const {
    return SetBytes(name, REG_SZ, text + '\0');
  }
  int32_t SetBytes(std::string const &name, uint32_t type, std::string const &bytes) const {
    return RegSetValueExA(handle, name.c_str(), 0, type,
                          reinterpret_cast<uint8_t const *>(bytes.data()),
                          static_cast<uint32_t>(bytes.size()));
  }
  // The text, or "!" and the number of the failure.
  std::string Get(std::string const &name) const {
    char text[256];
    uint32_t size = sizeof text;
    int32_t const result = ZOLTQueryText(handle, name.c_str(), text, &size);
    return result == 0 ? std::string(text, size - 1) : "!" + std::to_string(result);
  }
  // The same of several, with a blank between them.
  std::string GetAll(std::vector<std::string> const &names) const {
    std::string all;
    for (std::string const &name : names) all += (all.empty() ? "" : " ") + Get(name);
    return all;
  }
  std::string GetBytes(std::string const &name) const {
    uint32_t size = 0;
    if (RegQueryValueExA(handle, name.c_str(), nullptr, nullptr, nullptr, &size) != 0) return "!";
    std::string bytes(size, '\0');
    RegQueryValueExA(handle, name.c_str(), nullptr, nullptr,
                     reinterpret_cast<uint8_t *>(bytes.data()), &size);
    return bytes;
  }
  std::vector<std::string> ValueNames() const {
    std::vector<std::string> names;
    for (uint32_t index = 0;; index++) {
      char name[260];
      uint32_t length = sizeof name;
      if (RegEnumValueA(handle, index, name, &length, nullptr, nullptr, nullptr, nullptr) != 0) {
        return names;
      }
      names.emplace_back(name, length);
    }
  }

  HKEY handle = 0;
  int32_t opened = -1;
};

// What ZOLTLastFailure says: the number, and the subject if there is one.
inline int32_t LastFailure(std::string *subject = nullptr) {
  char text[512];
  int32_t const failure = ZOLTLastFailure(text, sizeof text);
  if (subject != nullptr) *subject = text;
  return failure;
}

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_KEY_H_
