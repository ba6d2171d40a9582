#include "zolt41/notify/notify_thread.h"

#include <algorithm>
#include <climits>
#include <mutex>
#include <vector>

#include "zolt41/notify/acknowledgements.h"
#include "zolt41/notify/announcement_ring.h"
#include "zolt41/notify/channel_objects.h"
#include "zolt41/notify/pref_notify.h"
#include "zolt41/notify/subscriber_list.h"
#include "zolt41/platform/kernel/futex.h"
#include "zolt41/platform/kernel/thread.h"

namespace zolt {
namespace {

// All but the two words is guarded by the lock of the subscribers.
struct Notifier {
  bool wanted = false;   // between InitPrefs and DisposeZOLT
  bool running = false;  // in this process: the thread is not in the child of a fork
  bool stopping = false;
  bool listening = false;
  bool waits = false;  // on the event that all processes share
  uint32_t place = kSegmentPlaces;
  RingReader reader;
  Thread thread;
  std::atomic<uint32_t> placed{0};    // the thread can be counted among those who are to answer
  std::atomic<uint32_t> commands{0};  // counts what the thread is told while it does not listen
};

Notifier &TheNotifier() {
  static auto *const notifier = new Notifier();
  return *notifier;
}

std::unique_lock<RecursiveMutex> Lock() {
  return std::unique_lock(SubscriberList::The().lock());
}

ProcessSlot *OwnSlot(Notifier const &notifier) {
  return notifier.place < kSegmentPlaces ? &Channel()->slots[notifier.place] : nullptr;
}

void ShowListening(Notifier const &notifier) {
  if (ProcessSlot *const slot = OwnSlot(notifier)) {
    slot->listening.store(notifier.listening ? ThisProcess() : 0);
  }
}

void Wake(Notifier *notifier) {
  notifier->commands.fetch_add(1);
  WakeSleepers(&notifier->commands, INT_MAX);
  if (notifier->waits) PulseEvent(NotifyEvent());
}

void TakePlace(Notifier *notifier) {
  uint32_t const place = TakeSegmentPlace();
  auto const guard = Lock();
  ChannelArea *const channel = Channel();
  channel->block.threadCount.fetch_add(1);
  notifier->place = place;
  ProcessSlot *const slot = OwnSlot(*notifier);
  if (slot == nullptr) return;
  slot->listening.store(0);
  slot->lagging.store(0);
  slot->awaited.store(0);
  slot->missed.store(0);
  slot->process.store(ThisProcess());
  uint32_t used = channel->slotsUsed.load();
  while (used <= place && !channel->slotsUsed.compare_exchange_weak(used, place + 1)) {
  }
  ShowListening(*notifier);
}

// A writer may have counted this process for an announcement that it does not come to hear.
void AnswerForAll(Notifier const &notifier) {
  AnswerFor(Channel(), notifier.place, LastAnnouncement(Channel()->ring));
}

void StopListening(Notifier *notifier) {
  if (!notifier->listening) return;
  notifier->listening = false;
  ShowListening(*notifier);
  AnswerForAll(*notifier);
}

void LeavePlace(Notifier *notifier) {
  auto const guard = Lock();
  StopListening(notifier);
  if (ProcessSlot *const slot = OwnSlot(*notifier)) slot->process.store(0);
  LeaveSegmentPlace(notifier->place);
  notifier->place = kSegmentPlaces;
  Channel()->block.threadCount.fetch_sub(1);
}

// Hands on what was heard, and gives how often something was lost on the way.
uint32_t HandOn(RingReader *reader) {
  SubscriberList &list = SubscriberList::The();
  if (IsGap(reader->head())) return 1 + list.DeliverGap();
  if (reader->count() == 0) return 0;
  return list.Deliver(reader->head(), reader->records().data(),
                      static_cast<int32_t>(reader->count()));
}

// Hands on the next announcement, if there is one, and answers it. The lock is held.
bool HandOnOne(Notifier *notifier) {
  RingReader &reader = notifier->reader;
  RingReader::Result const result = reader.Read(Channel()->ring);
  if (result == RingReader::Result::none) return false;
  uint32_t const lost = result == RingReader::Result::heard
                            ? HandOn(&reader)
                            : std::max(reader.missed(), 1U) + SubscriberList::The().DeliverGap();
  if (ProcessSlot *const slot = OwnSlot(*notifier)) slot->missed.fetch_add(lost);
  AnswerFor(Channel(), notifier->place, reader.number());
  return true;
}

// The subscribers' threads are woken last: they want the lock, and the writer waits.
bool HearOne(Notifier *notifier) {
  std::vector<uint32_t> threads;
  {
    auto const guard = Lock();
    if (!HandOnOne(notifier)) return false;
    threads = SubscriberList::The().TakeThreadsToWake();
  }
  for (uint32_t const thread : threads) WakeThread(thread);
  return true;
}

// False when the thread is to end.
bool SleepUntilTold(Notifier *notifier) {
  uint32_t const seen = notifier->commands.load();
  {
    auto const guard = Lock();
    if (notifier->stopping) return false;
    if (notifier->listening) return true;
  }
  SleepOn(&notifier->commands, seen, std::chrono::nanoseconds(-1));
  return true;
}

// Until there is nobody to hear any more, or the thread is to end.
void Listen(Notifier *notifier) {
  for (;;) {
    uint32_t const seen = PulseCount(NotifyEvent());
    while (HearOne(notifier)) {
    }
    {
      auto const guard = Lock();
      notifier->waits = notifier->listening && !notifier->stopping;
      if (!notifier->waits) return;
    }
    WaitForPulse(NotifyEvent(), seen);
    auto const guard = Lock();
    notifier->waits = false;
  }
}

void *Run(void *argument) {
  auto *const notifier = static_cast<Notifier *>(argument);
  TakePlace(notifier);
  notifier->placed.store(1);
  WakeSleepers(&notifier->placed, INT_MAX);
  while (SleepUntilTold(notifier)) Listen(notifier);
  LeavePlace(notifier);
  return nullptr;
}

void StartIfWanted(Notifier *notifier) {
  if (!notifier->wanted || notifier->running || Channel() == nullptr) return;
  notifier->stopping = false;
  notifier->listening = false;
  notifier->placed.store(0);
  notifier->running = notifier->thread.Start(Run, notifier);
}

void AfterForkInChild() {
  SubscriberList::The().StartOverInChild();
  Notifier &notifier = TheNotifier();
  notifier.running = false;
  notifier.listening = false;
  notifier.waits = false;
  notifier.place = kSegmentPlaces;
}

void ListenFromNow(Notifier *notifier) {
  StartIfWanted(notifier);
  if (!notifier->running || notifier->listening || !PrepareWords(Channel())) return;
  notifier->reader.StartAtEnd(Channel()->ring);
  notifier->listening = true;
  ShowListening(*notifier);
  AnswerForAll(*notifier);
  Wake(notifier);
}

}  // namespace

// Last to be set up is first to be asked: the lock of the subscribers comes before those of the
// queues, which their list sets up, and of the segment.
void PrepareNotificationForForks() {
  PrepareSegmentForForks();
  SubscriberList::The();
  CallAroundForks([] { SubscriberList::The().lock().lock(); },
                  [] { SubscriberList::The().lock().unlock(); }, AfterForkInChild);
}

void StartNotificationThread() {
  auto const guard = Lock();
  Notifier &notifier = TheNotifier();
  if (notifier.wanted) return;
  notifier.wanted = true;
  SubscriberList::The().RemoveAll();
  StartIfWanted(&notifier);
}

void StopNotificationThread() {
  Notifier &notifier = TheNotifier();
  Thread thread;
  {
    auto const guard = Lock();
    notifier.wanted = false;
    if (!notifier.running) return;
    notifier.stopping = true;
    thread = notifier.thread;
    Wake(&notifier);
  }
  thread.Join();
  auto const guard = Lock();
  notifier.running = false;
}

}  // namespace zolt

void AddNotificationObject(CPrefNotify *subscriber) {
  zolt::Notifier &notifier = zolt::TheNotifier();
  {
    auto const guard = zolt::Lock();
    zolt::SubscriberList::The().Add(subscriber);
    zolt::ListenFromNow(&notifier);
    if (!notifier.running) return;
  }
  // From here on writers wait for this process too.
  while (notifier.placed.load() == 0) {
    zolt::SleepOn(&notifier.placed, 0, std::chrono::nanoseconds(-1));
  }
}

void RemoveNotificationObject(CPrefNotify *subscriber) {
  auto const guard = zolt::Lock();
  zolt::SubscriberList &list = zolt::SubscriberList::The();
  list.Remove(subscriber);
  if (list.empty()) zolt::StopListening(&zolt::TheNotifier());
}
