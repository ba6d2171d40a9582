#include "zolt41/platform/com/class_module.h"

#include <dlfcn.h>

#include <cstdint>
#include <map>
#include <mutex>

#include "zolt41/platform/com/fork_order.h"
#include "zolt41/platform/com/module_way.h"

namespace zolt {

struct Module {
  using GetClass = HRESULT (*)(REFCLSID, REFIID, void **);
  using CanUnload = HRESULT (*)();

  void *handle = nullptr;
  GetClass getClass = nullptr;
  CanUnload canUnload = nullptr;
  uint32_t users = 0;  // threads that are in it to ask for a class
};

namespace {

struct Modules {
  std::recursive_mutex lock;
  std::map<std::string, Module> byPath;
};

Modules &TheModules();

Modules *MakeModules() {
  CallBeforeHivesAroundForks([] { TheModules().lock.lock(); }, [] { TheModules().lock.unlock(); },
                             [] { RenewInChild(&TheModules().lock); });
  return new Modules;
}

Modules &TheModules() {
  // Never destroyed: components may still be asked for while the process ends.
  static auto *const modules = MakeModules();
  return *modules;
}

HRESULT Load(std::string const &path, Module *module) {
  std::string file;
  if (HRESULT const result = FollowModulePath(path, &file); result != S_OK) return result;
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

}  // namespace

UsedModule::UsedModule(std::string const &path) {
  std::lock_guard const guard(TheModules().lock);
  result_ = Find(path, &module_);
  if (module_ != nullptr) module_->users++;
}

UsedModule::~UsedModule() {
  std::lock_guard const guard(TheModules().lock);
  if (module_ != nullptr) module_->users--;
}

HRESULT UsedModule::GetClass(REFCLSID id, REFIID iid, void **out) const {
  return module_->getClass(id, iid, out);
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
