#ifndef ZOLT41_PLATFORM_KERNEL_NAMED_EVENT_H_
#define ZOLT41_PLATFORM_KERNEL_NAMED_EVENT_H_

#include <cstdint>

#include "zolt41/platform/kernel/named_mutex.h"

// The event that all processes of one user and home share. It is only ever pulsed: a pulse wakes
// those who wait. It also counts the pulses, so that one who looks at the count, then at whatever
// the pulse tells of, and then waits, misses none.

// Gives a handle for the name that the library uses, and 0 for any other. The other arguments have
// no effect: the event is manual and not signalled. Closed with CloseHandle.
HANDLE CreateEventA(void *attributes, int32_t manualReset, int32_t initialState, char const *name);

// 1, or 0 for a handle that is not open or where the shared segment cannot be had.
int32_t PulseEvent(HANDLE event);

namespace zolt {

// How often the event was pulsed, modulo 2^32.
uint32_t PulseCount(HANDLE event);

// Waits until the count is no longer `count`; comes back at times for no reason.
void WaitForPulse(HANDLE event, uint32_t count);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_KERNEL_NAMED_EVENT_H_
