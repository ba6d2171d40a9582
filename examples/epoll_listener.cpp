// Hears changes in a program whose main loop is a plain epoll.
//
//   g++ -std=c++20 epoll_listener.cpp $(pkg-config --cflags --libs zolt41)

#include <sys/epoll.h>
#include <unistd.h>

#include <cstdio>

#include "zolt41/zolt41.h"

namespace {

class Listener : public CPrefNotify {
 public:
  void OnKeyChanged() override { Show("modified"); }
  void OnKeyRemoved() override { Show("removed"); }
  void OnKeyCreated() override { Show("created"); }

 private:
  void Show(char const *type) {
    for (int32_t i = 0; i < changedRecords.GetSize(); i++) {
      auto const *record = static_cast<NotificationInfo const *>(changedRecords.GetAt(i));
      std::printf("%s %s: %s -> %s\n", type, record->name, record->oldValue, record->newValue);
    }
    std::fflush(stdout);
  }
};

}  // namespace

int main() {
  InitZOLT();
  InitPrefs(nullptr);
  auto *listener = new Listener();
  listener->AddNotificationAll();
  AddNotificationObject(listener);

  int const loop = epoll_create1(EPOLL_CLOEXEC);
  for (int const descriptor : {ZOLTQueueDescriptor(), STDIN_FILENO}) {
    epoll_event event = {EPOLLIN, {}};
    event.data.fd = descriptor;
    epoll_ctl(loop, EPOLL_CTL_ADD, descriptor, &event);
  }
  std::puts("listening; end the input to stop");
  std::fflush(stdout);
  for (;;) {
    epoll_event event{};
    if (epoll_wait(loop, &event, 1, -1) != 1) continue;
    if (event.data.fd == STDIN_FILENO) {
      char bytes[256];
      if (read(STDIN_FILENO, bytes, sizeof bytes) <= 0) break;
    } else {
      ZOLTDeliver();
    }
  }

  RemoveNotificationObject(listener);
  listener->Release();
  close(loop);
  DisposeZOLT();
}
