#ifndef ZOLT41_NOTIFY_CHANGE_TABLE_H_
#define ZOLT41_NOTIFY_CHANGE_TABLE_H_

#include <cstdint>
#include <vector>

#include "zolt41/notify/announcement.h"
#include "zolt41/notify/channel_layout.h"

namespace zolt {

// The records of the transaction that a Begin function opened, in shared memory: all processes
// write to the same one. A writer reserves a record, fills it and marks it ready; nothing waits for
// one that is being filled, so a writer that dies or is stopped meanwhile keeps nobody up. Its
// record is passed over, and used again once its thread is gone.

// Begins anew. The channel mutex is held.
void ClearTable(ChannelArea *channel);

// Adds a record, cut to its fields. Nothing is added beyond the 128th. A null text is an empty one.
// Takes no lock, and does nothing where there is no channel.
void AppendChange(char const *name, char const *oldValue, char const *newValue);

// The records that are ready, in order. They stay where they are, and whole, as long as the channel
// mutex is held.
std::vector<ChangeText> ReadyChanges(ChannelArea const &channel);

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_CHANGE_TABLE_H_
