#ifndef ZOLT41_COMSERVER_SERVER_EXPORTS_H_
#define ZOLT41_COMSERVER_SERVER_EXPORTS_H_

#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/system/api.h"

// The library as a component server. Clients reach these through CoCreateInstance.

extern "C" {

// Gives a new factory of the class CLSID_PrefManager. CLASS_E_CLASSNOTAVAILABLE for another class,
// E_NOINTERFACE for an interface that a factory has not, E_INVALIDARG without `out`, E_FAIL without
// memory.
ZOLT_API HRESULT DllGetClassObject(REFCLSID id, REFIID iid, void **out);

// S_OK while no component lives and no factory is locked, else S_FALSE. A section to which a
// message is still on its way lives until that has come.
ZOLT_API HRESULT DllCanUnloadNow();

// Enter the class and the file that this library was loaded from among the user's classes, in the
// place of what was entered before; or take it away. Always S_OK.
ZOLT_API HRESULT DllRegisterServer();
ZOLT_API HRESULT DllUnregisterServer();

// The same among the machine's classes if `machine` is not 0, and with a result: S_OK,
// E_ACCESSDENIED if there is no right to it, E_FAIL for another reason; ZOLTLastFailure tells
// which. What could be entered or taken away is.
ZOLT_API HRESULT ZOLTRegisterServer(BOOL machine);
ZOLT_API HRESULT ZOLTUnregisterServer(BOOL machine);

// How the class is entered there now: S_OK as ZOLTRegisterServer does it, S_FALSE in part or
// otherwise, REGDB_E_CLASSNOTREG not at all; E_ACCESSDENIED or E_FAIL as above. It makes nothing.
// `module`, if it is not null, gets the path that is entered, or the empty text, cut to `size`
// bytes with its NUL.
ZOLT_API HRESULT ZOLTServerRegistration(BOOL machine, char *module, uint32_t size);
}

#endif  // ZOLT41_COMSERVER_SERVER_EXPORTS_H_
