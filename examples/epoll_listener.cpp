// Hears changes in a program whose main loop is a plain epoll.
//
// The loop stands in epoll_loop.h, beside this file.
//
//   g++ -std=c++20 epoll_listener.cpp $(pkg-config --cflags --libs zolt41)

#include "epoll_loop.h"

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
  ListenUntilInputEnds();
  RemoveNotificationObject(listener);
  listener->Release();
  DisposeZOLT();
}
