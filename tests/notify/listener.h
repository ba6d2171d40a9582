#ifndef ZOLT41_TESTS_NOTIFY_LISTENER_H_
#define ZOLT41_TESTS_NOTIFY_LISTENER_H_

#include <poll.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "zolt41/notify/pref_notify.h"

namespace zolt::testing {

// Writes down what it hears: type, section, level, extra, and each record.
class Listener : public CPrefNotify {
 public:
  using CPrefNotify::changedId;
  using CPrefNotify::changedRecords;
  using CPrefNotify::CPrefNotify;

  void OnKeyChanged() override { Note("modified"); }
  void OnKeyRemoved() override { Note("removed"); }
  void OnKeyCreated() override { Note("created"); }

  NotificationInfo const &Record(int32_t index) const {
    return *static_cast<NotificationInfo const *>(changedRecords.GetAt(index));
  }

  std::vector<std::string> heard;
  std::function<void(Listener *)> then = [](Listener *) {};

 private:
  void Note(char const *type) {
    char head[64];
    std::snprintf(head, sizeof head, "%s %08X %d %u", type, static_cast<uint32_t>(changedId),
                  changedLevel, changedExtra);
    std::string line = head;
    for (int32_t i = 0; i < changedRecords.GetSize(); i++) {
      NotificationInfo const &record = Record(i);
      line += std::string(" ") + record.name + "=" + record.oldValue + ">" + record.newValue;
    }
    heard.push_back(line);
    then(this);
  }
};

inline void Drop(CPrefNotify *listener) {
  RemoveNotificationObject(listener);
  listener->Release();
}

// Delivers until `done`, or for 20 seconds without a message; gives whether it is done.
inline bool DeliverUntil(std::function<bool()> const &done) {
  while (!done()) {
    pollfd poll{ZOLTQueueDescriptor(), POLLIN, 0};
    if (::poll(&poll, 1, 20000) != 1) return false;
    ZOLTDeliver();
  }
  return true;
}

// The same by a thread that waits for its messages.
inline bool GetMessagesUntil(std::function<bool()> const &done) {
  std::promise<void> ended;
  std::atomic<int> count = 0;
  std::thread watch([&count, in_time = ended.get_future(), thread = GetCurrentThreadId()] {
    for (int before = -1; before != count;) {
      before = count;
      if (in_time.wait_for(std::chrono::seconds(20)) == std::future_status::ready) return;
    }
    PostThreadMessageA(thread, WM_QUIT, 0, 0);
  });
  MSG message;
  bool got = true;
  for (; got && !done(); count++) got = GetMessageA(&message, 0, 0, 0) == 1;
  ended.set_value();
  watch.join();
  return got;
}

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_NOTIFY_LISTENER_H_
