#include "zolt41/platform/kernel/message_queues.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "zolt41/platform/kernel/futex.h"
#include "zolt41/platform/kernel/thread.h"
#include "zolt41/platform/system/timed_mutex.h"

namespace zolt {

void WaitPlainly(std::atomic<uint32_t> *word, uint32_t expected) {
  SleepOn(word, expected, std::chrono::nanoseconds(-1));
}

MessageQueue::~MessageQueue() {
  if (descriptor_ >= 0) close(descriptor_);
}

void MessageQueue::Push(MSG const &message, bool own) {
  messages_.push_back({message, own});
  if (!own) others_++;
  ShowInDescriptor();
}

void MessageQueue::Wake() {
  if (!waits) return;
  arrivals.fetch_add(1);
  WakeSleepers(&arrivals, 1);
}

bool MessageQueue::Take(MSG *message, uint32_t first, uint32_t last, bool remove) {
  auto const wanted = [first, last](Waiting const &waiting) {
    uint32_t const number = waiting.message.message;
    return last == 0 || number == WM_QUIT || (number >= first && number <= last);
  };
  auto const found = std::ranges::find_if(messages_, wanted);
  if (found == messages_.end()) return false;
  *message = found->message;
  if (!remove) return true;
  if (!found->own) others_--;
  messages_.erase(found);
  ShowInDescriptor();
  return true;
}

std::deque<MSG> MessageQueue::TakeAll() {
  std::deque<MSG> all;
  for (Waiting const &waiting : messages_) all.push_back(waiting.message);
  messages_.clear();
  others_ = 0;
  ShowInDescriptor();
  return all;
}

int MessageQueue::Descriptor() {
  if (descriptor_ < 0) descriptor_ = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  ShowInDescriptor();
  return descriptor_;
}

void MessageQueue::ShowInDescriptor() {
  if (descriptor_ < 0 || shown_ == !messages_.empty()) return;
  uint64_t count = 1;
  // Neither can fail: the count goes from 0 to 1 and back.
  if (!shown_) {
    [[maybe_unused]] auto const written = write(descriptor_, &count, sizeof count);
  } else {
    [[maybe_unused]] auto const taken = read(descriptor_, &count, sizeof count);
  }
  shown_ = !shown_;
}

void MessageQueue::Renew() {
  messages_.clear();
  others_ = 0;
  shown_ = false;
  if (descriptor_ < 0) return;
  int const own = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  if (own < 0 || dup3(own, descriptor_, O_CLOEXEC) < 0) {
    // Rather none than the parent's.
    close(descriptor_);
    descriptor_ = -1;
  }
  if (own >= 0) close(own);
}

// A thread's end, for which its queue must wait.
struct OwnQueue {
  MessageQueue *queue = nullptr;
  uint32_t id = 0;

  ~OwnQueue();
};

namespace {

thread_local OwnQueue own;
thread_local bool ended = false;

}  // namespace

OwnQueue::~OwnQueue() {
  ended = true;
  if (queue != nullptr) MessageQueues::The().End(id);
}

MessageQueues &MessageQueues::The() {
  static auto *const queues = [] {
    CallAroundForks([] { The().lock.lock(); }, [] { The().lock.unlock(); },
                    [] { The().AfterForkInChild(); });
    // Never destroyed: threads may still run while the process ends.
    return new MessageQueues();
  }();
  return *queues;
}

uint32_t MessageQueues::OwnId() {
  Own();
  return own.id;
}

MessageQueue *MessageQueues::Own() {
  if (own.queue != nullptr || ended) return own.queue;
  std::lock_guard const guard(lock);
  own.id = ++lastThread_;
  own.queue = queues_.emplace(own.id, std::make_unique<MessageQueue>()).first->second.get();
  return own.queue;
}

MessageQueue *MessageQueues::Find(uint32_t thread) {
  auto const found = queues_.find(thread);
  return found == queues_.end() ? nullptr : found->second.get();
}

void MessageQueues::End(uint32_t thread) {
  std::unique_ptr<MessageQueue> queue;
  {
    std::lock_guard const guard(lock);
    auto const found = queues_.find(thread);
    queue = std::move(found->second);
    queues_.erase(found);
    std::erase_if(hookThreads, [thread](auto const &hook) { return hook.second == thread; });
  }
  own.queue = nullptr;
  DroppedMessage const tell = dropped.load();
  for (MSG const &message : queue->TakeAll()) {
    if (tell != nullptr) tell(message);
  }
}

void MessageQueues::AfterForkInChild() {
  RenewInChild(&lock);
  // The other threads are not in the child; their queues go, and their ids with them.
  std::erase_if(queues_, [](auto const &entry) { return entry.second.get() != own.queue; });
  std::erase_if(hookThreads, [](auto const &hook) { return hook.second != own.id; });
  if (own.queue != nullptr) own.queue->Renew();
}

}  // namespace zolt
