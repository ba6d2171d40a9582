#ifndef ZOLT41_BENCH_WATCHERS_H_
#define ZOLT41_BENCH_WATCHERS_H_

#include <sys/types.h>

#include <functional>
#include <vector>

#include "benchmarks/heard.h"

namespace zolt::bench {

// Processes that run this same program with the argument `role`, until this object ends. All are
// ready when the constructor returns.
class Watchers {
 public:
  using Send = std::function<void(char const *text)>;

  Watchers(char const *role, size_t count);
  ~Watchers();
  Watchers(Watchers const &) = delete;
  Watchers &operator=(Watchers const &) = delete;

  // Sends until all hear, since some peers begin to listen in the background.
  void Settle(Send const &send);
  // Sends the time, and gives the nanoseconds until the last one has heard.
  double TimeToLast(Send const &send);
  // How many nanoseconds one of `count` news takes to be sent. None may be lost.
  double TimeToSend(Send const &send, uint32_t count);

  // Stops or kills one, and returns when it stands still.
  void Halt(size_t index, int signal);

 private:
  void Start(char const *role, int input, int output);
  void SendNow(Send const &send);

  Heard heard_ = Heard::Make();
  std::vector<pid_t> processes_;
  pid_t halted_ = -1;
  int end_ = -1;
};

// In a watcher: it is ready; and `end` is called, on a thread of its own, when the sender wants no
// more of it.
void ReadyUntil(std::function<void()> end);

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_WATCHERS_H_
