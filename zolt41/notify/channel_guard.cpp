#include "zolt41/notify/channel_guard.h"

#include <exception>
#include <new>

#include "zolt41/notify/announce.h"
#include "zolt41/notify/channel_objects.h"

namespace zolt {
namespace {

void TellWhatADeadWriterDidNot() {
  ChannelArea *const channel = Channel();
  if (channel == nullptr || channel->announcing.load() == 0) return;
  try {
    Announce(kGapAnnouncement, Pause::none);
    channel->announcing.store(0);
  } catch (std::bad_alloc const &) {
    // Left for the next.
  }
}

}  // namespace

ChannelGuard::ChannelGuard(uint32_t milliseconds) {
  uint32_t const result = WaitForSingleObject(ChannelMutex(), milliseconds);
  held_ = result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
  timedOut_ = result == WAIT_TIMEOUT;
  if (held_) TellWhatADeadWriterDidNot();
}

ChannelGuard::~ChannelGuard() {
  if (held_) ReleaseMutex(ChannelMutex());
}

Announcing::Announcing() : channel_(Channel()), thrown_(std::uncaught_exceptions()) {
  if (channel_ != nullptr) channel_->announcing.store(1);
}

Announcing::~Announcing() {
  if (channel_ != nullptr && std::uncaught_exceptions() == thrown_) channel_->announcing.store(0);
}

}  // namespace zolt
