#ifndef ZOLT41_PLATFORM_KERNEL_NAMED_MUTEX_H_
#define ZOLT41_PLATFORM_KERNEL_NAMED_MUTEX_H_

#include <cstdint>

// Mutexes with a name, shared by all processes of one user and home. The owner may take one
// again; it gives it back as often. One whose owner died goes to the next waiter, who is told so.

using HANDLE = uintptr_t;

inline constexpr uint32_t INFINITE = 0xFFFFFFFF;

inline constexpr uint32_t WAIT_OBJECT_0 = 0;
inline constexpr uint32_t WAIT_ABANDONED = 0x80;  // got; the owner before died with it
inline constexpr uint32_t WAIT_TIMEOUT = 258;
inline constexpr uint32_t WAIT_FAILED = 0xFFFFFFFF;

// Gives a handle to the mutex `name`, which need not exist yet. Nothing is opened before the first
// wait, so this always succeeds for one of the names that the library uses and gives 0 for any
// other. The first two arguments have no effect: no mutex is made owned.
HANDLE CreateMutexA(void *attributes, int32_t initialOwner, char const *name);

// Waits until the calling thread owns the mutex. WAIT_FAILED for a handle that is not open, and
// where the shared segment cannot be had (another user's file in its place, no memory, another
// id namespace): the caller then goes on alone.
uint32_t WaitForSingleObject(HANDLE handle, uint32_t milliseconds);

// 1, or 0 if the calling thread does not own the mutex.
int32_t ReleaseMutex(HANDLE handle);

// Closes the handle of a mutex or event; a mutex that the calling thread owns stays owned. 1, or 0
// for no handle.
int32_t CloseHandle(HANDLE handle);

namespace zolt {

// The names are few and known, so all handles on one name are the same number, and closing one has
// nothing to give back. The mutexes begin at 1.
inline constexpr HANDLE kEventHandle = 16;

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_KERNEL_NAMED_MUTEX_H_
