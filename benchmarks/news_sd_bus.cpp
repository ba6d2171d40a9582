#include "benchmarks/news_sd_bus.h"

#include <unistd.h>

#include "benchmarks/heard.h"
#include "benchmarks/measure.h"
#include "benchmarks/watchers.h"

namespace zolt::bench {
namespace {

constexpr char kPath[] = "/org/zolt/bench";
constexpr char kInterface[] = "org.zolt.Bench";
constexpr char kSignal[] = "Changed";
constexpr uint64_t kNoTimeout = UINT64_MAX;

int Note(sd_bus_message *message, void *heard, sd_bus_error *) {
  char const *text = nullptr;
  Require(sd_bus_message_read(message, "s", &text) > 0, "a signal without a text");
  static_cast<Heard *>(heard)->Note(text);
  return 0;
}

}  // namespace

SdBusNews::SdBusNews() {
  Require(sd_bus_open_user(&bus_) >= 0, "sd-bus has no bus");
}

void SdBusNews::Send(char const *text) {
  Require(sd_bus_emit_signal(bus_, kPath, kInterface, kSignal, "s", text) >= 0 &&
              sd_bus_flush(bus_) >= 0,
          "sd-bus sent no signal");
}

void WatchSdBus() {
  Heard heard = Heard::OfThisWatcher();
  sd_bus *bus = nullptr;
  Require(
      sd_bus_open_user(&bus) >= 0 &&
          sd_bus_match_signal(bus, nullptr, nullptr, kPath, kInterface, kSignal, Note, &heard) >= 0,
      "sd-bus does not listen");
  ReadyUntil([] { _exit(0); });
  while (true) {
    int const done = sd_bus_process(bus, nullptr);
    Require(done >= 0 && (done > 0 || sd_bus_wait(bus, kNoTimeout) >= 0), "sd-bus stopped");
  }
}

}  // namespace zolt::bench
