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
#include "zolt41/notify/waiting_thread.h"
#include "zolt41/platform/kernel/futex.h"
#include "zolt41/platform/kernel/thread.h"

namespace zolt {
namespace {

// All but the atomic words is guarded by the lock of the subscribers.
struct Notifier {
  bool wanted = false;   // between InitPrefs and DisposeZOLT
  bool running = false;  // in this process: the thread is not in the child of a fork
  bool stopping = false;
  bool listening = false;
  bool waits = false;    // on the event that all processes share
  bool counted = false;  // among the threads of all processes
  uint32_t place = kSegmentPlaces;
  RingReader reader;
  Thread thread;
  std::atomic<uint32_t> placed{0};    // the thread can be counted among those who are to answer
  std::atomic<uint32_t> commands{0};  // counts what the thread is told while it does not listen
  std::atomic<bool> late{false};      // there are subscribers that it cannot hear for yet
};

constexpr auto kTryAgain = std::chrono::seconds(10);

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

// The thread looks again at what there is to do, if it does not listen.
void Wake(Notifier *notifier) {
  notifier->commands.fetch_add(1);
  WakeSleepers(&notifier->commands, INT_MAX);
}

// As soon as there is a segment.
void TakePlace(Notifier *notifier) {
  ChannelArea *const channel = Channel();
  if (notifier->counted || channel == nullptr) return;
  uint32_t const place = TakeSegmentPlace();
  auto const guard = Lock();
  channel->block.threadCount.fetch_add(1);
  notifier->counted = true;
  notifier->place = place;
  ProcessSlot *const slot = OwnSlot(*notifier);
  if (slot == nullptr) {
    channel->unplaced.store(1);
    return;
  }
  slot->listening.store(0);
  // A writer may have counted the one that died here for living.
  AnswerForAll(channel, place);
  slot->missed.store(0);
  slot->waiting.store(0);
  slot->process.store(ThisProcess());
  uint32_t used = channel->slotsUsed.load();
  while (used <= place && !channel->slotsUsed.compare_exchange_weak(used, place + 1)) {
  }
  ShowListening(*notifier);
}

void StopListening(Notifier *notifier) {
  notifier->late.store(false);
  if (!notifier->listening) return;
  notifier->listening = false;
  ShowListening(*notifier);
  // A writer may have counted this process for an announcement that it does not come to hear.
  AnswerForAll(Channel(), notifier->place);
}

void LeavePlace(Notifier *notifier) {
  auto const guard = Lock();
  StopListening(notifier);
  if (!notifier->counted) return;
  notifier->counted = false;
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

// The subscribers' threads are woken last: they want the lock, and the writer waits. One is awake
// if it is given.
bool HearOne(Notifier *notifier, uint32_t awake = 0) {
  std::vector<uint32_t> threads;
  {
    auto const guard = Lock();
    if (!notifier->listening || !HandOnOne(notifier)) return false;
    threads = SubscriberList::The().TakeThreadsToWake();
  }
  for (uint32_t const thread : threads)
    if (thread != awake) WakeThread(thread);
  return true;
}

bool Start(Notifier *notifier);

// Listens to what is announced from now on, if there is anybody to hear it and all that it takes.
void ListenFromNow(Notifier *notifier) {
  SubscriberList &list = SubscriberList::The();
  if (!notifier->wanted || notifier->listening || list.empty()) return;
  ChannelArea *const channel = Channel();
  if (!Start(notifier) || channel == nullptr || !PrepareWords(channel)) {
    notifier->late.store(true);
    return;
  }
  notifier->reader.StartAtEnd(channel->ring);
  notifier->listening = true;
  ShowListening(*notifier);
  // A writer that published meanwhile did not see who listens here.
  if (LastAnnouncement(channel->ring) != notifier->reader.number()) PulseEvent(NotifyEvent());
  if (!notifier->late.exchange(false)) return;
  list.DeliverGap();
  for (uint32_t const thread : list.TakeThreadsToWake()) WakeThread(thread);
}

// Until there is somebody to hear; false when the thread is to end.
bool AwaitSubscribers(Notifier *notifier) {
  for (;;) {
    TakePlace(notifier);
    notifier->placed.store(1);
    WakeSleepers(&notifier->placed, INT_MAX);
    uint32_t const seen = notifier->commands.load();
    std::chrono::nanoseconds wait(-1);
    {
      auto const guard = Lock();
      if (notifier->stopping) return false;
      // Without a place nobody would know of it.
      if (notifier->counted && notifier->late.load()) ListenFromNow(notifier);
      if (notifier->listening && notifier->counted) return true;
      if (notifier->listening) continue;
      if (notifier->late.load()) wait = kTryAgain;
    }
    SleepOn(&notifier->commands, seen, wait);
  }
}

// Until there is nobody to hear any more, or the thread is to end.
void Listen(Notifier *notifier) {
  for (;;) {
    uint32_t const seen = PulseCount(NotifyEvent());
    while (HearOne(notifier)) {
      if (ProcessSlot *const slot = OwnSlot(*notifier)) slot->waiting.store(0);
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
  while (AwaitSubscribers(notifier)) Listen(notifier);
  LeavePlace(notifier);
  return nullptr;
}

// True if the thread runs.
bool Start(Notifier *notifier) {
  if (notifier->running) return true;
  notifier->stopping = false;
  notifier->listening = false;
  notifier->placed.store(0);
  notifier->running = notifier->thread.Start(Run, notifier);
  return notifier->running;
}

// A thread that listens needs to be told nothing, nor does one that still waits for the next
// announcement: the event wakes all processes.
void ListenAndTell(Notifier *notifier) {
  if (notifier->listening) return;
  ListenFromNow(notifier);
  if (notifier->running) Wake(notifier);
}

void AfterForkInChild() {
  SubscriberList::The().StartOverInChild();
  Notifier &notifier = TheNotifier();
  notifier.running = false;
  notifier.listening = false;
  notifier.waits = false;
  notifier.counted = false;
  notifier.late.store(false);
  notifier.place = kSegmentPlaces;
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
  SetMessageWait(WaitForMessageOrNews);
  SubscriberList::The().RemoveAll();
  if (Channel() != nullptr) static_cast<void>(Start(&notifier));
}

void StopNotificationThread() {
  Notifier &notifier = TheNotifier();
  Thread thread;
  {
    auto const guard = Lock();
    notifier.wanted = false;
    notifier.late.store(false);
    if (!notifier.running) return;
    notifier.stopping = true;
    thread = notifier.thread;
    Wake(&notifier);
    if (notifier.waits) PulseEvent(NotifyEvent());
  }
  thread.Join();
  auto const guard = Lock();
  notifier.running = false;
}

bool HearAll(uint32_t thread) {
  NotCancelled const whole;
  bool heard = false;
  while (HearOne(&TheNotifier(), thread)) heard = true;
  return heard;
}

ProcessSlot *SlotToHearFor(uint32_t thread) {
  auto const guard = Lock();
  Notifier const &notifier = TheNotifier();
  bool const hears = notifier.running && notifier.listening && !notifier.stopping &&
                     SubscriberList::The().HasThread(thread);
  return hears ? OwnSlot(notifier) : nullptr;
}

void ServeLateSubscribers() {
  Notifier &notifier = TheNotifier();
  if (!notifier.late.load(std::memory_order_relaxed)) return;
  auto const guard = Lock();
  ListenAndTell(&notifier);
}

}  // namespace zolt

void AddNotificationObject(CPrefNotify *subscriber) {
  zolt::Notifier &notifier = zolt::TheNotifier();
  // Before the lock is taken, since to attach may be to wait for other processes.
  zolt::Channel();
  {
    auto const guard = zolt::Lock();
    zolt::SubscriberList::The().Add(subscriber);
    zolt::ListenAndTell(&notifier);
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
