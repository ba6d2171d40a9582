#ifndef ZOLT41_BENCH_NEWS_GDBUS_H_
#define ZOLT41_BENCH_NEWS_GDBUS_H_

#include <gio/gio.h>

namespace zolt::bench {

// Calls a method of a service over the session's bus, by GDBus, and waits for the answer. Before it
// answers the service emits a signal.
class GDBusNews {
 public:
  GDBusNews();
  ~GDBusNews() { g_object_unref(connection_); }
  GDBusNews(GDBusNews const &) = delete;
  GDBusNews &operator=(GDBusNews const &) = delete;

  void Send(char const *text);

 private:
  GDBusConnection *connection_;
};

void ServeGDBus();
void WatchGDBus();

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_NEWS_GDBUS_H_
