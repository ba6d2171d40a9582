#include "benchmarks/news_ours.h"

#include "benchmarks/heard.h"
#include "benchmarks/watchers.h"

namespace zolt::bench {
namespace {

class Subscriber : public CPrefNotify {
 public:
  void OnKeyCreated() override { Note(); }
  void OnKeyChanged() override { Note(); }

 private:
  void Note() {
    for (int32_t i = 0; i < changedRecords.GetSize(); i++)
      heard_.Note(static_cast<NotificationInfo *>(changedRecords[i])->newValue);
  }

  Heard heard_ = Heard::OfThisWatcher();
};

}  // namespace

void OurNews::Send(char const *text) {
  Transaction transaction(PrefLevelUser);
  transaction.SetStr(store_.section(), store_.names()[0].c_str(), text);
  Require(transaction.Write() == Commit::done, "our transaction was not kept");
}

void WatchOurs() {
  OurLibrary const library;
  OurStore const store(Names(1), "News");
  auto *const subscriber = new Subscriber;
  subscriber->AddNotificationID(static_cast<int32_t>(store.section()), 0, 0);
  AddNotificationObject(subscriber);
  uint32_t const thread = GetCurrentThreadId();
  ReadyUntil([thread] { PostThreadMessageA(thread, WM_QUIT, 0, 0); });
  MSG message;
  while (GetMessageA(&message, 0, 0, 0) > 0) DispatchMessageA(&message);
  RemoveNotificationObject(subscriber);
  subscriber->Release();
}

}  // namespace zolt::bench
