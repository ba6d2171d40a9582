#ifndef ZOLT41_NOTIFY_CHANNEL_STATUS_H_
#define ZOLT41_NOTIFY_CHANNEL_STATUS_H_

#include <cstdint>
#include <vector>

namespace zolt {

struct ListenerStatus {
  uint32_t process;
  bool listening;
  bool lagging;
  uint32_t missed;
};

struct ChannelStatus {
  bool usable;
  uint32_t announcements;
  uint32_t holder;  // the process that holds the channel mutex, or 0
  std::vector<ListenerStatus> listeners;
};

// Attaches this process, which makes the segment if there is none.
ChannelStatus InspectChannel();

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_CHANNEL_STATUS_H_
