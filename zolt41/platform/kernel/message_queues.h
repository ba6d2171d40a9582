#ifndef ZOLT41_PLATFORM_KERNEL_MESSAGE_QUEUES_H_
#define ZOLT41_PLATFORM_KERNEL_MESSAGE_QUEUES_H_

#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "zolt41/platform/kernel/message_loop.h"

namespace zolt {

// Sleeps, and nothing else.
void WaitPlainly(std::atomic<uint32_t> *word, uint32_t expected);

// The queue of one thread with its hooks, guarded by the lock of all queues.
class MessageQueue {
 public:
  ~MessageQueue();

  // Does not wake the thread.
  void Push(MSG const &message, bool own);
  void Wake();

  // Copies the first message from `first` to `last`, or WM_QUIT, and takes it out if asked to.
  bool Take(MSG *message, uint32_t first, uint32_t last, bool remove);

  // The descriptor, made at the first call. It can be read exactly while there are messages.
  int Descriptor();

  // In the child of a fork: no messages, and a descriptor of the child's own under the old number.
  void Renew();

  size_t size() const { return messages_.size(); }
  bool full() const { return others_ >= kLimit; }

  std::deque<MSG> TakeAll();

  std::atomic<uint32_t> arrivals{0};  // what the thread sleeps on while it waits
  bool waits = false;
  std::map<HHOOK, HOOKPROC> hooks;  // a later one has a greater handle

 private:
  static constexpr uint32_t kLimit = 10000;

  struct Waiting {
    MSG message;
    bool own;  // the library's, which does not count
  };

  void ShowInDescriptor();

  std::deque<Waiting> messages_;
  uint32_t others_ = 0;
  int descriptor_ = -1;
  bool shown_ = false;
};

// All queues of the process.
class MessageQueues {
 public:
  static MessageQueues &The();

  // The calling thread's, made at the first call. Null only while the thread ends.
  MessageQueue *Own();
  uint32_t OwnId();

  // With the lock held. Null if there is none.
  MessageQueue *Find(uint32_t thread);

  std::mutex lock;
  HHOOK lastHook = 0;
  std::unordered_map<HHOOK, uint32_t> hookThreads;
  std::atomic<DroppedMessage> dropped{nullptr};
  std::atomic<MessageWait> wait{WaitPlainly};

 private:
  friend struct OwnQueue;

  MessageQueues() = default;
  void End(uint32_t thread);
  void AfterForkInChild();

  std::unordered_map<uint32_t, std::unique_ptr<MessageQueue>> queues_;
  std::atomic<uint32_t> lastThread_{0};
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_KERNEL_MESSAGE_QUEUES_H_
