#include "zolt41/services/url.h"

#include <atomic>

#include "zolt41/platform/desktop/shell.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/late_module.h"
#include "zolt41/platform/system/string_table.h"
#include "zolt41/platform/system/with_memory.h"
#include "zolt41/services/network_state.h"

namespace {

constexpr uint32_t kShortcutKey = 20137;
constexpr uintptr_t kLastFailure = 32;

class Shell {
 public:
  ~Shell() {
    if (HMODULE const module = module_.exchange(0); module != 0) FreeLibrary(module);
  }

  // Null if it cannot be had; then it is tried again at the next call. No lock: two threads may
  // both load it, and a fork finds nobody at work.
  ShellExecute Execute() {
    if (execute_ == nullptr) {
      HMODULE const module = LoadLibraryA("Shell32");
      module_ = module;
      execute_ = reinterpret_cast<ShellExecute>(GetProcAddress(module, "ShellExecuteA"));
    }
    return execute_;
  }

  void Forget() {
    module_ = 0;
    execute_ = nullptr;
  }

 private:
  std::atomic<HMODULE> module_ = 0;
  std::atomic<ShellExecute> execute_ = nullptr;
};

Shell shell;

}  // namespace

namespace zolt {

void ForgetShell() {
  shell.Forget();
}

}  // namespace zolt

int32_t URLEnabled() {
  char name[260] = "";
  LoadStringA(zolt::LibraryInstance(), kShortcutKey, name, sizeof name);
  HKEY key = 0;
  if (RegOpenKeyA(HKEY_LOCAL_MACHINE, name, &key) == ERROR_SUCCESS) {
    RegCloseKey(key);
    return 1;
  }
  // Here the machine says so by having the program.
  return zolt::WithMemory(0, [] { return zolt::HasLinkOpener() ? 1 : 0; });
}

int32_t URLLaunchFromString(char const *url) {
  if (url == nullptr || *url == '\0') return 0;
  return zolt::WithMemory(0, [url] {
    ShellExecute const execute = shell.Execute();
    if (execute == nullptr) return 0;
    return execute(0, "open", url, nullptr, nullptr, SW_SHOWNORMAL) > kLastFailure ? 1 : 0;
  });
}
