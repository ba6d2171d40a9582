#include "zolt41/platform/com/module_path.h"

#include <dlfcn.h>

#include <cstring>
#include <filesystem>
#include <string>

uint32_t GetModuleFileNameA(HINSTANCE module, char *path, uint32_t size) {
  Dl_info info = {};
  if (path == nullptr || dladdr(reinterpret_cast<void *>(module), &info) == 0 ||  // NOLINT
      info.dli_fname == nullptr) {
    return 0;
  }
  std::error_code failed;
  std::string const whole = std::filesystem::absolute(info.dli_fname, failed).lexically_normal();
  if (failed || whole.size() >= size) return 0;
  std::memcpy(path, whole.c_str(), whole.size() + 1);
  return static_cast<uint32_t>(whole.size());
}
