#include "zolt41/services/mail_state.h"

#include "zolt41/notify/channel_objects.h"

namespace zolt {

void ShareNoMail() {
  if (ChannelArea *const channel = Channel()) channel->block.canMail.store(0);
}

void ShareMailState(uintptr_t entry, uintptr_t module) {
  ChannelArea *const channel = Channel();
  if (channel == nullptr) return;
  channel->block.mailEntry.store(static_cast<uint32_t>(entry));
  channel->block.mailModule.store(static_cast<uint32_t>(module));
  channel->block.canMail.store(entry != 0 ? 1 : 0);
}

}  // namespace zolt
