#ifndef ZOLT41_BENCH_GSETTINGS_STORE_H_
#define ZOLT41_BENCH_GSETTINGS_STORE_H_

#include <gio/gio.h>

#include <cstring>
#include <string>
#include <vector>

#include "benchmarks/measure.h"
#include "benchmarks/work.h"

namespace zolt::bench {

// GSettings over dconf, with a schema that has the values as its keys.
class GSettingsStore {
 public:
  GSettingsStore() : names_(Names(kValues)), settings_(g_settings_new("org.zolt.Bench")) {
    GObject *backend = nullptr;
    g_object_get(settings_, "backend", &backend, nullptr);
    Require(std::strcmp(G_OBJECT_TYPE_NAME(backend), "DConfSettingsBackend") == 0,
            "GSettings does not use dconf");
    g_object_unref(backend);
  }
  ~GSettingsStore() { g_object_unref(settings_); }
  GSettingsStore(GSettingsStore const &) = delete;
  GSettingsStore &operator=(GSettingsStore const &) = delete;

  void Fill() {
    for (size_t i = 0; i < names_.size(); i++) Set(i);
    g_settings_sync();
  }

  void Read(size_t index, char *buffer) {
    gchar *text = g_settings_get_string(settings_, names_[index].c_str());
    std::strcpy(buffer, text);
    g_free(text);
  }

  // A write is on its way until it is waited for.
  void Write(size_t index) {
    Set(index);
    g_settings_sync();
  }

  std::vector<std::string> const &names() const { return names_; }

 private:
  void Set(size_t index) {
    std::string const &name = names_[index];
    Require(g_settings_set_string(settings_, name.c_str(), NextText(name)) != FALSE,
            "GSettings refused a write");
  }

  std::vector<std::string> names_;
  GSettings *settings_;
};

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_GSETTINGS_STORE_H_
