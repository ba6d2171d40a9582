// Writes one value every millisecond, in turn to four sections of its own, and stops when its
// standard input ends. The first byte on its standard output says that it has begun.

#include <poll.h>
#include <time.h>
#include <unistd.h>

#include <deque>
#include <string>

#include "benchmarks/our_store.h"

namespace {

constexpr size_t kSections = 4;
constexpr size_t kValuesEach = 16;
constexpr long kMillisecond = 1'000'000;
constexpr long kSecond = 1'000'000'000;

bool InputEnded() {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return poll(&input, 1, 0) != 0;
}

void SleepUntil(timespec *due) {
  due->tv_nsec += kMillisecond;
  if (due->tv_nsec >= kSecond) {
    due->tv_nsec -= kSecond;
    due->tv_sec++;
  }
  clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, due, nullptr);
}

}  // namespace

int main() {
  using namespace zolt::bench;
  OurLibrary const library;
  std::deque<OurStore> sections;
  for (size_t i = 0; i < kSections; i++) {
    sections.emplace_back(Names(kValuesEach), ("Elsewhere" + std::to_string(i)).c_str());
    sections.back().Fill();
  }
  Require(write(STDOUT_FILENO, "b", 1) == 1, "nobody waits");
  timespec due{};
  clock_gettime(CLOCK_MONOTONIC, &due);
  for (size_t turn = 0; !InputEnded(); turn++) {
    sections[turn % kSections].Write(turn / kSections % kValuesEach);
    SleepUntil(&due);
  }
}
