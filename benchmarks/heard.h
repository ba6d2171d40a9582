#ifndef ZOLT41_BENCH_HEARD_H_
#define ZOLT41_BENCH_HEARD_H_

#include <atomic>
#include <cstdint>

namespace zolt::bench {

int64_t MonotonicNanoseconds();

// What the watchers of a group have heard, in memory that they share with the sender. Only the last
// of them to hear rings the sender's bell, so that nobody is woken between the first and the last.
class Heard {
 public:
  // Where a watcher finds the two descriptors.
  static constexpr int kMemory = 3;
  static constexpr int kBell = 4;

  // A group's own, both empty; the descriptors go to no other program by themselves.
  static Heard Make();
  static Heard OfThisWatcher() { return {kMemory, kBell}; }
  ~Heard();
  Heard(Heard const &) = delete;
  Heard &operator=(Heard const &) = delete;

  int memory() const { return memory_; }
  int bell() const { return bell_; }

  // The sender: a news that is to be heard `times` times, named by the time at which it was sent.
  void Expect(int64_t sent, uint32_t times);
  // Whether all have heard it within so many milliseconds.
  bool Await(int milliseconds);
  // How long the last one took.
  double LatestNanoseconds() const;
  uint32_t count() const { return area_->count; }

  // A watcher: heard a news with this text, which begins with the time at which it was sent.
  void Note(char const *text);
  // A watcher: heard that there is news, and not which: that which is expected.
  void NoteExpected();

 private:
  struct Area {
    std::atomic<int64_t> expected;
    std::atomic<int64_t> latest;
    std::atomic<uint32_t> left;
    std::atomic<uint32_t> count;  // all news, also those that nobody expects
  };

  Heard(int memory, int bell);
  void NoteHeard(int64_t sent, int64_t now);

  int memory_;
  int bell_;
  Area *area_;
};

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_HEARD_H_
