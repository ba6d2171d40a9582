#include "zolt41/platform/kernel/shared_segment.h"

#include <pthread.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <mutex>
#include <new>
#include <string>

#include "zolt41/platform/system/home.h"
#include "zolt41/platform/system/shared_file.h"
#include "zolt41/platform/system/timed_mutex.h"

namespace zolt {
namespace {

constexpr uint32_t kMutexes = static_cast<uint32_t>(SegmentMutex::count);

struct Segment {
  SharedHeader header;
  alignas(64) std::array<RobustMutex, kMutexes> mutexes;
  alignas(64) std::array<RobustMutex, kSegmentPlaces> places;
  alignas(64) std::atomic<uint32_t> event;
  alignas(4096) std::array<char, kSegmentAreaSize> area;
};
static_assert(sizeof(Segment) == 0x3000 + kSegmentAreaSize);

struct Attachment {
  std::mutex lock;
  SharedFile file;
  std::string path;  // what it is attached or bound to, or none
  std::chrono::steady_clock::time_point nextTry;
  std::atomic<Segment *> segment{nullptr};
};

// Where it could not be had, it is asked for again after this time.
constexpr auto kTryAgain = std::chrono::seconds(10);

// How long the end of a process waits for another of its threads, in milliseconds: longer than End
// takes.
constexpr uint32_t kEndWait = 200;

// A mutex that the calling thread has taken and not given back, how often, and in which segment: it
// may have been detached since.
struct Taken {
  Segment *segment;
  uint32_t count;
};
thread_local std::array<Taken, kMutexes> taken{};

Attachment &TheAttachment();

// The block stays mapped; the next use attaches anew.
void Forget(Attachment *attachment) {
  attachment->file.Abandon();
  attachment->segment.store(nullptr, std::memory_order_release);
  attachment->nextTry = {};
}

void InChild() {
  Attachment &attachment = TheAttachment();
  RenewInChild(&attachment.lock);
  taken = {};
  if (attachment.file.ReattachInChild()) return;
  Forget(&attachment);
}

Attachment *MakeAttachment() {
  pthread_atfork([] { TheAttachment().lock.lock(); }, [] { TheAttachment().lock.unlock(); },
                 InChild);
  return new Attachment();
}

// Never destroyed: threads may still wait while the process ends.
Attachment &TheAttachment() {
  static auto *const attachment = MakeAttachment();
  return *attachment;
}

void Reset(void *block, bool) {
  auto *segment = static_cast<Segment *>(block);
  for (RobustMutex &mutex : segment->mutexes) InitRobustMutex(&mutex);
  for (RobustMutex &mutex : segment->places) InitRobustMutex(&mutex);
}

std::string PathOf(Attachment const &attachment) {
  return attachment.path.empty() ? SegmentPath() : attachment.path;
}

Segment *Attach() {
  Attachment &attachment = TheAttachment();
  Segment *segment = attachment.segment.load(std::memory_order_acquire);
  if (segment != nullptr) return segment;
  std::lock_guard const guard(attachment.lock);
  segment = attachment.segment.load(std::memory_order_relaxed);
  auto const now = std::chrono::steady_clock::now();
  if (segment == nullptr && now >= attachment.nextTry) {
    attachment.nextTry = now + kTryAgain;
    // The stores work without it, so its failures are none of theirs, and hide none of theirs.
    FirstFailure before;
    before.Note();
    SharedFile::Format const format{0x315F474553535A5A, 5, sizeof(Segment),
                                    offsetof(Segment, area) + kSegmentFrontSize};
    std::string const path = PathOf(attachment);
    if (attachment.file.Attach(path, SharedFile::Owner::self, format, Reset) == Failure::none &&
        attachment.file.ForeignNamespace()) {
      attachment.file.Detach();
    }
    ClearFailure();
    segment = static_cast<Segment *>(attachment.file.block());
    if (segment != nullptr) attachment.path = path;
    attachment.segment.store(segment, std::memory_order_release);
  }
  return segment;
}

bool Took(RobustMutex *mutex, uint32_t milliseconds = 0) {
  MutexWait const wait = LockRobustMutex(mutex, milliseconds);
  return wait == MutexWait::got || wait == MutexWait::abandoned;
}

// The last to be attached removes the file.
void GiveUp(Attachment *attachment) {
  if (attachment->file.TakeAlone()) attachment->file.Unlink();
  Forget(attachment);
}

}  // namespace

void PrepareSegmentForForks() {
  TheAttachment();
}

std::string SegmentPath() {
  uint64_t hash = 0xCBF29CE484222325;
  // A home that is reached through links is the same home.
  std::error_code failed;
  std::string const home = ResolveHomes().user;
  std::string const resolved = std::filesystem::weakly_canonical(home, failed).string();
  for (char const c : failed ? home : resolved) {
    hash = (hash ^ static_cast<uint8_t>(c)) * 0x100000001B3;
  }
  char name[64];
  std::snprintf(name, sizeof name, "/dev/shm/zolt41-%u-%016llx", geteuid(),
                static_cast<unsigned long long>(hash));
  return name;
}

std::string SegmentPathInUse() {
  Attachment &attachment = TheAttachment();
  std::lock_guard const guard(attachment.lock);
  return PathOf(attachment);
}

bool SegmentElsewhere(std::string const &path) {
  Attachment &attachment = TheAttachment();
  std::lock_guard const guard(attachment.lock);
  return !attachment.path.empty() && attachment.path != path;
}

void BindSegment(std::string const &path) {
  Attachment &attachment = TheAttachment();
  std::lock_guard const guard(attachment.lock);
  if (!attachment.path.empty() && attachment.path != path) GiveUp(&attachment);
  attachment.path = path;
}

MutexWait LockInSegment(SegmentMutex mutex, uint32_t milliseconds) {
  Segment *segment = Attach();
  if (segment == nullptr) return MutexWait::failed;
  auto const index = static_cast<size_t>(mutex);
  MutexWait const wait = LockRobustMutex(&segment->mutexes[index], milliseconds);
  if (wait == MutexWait::got || wait == MutexWait::abandoned) {
    taken[index] = {segment, taken[index].count + 1};
  }
  return wait;
}

bool UnlockInSegment(SegmentMutex mutex) {
  auto const index = static_cast<size_t>(mutex);
  if (taken[index].count == 0) return false;
  taken[index].count--;
  UnlockRobustMutex(&taken[index].segment->mutexes[index]);
  return true;
}

void *SegmentArea() {
  Segment *segment = Attach();
  return segment == nullptr ? nullptr : segment->area.data();
}

bool AllocateInSegmentArea(uint32_t offset, uint32_t size) {
  Attachment &attachment = TheAttachment();
  std::lock_guard const guard(attachment.lock);
  return attachment.segment.load(std::memory_order_relaxed) != nullptr &&
         attachment.file.Allocate(offsetof(Segment, area) + offset, size);
}

std::atomic<uint32_t> *SegmentEvent() {
  Segment *segment = Attach();
  return segment == nullptr ? nullptr : &segment->event;
}

uint32_t TakeSegmentPlace() {
  Segment *segment = Attach();
  if (segment == nullptr) return kSegmentPlaces;
  uint32_t place = 0;
  while (place < kSegmentPlaces && !Took(&segment->places[place])) place++;
  return place;
}

void LeaveSegmentPlace(uint32_t place) {
  if (place >= kSegmentPlaces) return;
  UnlockRobustMutex(&Attach()->places[place]);
}

bool SegmentPlaceHeld(uint32_t place) {
  Segment *segment = Attach();
  if (segment == nullptr || place >= kSegmentPlaces) return false;
  // The kernel takes the owner out of the mutex of a thread that dies. Looked at and not tried: who
  // tries one that is free holds it for that moment.
  return RobustMutexOwner(&segment->places[place]) != 0;
}

uint32_t SegmentMutexOwner(SegmentMutex mutex) {
  Segment *segment = Attach();
  if (segment == nullptr) return 0;
  return ProcessOfThread(RobustMutexOwner(&segment->mutexes[static_cast<size_t>(mutex)]));
}

void DetachSegment() {
  Attachment &attachment = TheAttachment();
  std::lock_guard const guard(attachment.lock);
  GiveUp(&attachment);
  attachment.path.clear();
}

void LeaveSegment(SegmentMutex mutex) {
  Attachment &attachment = TheAttachment();
  std::lock_guard const guard(attachment.lock);
  Segment *const segment = attachment.segment.load(std::memory_order_relaxed);
  if (segment == nullptr || !attachment.file.TakeAlone()) return;
  if (Took(&segment->mutexes[static_cast<size_t>(mutex)], kEndWait)) {
    attachment.file.Unlink();
  } else {
    attachment.file.Share();
  }
}

}  // namespace zolt
