#ifndef ZOLT41_PLATFORM_COM_COM_CREATE_H_
#define ZOLT41_PLATFORM_COM_COM_CREATE_H_

#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/system/api.h"

// Components by their class. A class is looked for in HKEY_CLASSES_ROOT, among the user's classes
// before the machine's; its module is loaded from the path there, which must be absolute, with a
// file and folders that belong to the user or root and that nobody else can write. Of the folders
// those will do too that are sticky, as /tmp is: there others replace only what is theirs. A class
// of the user's that was asked for keeps its registry key open until CoFreeUnusedLibraries, and so
// keeps the process in its home.

inline constexpr DWORD CLSCTX_INPROC_SERVER = 1;
inline constexpr DWORD CLSCTX_INPROC_HANDLER = 2;
inline constexpr DWORD CLSCTX_LOCAL_SERVER = 4;
inline constexpr DWORD CLSCTX_REMOTE_SERVER = 0x10;
inline constexpr DWORD CLSCTX_SERVER = 0x15;
inline constexpr DWORD CLSCTX_ALL = 0x17;

// The class that a name such as "Brindle.PrefManager" stands for. CO_E_CLASSSTRING, and the id of
// zeros, if there is none; E_INVALIDARG for null.
ZOLT_API HRESULT CLSIDFromProgID(LPCOLESTR name, CLSID *id);

// Gives an interface of the class's factory, or of a new object. `context` must hold
// CLSCTX_INPROC_SERVER, and `reserved` and `outer` be null as far as the class wants it.
// E_INVALIDARG without `out`; REGDB_E_CLASSNOTREG for a class that is not registered;
// CO_E_DLLNOTFOUND, E_ACCESSDENIED or CO_E_ERRORINDLL if its module is missing, could have been
// changed by others, or is no module; else what the module says.
ZOLT_API HRESULT CoGetClassObject(REFCLSID id, DWORD context, void *reserved, REFIID iid,
                                  void **out);
ZOLT_API HRESULT CoCreateInstance(REFCLSID id, IUnknown *outer, DWORD context, REFIID iid,
                                  void **out);

// Unloads the modules that were loaded so and say that they are not used. No other thread may then
// be on its way out of one.
ZOLT_API void CoFreeUnusedLibraries();

// Whether the file at `path` would be loaded, as far as can be told without doing so: S_OK;
// CO_E_DLLNOTFOUND if there is none; E_ACCESSDENIED if others could have put something else in its
// place, or it is no file; E_INVALIDARG for null. `place`, if it is not null, gets the file's path
// without links, or where the way to it ends: the file, folder or link that others can change. It
// is cut to `size` bytes with its NUL.
ZOLT_API HRESULT ZOLTCheckModule(char const *path, char *place, uint32_t size);

#endif  // ZOLT41_PLATFORM_COM_COM_CREATE_H_
