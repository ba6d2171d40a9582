#ifndef ZOLT41_BENCH_NEWS_DCONF_H_
#define ZOLT41_BENCH_NEWS_DCONF_H_

#include <gio/gio.h>

namespace zolt::bench {

// Writes a value with GSettings over dconf.
class DConfNews {
 public:
  DConfNews() : settings_(g_settings_new("org.zolt.Bench")) {}
  ~DConfNews() { g_object_unref(settings_); }
  DConfNews(DConfNews const &) = delete;
  DConfNews &operator=(DConfNews const &) = delete;

  // The write is on its way when this returns.
  void Send(char const *text);
  void SendAndSync(char const *text);

 private:
  GSettings *settings_;
};

// Hears by the signal "changed".
void WatchDConf();

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_NEWS_DCONF_H_
