#ifndef ZOLT41_NOTIFY_ANNOUNCEMENT_H_
#define ZOLT41_NOTIFY_ANNOUNCEMENT_H_

#include <cstdint>
#include <span>
#include <string_view>

namespace zolt {

enum class ChangeType : uint32_t { modified = 0, removed = 1, created = 2 };

// One changed value; the texts lie elsewhere.
struct ChangeText {
  std::string_view name;
  std::string_view newValue;
  std::string_view oldValue;
};

// What listeners are told of one transaction on one section.
struct AnnouncementHead {
  uint32_t section;
  uint32_t alias;  // another id under which listeners may know the section, or 0
  uint32_t level;
  uint32_t extra;
  uint32_t type;  // a ChangeType, or whatever a stranger wrote
};

struct Announcement {
  AnnouncementHead head;
  std::span<ChangeText const> changes;  // at most 128
};

// Something was to be told that nobody can tell any more.
inline constexpr Announcement kGapAnnouncement = {{0xFFFFFFFF, 0, 0, 0, 0xFFFFFFFF}, {}};

constexpr bool IsGap(AnnouncementHead const &head) {
  return head.section == kGapAnnouncement.head.section && head.type == kGapAnnouncement.head.type;
}

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_ANNOUNCEMENT_H_
