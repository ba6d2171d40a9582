#ifndef ZOLT41_PLATFORM_COM_CO_INIT_H_
#define ZOLT41_PLATFORM_COM_CO_INIT_H_

#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/system/api.h"

inline constexpr DWORD COINIT_MULTITHREADED = 0;
inline constexpr DWORD COINIT_APARTMENTTHREADED = 2;

// Begins and ends the use of components on the calling thread; what else is offered here does not
// ask whether it was begun. The kind of apartment is not looked at: an object belongs to the thread
// that made it. S_OK for the first on the thread, S_FALSE for a further one; each is ended once.
ZOLT_API HRESULT CoInitialize(void *reserved);
ZOLT_API HRESULT CoInitializeEx(void *reserved, DWORD kind);
ZOLT_API void CoUninitialize();

#endif  // ZOLT41_PLATFORM_COM_CO_INIT_H_
