#include "zolt41/platform/kernel/named_event.h"

#include <atomic>
#include <climits>
#include <cstring>

#include "zolt41/platform/kernel/futex.h"
#include "zolt41/platform/kernel/shared_segment.h"

namespace {

std::atomic<uint32_t> *WordOf(HANDLE event) {
  return event == zolt::kEventHandle ? zolt::SegmentEvent() : nullptr;
}

}  // namespace

HANDLE CreateEventA(void *, int32_t, int32_t, char const *name) {
  bool const known = name != nullptr && std::strcmp(name, "ZOPref_EndPrefsNotify") == 0;
  return known ? zolt::kEventHandle : 0;
}

int32_t PulseEvent(HANDLE event) {
  std::atomic<uint32_t> *const word = WordOf(event);
  if (word == nullptr) return 0;
  word->fetch_add(1);
  zolt::WakeSleepers(word, INT_MAX);
  return 1;
}

uint32_t zolt::PulseCount(HANDLE event) {
  std::atomic<uint32_t> const *const word = WordOf(event);
  return word == nullptr ? 0 : word->load();
}

void zolt::WaitForPulse(HANDLE event, uint32_t count) {
  std::atomic<uint32_t> *const word = WordOf(event);
  if (word != nullptr) SleepOn(word, count, std::chrono::nanoseconds(-1));
}
