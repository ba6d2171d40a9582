#ifndef ZOLT41_NOTIFY_CHANNEL_LAYOUT_H_
#define ZOLT41_NOTIFY_CHANNEL_LAYOUT_H_

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "zolt41/notify/notification_info.h"
#include "zolt41/platform/kernel/shared_segment.h"

namespace zolt {

// What the channel keeps in the shared segment. Any process of the user can write anything here at
// any time, so nothing that is read is trusted.

// 40 bytes that all users of the library share.
struct SharedBlock {
  // What the last process found that looked for mail; nobody believes it.
  std::atomic<uint32_t> mailEntry;
  std::atomic<uint32_t> mailModule;
  std::atomic<uint32_t> canMail;
  // The open transaction of a Begin function.
  std::atomic<uint32_t> sectionId;
  std::atomic<uint32_t> extra;
  std::atomic<uint32_t> level;
  std::atomic<uint32_t> recordCount;  // how many records of the table are reserved
  std::atomic<uint32_t> pendingAcks;  // for diagnosis; Acknowledgements has what counts
  std::atomic<uint32_t> threadCount;
  std::atomic<uint32_t> transactionType;
};
static_assert(sizeof(SharedBlock) == 40 && offsetof(SharedBlock, sectionId) == 12 &&
              offsetof(SharedBlock, recordCount) == 24 &&
              offsetof(SharedBlock, transactionType) == 36);

inline constexpr uint32_t kTableRecords = 128;

// For each record of the open transaction who writes it; see change_table.h.
struct Table {
  std::atomic<uint32_t> epoch;  // counts the Begin functions
  alignas(64) std::atomic<uint64_t> marks[kTableRecords];
};

// The announcements, oldest overwritten; see announcement_ring.h.
struct Ring {
  static constexpr uint32_t kWords = 0x20000;

  std::atomic<uint64_t> published;
  std::atomic<uint32_t> reserved;
  alignas(4096) std::atomic<uint64_t> words[kWords];
};

// A process that listens. Its notification thread holds the segment's place of the same number.
struct ProcessSlot {
  std::atomic<uint32_t> process;
  std::atomic<uint32_t> listening;  // the process again if it hears announcements, else 0
  std::atomic<uint32_t> awaited;    // the announcement that it has still to answer, else 0
  std::atomic<uint32_t> lagging;    // it let a writer wait in vain
  std::atomic<uint32_t> missed;     // announcements that were overwritten before it came
  std::atomic<uint32_t> waiting;    // see waiting_thread.h
};

// Who has still to answer; see acknowledgements.h.
struct Answers {
  std::atomic<uint64_t> open;
  std::atomic<uint32_t> writerSleeps;
};

struct ChannelArea {
  SharedBlock block;
  alignas(64) Answers answers;
  std::atomic<uint32_t> announcing;  // see Announcing
  // The parts behind the front have memory.
  std::atomic<uint32_t> wordsReady;
  std::atomic<uint32_t> recordsReady;
  std::atomic<uint32_t> slotsUsed;  // no slot from this one on was ever taken
  std::atomic<uint32_t> alerts;     // counted up to wake the waiting threads
  std::atomic<uint32_t> unplaced;   // not 0 if a process ever found no slot
  alignas(64) ProcessSlot slots[kSegmentPlaces];
  alignas(64) Table table;
  Ring ring;
  NotificationInfo records[kTableRecords];
};
static_assert(sizeof(NotificationInfo[kTableRecords]) == 0x48000);
static_assert(sizeof(ChannelArea) == kSegmentAreaSize &&
              offsetof(ChannelArea, ring) + offsetof(Ring, words) == kSegmentFrontSize);
static_assert(std::atomic<uint64_t>::is_always_lock_free);

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_CHANNEL_LAYOUT_H_
