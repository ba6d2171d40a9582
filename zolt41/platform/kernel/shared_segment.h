#ifndef ZOLT41_PLATFORM_KERNEL_SHARED_SEGMENT_H_
#define ZOLT41_PLATFORM_KERNEL_SHARED_SEGMENT_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "zolt41/platform/system/robust_mutex.h"

namespace zolt {

// The memory that all processes of one user and home share, a file in /dev/shm that no other user
// may open. It guards nothing of the stores: without it they work, nobody waits for anybody, and
// nobody hears of a change. Another process of the same user can harm us: one that cuts the file
// short makes us fault, and one that writes over a mutex can make us write anywhere, since the C
// library follows what stands in it.
//
// The first use attaches the process, to the segment that it is bound to, else to that of the home
// that the environment then names. It cannot be had where another user's file is in its place,
// where there is no memory, or where a process of another id namespace made it.
enum class SegmentMutex : uint32_t { subscribers, channel, count };

// Places for processes. A thread that holds one until its end shows that its process is alive.
inline constexpr uint32_t kSegmentPlaces = 256;

// What the layers above keep in the segment: all zero when it is made. Only the front of it has
// memory from the start, since most programs need no more and memory takes time to get.
inline constexpr uint32_t kSegmentAreaSize = 0x14B000;
inline constexpr uint32_t kSegmentFrontSize = 0x3000;

// The file of the home that the environment names. Two homes have two; the name tells no path.
std::string SegmentPath();

// The file that the process is attached or bound to, else the one that it would attach to now.
std::string SegmentPathInUse();

// The process is attached or bound to another file than `path`.
bool SegmentElsewhere(std::string const &path);

// Binds the process to the segment at `path`, whatever becomes of the environment. One that is
// attached to another gives that up as DetachSegment does. No thread may hold a mutex or a place.
void BindSegment(std::string const &path);

// Null if the segment cannot be had. Nothing that is read from the area may be trusted.
void *SegmentArea();

// Gets memory for a part of the area behind its front, which is not to be touched before. False if
// there is none.
bool AllocateInSegmentArea(uint32_t offset, uint32_t size);

// The words that processes sleep on to hear of each other; null if the segment cannot be had.
std::atomic<uint32_t> *SegmentEvent();

// `failed` if the segment cannot be had.
[[nodiscard]] MutexWait LockInSegment(SegmentMutex mutex, uint32_t milliseconds);

// False if the calling thread does not own it. A child of fork owns none.
bool UnlockInSegment(SegmentMutex mutex);

// Takes a place for the calling thread, one that nobody holds or whose holder died, and gives its
// number; kSegmentPlaces if all are held. Given back by the same thread.
uint32_t TakeSegmentPlace();
void LeaveSegmentPlace(uint32_t place);

// A living thread holds the place.
bool SegmentPlaceHeld(uint32_t place);

// The process that owns the mutex, as far as can be told without waiting; 0 if none does.
uint32_t SegmentMutexOwner(SegmentMutex mutex);

// Has the segment cared for around forks from now on, which else begins with its first use.
void PrepareSegmentForForks();

// Gives the segment up, and what the process was bound to; the last one to do so removes the file.
// It stays mapped, since other threads may be in the middle of something, and the kernel writes to
// the mutexes of threads that end.
void DetachSegment();

// For the end of the process, whose other threads may go on to the very last and have the segment
// for as long. Removes the file if no other process is attached, and takes `mutex` for good before
// that: what is done under it would be known to nobody who then comes. Where the mutex cannot be
// had soon the file is left; the next process makes it anew.
void LeaveSegment(SegmentMutex mutex);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_KERNEL_SHARED_SEGMENT_H_
