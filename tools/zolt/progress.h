#ifndef ZOLT41_TOOLS_ZOLT_PROGRESS_H_
#define ZOLT41_TOOLS_ZOLT_PROGRESS_H_

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "tools/zolt/settings.h"

namespace zolt::tool {

// A line on standard error that tells how far a work is that takes more than half a second, how
// fast it goes on, and how long it will take; it goes when the work ends. Drawn by a thread of its
// own, so that a step which takes long is seen, too.
class Progress {
 public:
  // What is being done now, and in how many steps; 0 if that is not known: then only their number
  // is shown.
  Progress(Settings const &settings, std::string what, size_t steps = 0);
  ~Progress();
  Progress(Progress const &) = delete;
  Progress &operator=(Progress const &) = delete;

  // The next piece of work.
  void Begin(std::string what, size_t steps = 0);
  void Step(size_t count = 1) { done_.fetch_add(count, std::memory_order_relaxed); }

 private:
  using Clock = std::chrono::steady_clock;

  void Draw();
  std::string Rate(size_t done) const;
  std::string LineNow();

  std::atomic<size_t> done_ = 0;
  std::mutex mutex_;  // of what follows
  std::condition_variable changed_;
  std::string what_;
  size_t steps_;
  Clock::time_point begun_ = Clock::now();
  bool ended_ = false;
  bool drawn_ = false;
  std::thread thread_;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_PROGRESS_H_
