#include "zolt41/platform/registry/classes_root.h"

namespace zolt {
namespace {

constexpr char kSoftware[] = "Software";
constexpr char kClasses[] = "Classes";
constexpr char kPath[] = "Software\\Classes";
constexpr uint32_t kWriteBits = KEY_WRITE & ~KEY_READ;

int32_t OpenBelow(HKEY root, char const *name, uint32_t access, HKEY *key) {
  HKEY classes = 0;
  int32_t result = RegOpenKeyExA(root, kPath, 0, KEY_READ, &classes);
  if (result != ERROR_SUCCESS) return result;
  result = RegOpenKeyExA(classes, name, 0, access, key);
  RegCloseKey(classes);
  return result;
}

}  // namespace

int32_t MakeClasses(HKEY root, HKEY *classes) {
  HKEY software = 0;
  int32_t result =
      RegCreateKeyExA(root, kSoftware, 0, nullptr, 0, KEY_WRITE, nullptr, &software, nullptr);
  if (result != ERROR_SUCCESS) return result;
  result = RegCreateKeyExA(software, kClasses, 0, nullptr, 0, KEY_WRITE, nullptr, classes, nullptr);
  RegCloseKey(software);
  return result;
}

int32_t InUserClasses(std::function<int32_t(HKEY)> const &work) {
  HKEY classes = 0;
  int32_t result = MakeClasses(HKEY_CURRENT_USER, &classes);
  if (result != ERROR_SUCCESS) return result;
  result = work(classes);
  RegCloseKey(classes);
  return result;
}

int32_t OpenClass(char const *name, uint32_t access, HKEY *key) {
  if (key == nullptr) return ERROR_INVALID_PARAMETER;
  *key = 0;
  int32_t const result = OpenBelow(HKEY_CURRENT_USER, name, access, key);
  if (result == ERROR_SUCCESS || (access & kWriteBits) != 0) return result;
  return OpenBelow(HKEY_LOCAL_MACHINE, name, access, key);
}

}  // namespace zolt
