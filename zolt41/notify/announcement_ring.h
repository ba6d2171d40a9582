#ifndef ZOLT41_NOTIFY_ANNOUNCEMENT_RING_H_
#define ZOLT41_NOTIFY_ANNOUNCEMENT_RING_H_

#include <cstdint>
#include <vector>

#include "zolt41/notify/announcement.h"
#include "zolt41/notify/channel_layout.h"

namespace zolt {

// The announcements of all writers, in order, in one block of words in shared memory that is
// written round and round. A listener reads at its own pace. It copies first and then looks whether
// what it copied may have been overwritten meanwhile, so nothing mixed is ever delivered; what it
// lost it knows by the numbers that announcements bear, one after the other.

// Writes an announcement behind the others, with the next number. The channel mutex is held. A
// writer that dies in here leaves nothing that is read. Wakes nobody.
void Publish(Ring *ring, Announcement const &announcement);

// The number of the last announcement.
uint32_t LastAnnouncement(Ring const &ring);

class RingReader {
 public:
  enum class Result { none, heard, gap };

  // Goes to the end: what was announced up to now is not heard.
  void StartAtEnd(Ring const &ring);

  // The next announcement. After a gap reading goes on at the end.
  Result Read(Ring const &ring);

  // What was heard; valid until the next Read.
  AnnouncementHead const &head() const { return head_; }
  std::vector<NotificationInfo> &records() { return records_; }
  uint32_t count() const { return count_; }

  // How many announcements the gap is of.
  uint32_t missed() const { return missed_; }

  // The number of the last announcement that was heard or is known to be lost.
  uint32_t number() const { return number_; }

 private:
  bool Copy(Ring const &ring, uint32_t end);
  bool Decode();

  uint32_t position_ = 0;
  uint32_t number_ = 0;
  uint32_t missed_ = 0;
  uint32_t count_ = 0;
  AnnouncementHead head_{};
  std::vector<uint64_t> words_;
  std::vector<NotificationInfo> records_;
};

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_ANNOUNCEMENT_RING_H_
