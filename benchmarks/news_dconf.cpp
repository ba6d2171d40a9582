#include "benchmarks/news_dconf.h"

#include <unistd.h>

#include "benchmarks/heard.h"
#include "benchmarks/measure.h"
#include "benchmarks/watchers.h"

namespace zolt::bench {
namespace {

constexpr char kKey[] = "value-000000";

void Note(GSettings *settings, gchar const *, gpointer heard) {
  gchar *const text = g_settings_get_string(settings, kKey);
  static_cast<Heard *>(heard)->Note(text);
  g_free(text);
}

}  // namespace

void DConfNews::Send(char const *text) {
  Require(g_settings_set_string(settings_, kKey, text) != FALSE, "GSettings refused a write");
}

void DConfNews::SendAndSync(char const *text) {
  Send(text);
  g_settings_sync();
}

void WatchDConf() {
  Heard heard = Heard::OfThisWatcher();
  GSettings *const settings = g_settings_new("org.zolt.Bench");
  g_signal_connect(settings, "changed::value-000000", G_CALLBACK(Note), &heard);
  // The signal comes only for what was read after it was connected.
  g_free(g_settings_get_string(settings, kKey));
  ReadyUntil([] { _exit(0); });
  g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}

}  // namespace zolt::bench
