#include "zolt41/notify/channel_objects.h"
#include "zolt41/notify/notify_thread.h"
#include "zolt41/platform/registry/hive_status.h"

// What a process holds from the moment that it loads the library until it ends or unloads it.

namespace {

[[gnu::constructor]] void AttachProcess() {
  zolt::PrepareNotificationForForks();
  zolt::OpenChannelObjects();
}

[[gnu::destructor]] void DetachProcess() {
  zolt::StopNotificationThread();
  zolt::LeaveChannelObjects();
  zolt::LeaveHives();
}

}  // namespace
