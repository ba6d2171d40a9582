#include "zolt41/platform/com/class_module.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>

namespace zolt {
namespace {

constexpr mode_t kOthersWrite = S_IWGRP | S_IWOTH;

bool IsOurs(struct stat const &status) {
  return status.st_uid == 0 || status.st_uid == geteuid();
}

bool IsSafe(std::string const &path, bool isFile) {
  struct stat status = {};
  if (lstat(path.c_str(), &status) != 0 || !IsOurs(status)) return false;
  if (S_ISLNK(status.st_mode)) return true;  // only its owner can change it, or its folder's
  if (isFile) return S_ISREG(status.st_mode) && (status.st_mode & kOthersWrite) == 0;
  return (status.st_mode & kOthersWrite) == 0 || (status.st_mode & S_ISVTX) != 0;
}

// The path and all folders that it names.
bool IsSafeWay(std::string const &path) {
  if (path.empty() || path.front() != '/') return false;
  for (size_t end = path.find('/', 1); end != std::string::npos; end = path.find('/', end + 1)) {
    if (!IsSafe(path.substr(0, end), false)) return false;
  }
  return IsSafe("/", false) && IsSafe(path, true);
}

std::string Resolved(std::string const &path) {
  std::unique_ptr<char, decltype(&std::free)> const real(realpath(path.c_str(), nullptr),
                                                         &std::free);
  return real == nullptr ? std::string() : std::string(real.get());
}

struct Module {
  using GetClass = HRESULT (*)(REFCLSID, REFIID, void **);
  using CanUnload = HRESULT (*)();

  void *handle = nullptr;
  GetClass getClass = nullptr;
  CanUnload canUnload = nullptr;
  uint32_t users = 0;  // threads that are in it to ask for a class
};

struct Modules {
  std::recursive_mutex lock;
  std::map<std::string, Module> byPath;
};

Modules &TheModules() {
  // Never destroyed: components may still be asked for while the process ends.
  static auto *const modules = new Modules;
  return *modules;
}

// Loads the file that the path leads to, if that may be trusted.
HRESULT Load(std::string const &path, Module *module) {
  if (path.empty() || path.front() != '/') return E_ACCESSDENIED;
  std::string const file = Resolved(path);
  if (file.empty()) return CO_E_DLLNOTFOUND;
  if (!IsSafeWay(path) || !IsSafeWay(file)) return E_ACCESSDENIED;
  void *const handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) return CO_E_ERRORINDLL;
  module->handle = handle;
  module->getClass = reinterpret_cast<Module::GetClass>(dlsym(handle, "DllGetClassObject"));
  module->canUnload = reinterpret_cast<Module::CanUnload>(dlsym(handle, "DllCanUnloadNow"));
  if (module->getClass != nullptr) return S_OK;
  dlclose(handle);
  return CO_E_ERRORINDLL;
}

// The module of that path, loaded if it is not yet; what is loaded is not looked at again.
HRESULT Find(std::string const &path, Module **module) {
  auto &modules = TheModules().byPath;
  auto found = modules.find(path);
  if (found == modules.end()) {
    Module loaded;
    if (HRESULT const result = Load(path, &loaded); result != S_OK) return result;
    found = modules.emplace(path, loaded).first;
  }
  *module = &found->second;
  return S_OK;
}

// Keeps the module loaded for as long as it lives.
class UsedModule {
 public:
  explicit UsedModule(std::string const &path) {
    std::lock_guard const guard(TheModules().lock);
    result_ = Find(path, &module_);
    if (module_ != nullptr) module_->users++;
  }
  ~UsedModule() {
    std::lock_guard const guard(TheModules().lock);
    if (module_ != nullptr) module_->users--;
  }
  UsedModule(UsedModule const &) = delete;
  UsedModule &operator=(UsedModule const &) = delete;

  HRESULT result() const { return result_; }
  Module const *operator->() const { return module_; }

 private:
  HRESULT result_ = E_FAIL;
  Module *module_ = nullptr;
};

}  // namespace

HRESULT ClassFromModule(std::string const &path, REFCLSID id, REFIID iid, void **out) {
  UsedModule const module(path);
  return module.result() != S_OK ? module.result() : module->getClass(id, iid, out);
}

void UnloadUnusedModules() {
  std::lock_guard const guard(TheModules().lock);
  std::erase_if(TheModules().byPath, [](auto const &entry) {
    Module const &module = entry.second;
    if (module.users != 0 || module.canUnload == nullptr || module.canUnload() != S_OK) {
      return false;
    }
    dlclose(module.handle);
    return true;
  });
}

}  // namespace zolt
