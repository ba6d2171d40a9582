#include "zolt41/notify/change_table.h"

#include <algorithm>
#include <string_view>

#include "zolt41/foundation/text_field.h"
#include "zolt41/notify/channel_objects.h"
#include "zolt41/platform/kernel/thread.h"

namespace zolt {
namespace {

// The mark of a record: the epoch in the upper half, then the thread, then what it does.
constexpr uint64_t kFilling = 1;
constexpr uint64_t kReady = 2;
constexpr uint64_t kStates = 3;

uint64_t Mark(uint32_t epoch, uint32_t thread, uint64_t state) {
  return uint64_t{epoch} << 32 | uint64_t{thread} << 2 | state;
}

bool Ready(uint64_t mark, uint32_t epoch) {
  return mark >> 32 == epoch && (mark & kStates) == kReady;
}

// Nobody can still be writing to the record, and it belongs to no transaction, or to one before
// that of `epoch`. Who was held up since he looked at the epoch may meet a later one.
bool Free(uint64_t mark, uint32_t epoch) {
  if (mark == 0) return true;
  auto const age = static_cast<int32_t>(epoch - static_cast<uint32_t>(mark >> 32));
  if ((mark & kStates) != kFilling) return age > 0;
  auto const thread = static_cast<uint32_t>(mark & 0xFFFFFFFF) >> 2;
  // A number that was given to another thread meanwhile only keeps the record from use for longer.
  return !ThreadLives(thread);
}

// The index of a record that only this call fills, or kTableRecords.
uint32_t Reserve(ChannelArea *channel, uint64_t *mark) {
  std::atomic<uint32_t> &count = channel->block.recordCount;
  uint32_t index = count.load(std::memory_order_relaxed);
  while (index < kTableRecords) {
    if (!count.compare_exchange_weak(index, index + 1)) continue;
    uint32_t const epoch = channel->table.epoch.load(std::memory_order_acquire);
    std::atomic<uint64_t> &word = channel->table.marks[index];
    uint64_t before = word.load(std::memory_order_relaxed);
    *mark = Mark(epoch, ThisThread(), kFilling);
    if (Free(before, epoch) && word.compare_exchange_strong(before, *mark)) {
      if (channel->table.epoch.load() == epoch) return index;
      // A Begin function came between, and what is told joins its transaction.
      word.store(0, std::memory_order_release);
    }
    index = count.load(std::memory_order_relaxed);
  }
  return kTableRecords;
}

std::string_view TextOf(char const *text) {
  return text == nullptr ? "" : text;
}

}  // namespace

void ClearTable(ChannelArea *channel) {
  channel->table.epoch.fetch_add(1);
  channel->block.recordCount.store(0);
}

void AppendChange(char const *name, char const *oldValue, char const *newValue) {
  ChannelArea *const channel = Channel();
  if (channel == nullptr || !PrepareRecords(channel)) return;
  uint64_t mark = 0;
  uint32_t const index = Reserve(channel, &mark);
  if (index >= kTableRecords) return;
  NotificationInfo &record = channel->records[index];
  FillField(TextOf(name), record.name);
  FillField(TextOf(newValue), record.newValue);
  FillField(TextOf(oldValue), record.oldValue);
  channel->table.marks[index].store((mark & ~kStates) | kReady, std::memory_order_release);
}

std::vector<ChangeText> ReadyChanges(ChannelArea const &channel) {
  uint32_t const count = std::min(channel.block.recordCount.load(), kTableRecords);
  uint32_t const epoch = channel.table.epoch.load();
  std::vector<ChangeText> changes;
  for (uint32_t i = 0; i < count; i++) {
    if (!Ready(channel.table.marks[i].load(std::memory_order_acquire), epoch)) continue;
    NotificationInfo const &record = channel.records[i];
    changes.push_back({TextIn(record.name), TextIn(record.newValue), TextIn(record.oldValue)});
  }
  return changes;
}

}  // namespace zolt
