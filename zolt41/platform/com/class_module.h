#ifndef ZOLT41_PLATFORM_COM_CLASS_MODULE_H_
#define ZOLT41_PLATFORM_COM_CLASS_MODULE_H_

#include <string>

#include "zolt41/platform/com/com_abi.h"

namespace zolt {

struct Module;

// Loads the module at a path, if it is not loaded yet, and keeps it loaded for as long as this
// lives.
class UsedModule {
 public:
  explicit UsedModule(std::string const &path);
  ~UsedModule();
  UsedModule(UsedModule const &) = delete;
  UsedModule &operator=(UsedModule const &) = delete;

  // S_OK if it is loaded. CO_E_DLLNOTFOUND if there is no such file, E_ACCESSDENIED if others could
  // have put something else in its place (see FollowModulePath), CO_E_ERRORINDLL if it is no module
  // with classes.
  HRESULT result() const { return result_; }

  // Asks it, once it is loaded, for a class: what it says.
  HRESULT GetClass(REFCLSID id, REFIID iid, void **out) const;

 private:
  HRESULT result_ = S_OK;
  Module *module_ = nullptr;
};

// Unloads the modules that say that they are not used.
void UnloadUnusedModules();

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_COM_CLASS_MODULE_H_
