#ifndef ZOLT41_BENCH_NEWS_SD_BUS_H_
#define ZOLT41_BENCH_NEWS_SD_BUS_H_

#include <systemd/sd-bus.h>

namespace zolt::bench {

// Sends a signal over the session's bus, by sd-bus; nobody answers.
class SdBusNews {
 public:
  SdBusNews();
  ~SdBusNews() { sd_bus_unref(bus_); }
  SdBusNews(SdBusNews const &) = delete;
  SdBusNews &operator=(SdBusNews const &) = delete;

  void Send(char const *text);

 private:
  sd_bus *bus_ = nullptr;
};

void WatchSdBus();

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_NEWS_SD_BUS_H_
