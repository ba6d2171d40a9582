#ifndef ZOLT41_TESTS_NOTIFY_LISTENER_H_
#define ZOLT41_TESTS_NOTIFY_LISTENER_H_

#include <poll.h>

#include <atomic>
#include <functional>
#include <future>

#include "tests/prefs/prefs_fixture.h"
#include "zolt41/notify/pref_notify.h"
#include "zolt41/prefs/write_transaction.h"

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
    char line[64];
    std::snprintf(line, sizeof line, "%s %08X %d %u", type, static_cast<uint32_t>(changedId),
                  changedLevel, changedExtra);
    heard.emplace_back(line);
    for (int32_t i = 0; i < changedRecords.GetSize(); i++) {
      NotificationInfo const &record = Record(i);
      heard.back() +=
          std::string(" ") + record.name + "=" + record.oldValue + ">" + record.newValue;
    }
    then(this);
  }
};

// One that hears all; to be dropped.
inline Listener *ListenToAll() {
  auto *const all = new Listener();
  all->AddNotificationAll();
  AddNotificationObject(all);
  return all;
}

inline void Drop(CPrefNotify *listener) {
  RemoveNotificationObject(listener);
  listener->Release();
}

// A started library whose section Audio is changed and listened to.
class ChangeTest : public PrefsTest {
 protected:
  static constexpr auto kAudioId = static_cast<uint32_t>(kAudio);

  template <typename Kind = Listener>
  static Kind *Listen(Kind *listener = new Kind()) {
    listener->AddNotificationKey(0, kAudioId, 0);
    AddNotificationObject(listener);
    return listener;
  }
  void Change() {
    Transaction transaction(PrefLevelUser);
    transaction.SetStr(kAudioId, "V", std::to_string(++value_).c_str());
    ASSERT_EQ(transaction.Write(), Commit::done);
  }

 private:
  int value_ = 0;
};

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
