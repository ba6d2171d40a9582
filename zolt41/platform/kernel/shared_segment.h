#ifndef ZOLT41_PLATFORM_KERNEL_SHARED_SEGMENT_H_
#define ZOLT41_PLATFORM_KERNEL_SHARED_SEGMENT_H_

#include <cstdint>
#include <string>

#include "zolt41/platform/system/robust_mutex.h"

namespace zolt {

// The memory that all processes of one user and home share, a file in /dev/shm that no other user
// may open. It guards nothing of the stores: without it they work, and nobody waits for anybody.
enum class SegmentMutex : uint32_t { subscribers, channel, count };

// The file of the home that the environment names. Two homes have two; the name tells no path.
std::string SegmentPath();

// Waits for a mutex of the segment of the home that the environment names at the first call, which
// attaches the process. `failed` if the segment cannot be had: another user's file in its place, no
// memory, or a process of another id namespace made it.
[[nodiscard]] MutexWait LockInSegment(SegmentMutex mutex, uint32_t milliseconds);

// False if the calling thread does not own it. A child of fork owns none.
bool UnlockInSegment(SegmentMutex mutex);

// Gives the segment up, for the end of the process; the last one to do so removes the file. Kept if
// this process still owns one of its mutexes, since the kernel then writes to it when the process
// ends.
void DetachSegment();

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_KERNEL_SHARED_SEGMENT_H_
