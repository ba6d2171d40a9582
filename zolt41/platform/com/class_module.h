#ifndef ZOLT41_PLATFORM_COM_CLASS_MODULE_H_
#define ZOLT41_PLATFORM_COM_CLASS_MODULE_H_

#include <string>

#include "zolt41/platform/com/com_abi.h"

namespace zolt {

// Loads the module at `path`, if it is not loaded yet, and asks it for a class. CO_E_DLLNOTFOUND if
// there is no such file, CO_E_ERRORINDLL if it is no module with classes; else what the module
// says.
//
// E_ACCESSDENIED if others could have put something else in its place. The path must be absolute;
// the file and the folders, those on the way of a link too, must belong to the user or to root and
// be for nobody else to write. A folder in which only owners can replace what is theirs, such as
// the system's one for temporary files, will do.
HRESULT ClassFromModule(std::string const &path, REFCLSID id, REFIID iid, void **out);

// Unloads the modules that say that they are not used.
void UnloadUnusedModules();

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_COM_CLASS_MODULE_H_
