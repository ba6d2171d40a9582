#include "zolt41/notify/transaction.h"

#include <vector>

#include "zolt41/notify/announce.h"
#include "zolt41/notify/change_table.h"
#include "zolt41/notify/channel_guard.h"
#include "zolt41/notify/channel_objects.h"

namespace {

using zolt::ChangeType;

void Begin(ChangeType type, int32_t id, int32_t level, uint32_t extra) {
  zolt::ChannelArea *const channel = zolt::Channel();
  if (channel == nullptr) return;
  channel->block.transactionType.store(static_cast<uint32_t>(type));
  zolt::ChannelGuard const guard(INFINITE);
  channel->block.sectionId.store(static_cast<uint32_t>(id));
  zolt::ClearTable(channel);
  channel->block.extra.store(extra);
  channel->block.level.store(static_cast<uint32_t>(level));
}

}  // namespace

void BeginPrefsModify(int32_t id, int32_t level, uint32_t extra) {
  Begin(ChangeType::modified, id, level, extra);
}

void BeginPrefsRemove(int32_t id, int32_t level, uint32_t extra) {
  Begin(ChangeType::removed, id, level, extra);
}

void BeginPrefsCreate(int32_t id, int32_t level, uint32_t extra) {
  Begin(ChangeType::created, id, level, extra);
}

void EndPrefsModify() {
  zolt::ChannelArea *const channel = zolt::Channel();
  if (channel == nullptr) return;
  zolt::ChannelGuard const guard(INFINITE);
  zolt::Announcing const announcing;
  std::vector<zolt::ChangeText> const changes = zolt::ReadyChanges(*channel);
  zolt::SharedBlock const &block = channel->block;
  zolt::Announce({{block.sectionId.load(), 0, block.level.load(), block.extra.load(),
                   block.transactionType.load()},
                  changes},
                 zolt::Pause::full);
}

void EndPrefsRemove() {
  EndPrefsModify();
}

void EndPrefsCreate() {
  EndPrefsModify();
}
