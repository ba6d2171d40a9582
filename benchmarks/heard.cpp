#include "benchmarks/heard.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

#include "benchmarks/measure.h"

namespace zolt::bench {

int64_t MonotonicNanoseconds() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

Heard Heard::Make() {
  int const memory = memfd_create("heard", MFD_CLOEXEC);
  Require(memory != -1 && ftruncate(memory, sizeof(Area)) == 0, "no shared memory");
  return {memory, eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
}

Heard::Heard(int memory, int bell) : memory_(memory), bell_(bell) {
  void *const area = mmap(nullptr, sizeof(Area), PROT_READ | PROT_WRITE, MAP_SHARED, memory_, 0);
  Require(area != MAP_FAILED && bell_ != -1, "nothing to hear with");
  area_ = static_cast<Area *>(area);
}

Heard::~Heard() {
  munmap(area_, sizeof(Area));
  close(memory_);
  close(bell_);
}

void Heard::Expect(int64_t sent, uint32_t times) {
  eventfd_t late_rings = 0;
  eventfd_read(bell_, &late_rings);
  area_->latest = 0;
  area_->left = times;
  area_->expected = sent;
}

bool Heard::Await(int milliseconds) {
  pollfd ring{bell_, POLLIN, 0};
  if (poll(&ring, 1, milliseconds) != 1) return false;
  eventfd_t rings = 0;
  return eventfd_read(bell_, &rings) == 0;
}

double Heard::LatestNanoseconds() const {
  return static_cast<double>(area_->latest);
}

void Heard::Note(char const *text) {
  int64_t const now = MonotonicNanoseconds();
  NoteHeard(std::strtoll(text, nullptr, 10), now);
}

void Heard::NoteExpected() {
  int64_t const now = MonotonicNanoseconds();
  NoteHeard(area_->expected, now);
}

void Heard::NoteHeard(int64_t sent, int64_t now) {
  area_->count++;
  if (sent != area_->expected) return;
  int64_t latest = area_->latest;
  while (latest < now - sent && !area_->latest.compare_exchange_weak(latest, now - sent)) {
  }
  if (area_->left.fetch_sub(1) == 1)
    Require(eventfd_write(bell_, 1) == 0, "the bell does not ring");
}

}  // namespace zolt::bench
