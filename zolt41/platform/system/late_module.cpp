#include "zolt41/platform/system/late_module.h"

#include <pthread.h>

#include <algorithm>
#include <mutex>
#include <string_view>

#include "zolt41/platform/system/ascii_case.h"

namespace {

using zolt::LateModule;

struct Modules {
  std::mutex lock;
  std::vector<LateModule const *> native;
  std::vector<LateModule const *> swapped;
};

Modules &TheModules() {
  // Rows are entered before main begins, by files in any order.
  static auto *const modules = [] {
    // The child of a fork finds the list whole and free.
    auto const release = [] { TheModules().lock.unlock(); };
    pthread_atfork([] { TheModules().lock.lock(); }, release, release);
    return new Modules;
  }();
  return *modules;
}

std::string Stem(std::string_view name) {
  std::string stem(name);
  std::ranges::transform(stem, stem.begin(), zolt::FoldAscii);
  if (stem.ends_with(".dll")) stem.resize(stem.size() - 4);
  return stem;
}

LateModule const *FindIn(std::vector<LateModule const *> const &modules, std::string const &stem) {
  auto const last = std::find_if(modules.rbegin(), modules.rend(), [&stem](LateModule const *each) {
    return Stem(each->name) == stem;
  });
  return last == modules.rend() ? nullptr : *last;
}

LateModule const *Find(char const *name) {
  if (name == nullptr) return nullptr;
  Modules &modules = TheModules();
  std::lock_guard const guard(modules.lock);
  std::string const stem = Stem(name);
  LateModule const *const swapped = FindIn(modules.swapped, stem);
  return swapped != nullptr ? swapped : FindIn(modules.native, stem);
}

bool Usable(LateModule const *module) {
  return module != nullptr && module->usable();
}

}  // namespace

HMODULE LoadLibraryA(char const *name) {
  LateModule const *const module = Find(name);
  return Usable(module) ? reinterpret_cast<HMODULE>(module) : 0;
}

FARPROC GetProcAddress(HMODULE module, char const *function) {
  if (module == 0 || function == nullptr) return nullptr;
  auto const functions =
      reinterpret_cast<LateModule const *>(module)->functions;  // NOLINT(*-int-to-ptr)
  auto const found =
      std::ranges::find(functions, std::string_view(function),
                        [](zolt::LateFunction const &each) { return std::string_view(each.name); });
  return found == functions.end() ? nullptr : found->entry;
}

int32_t FreeLibrary(HMODULE module) {
  return module != 0;
}

uint32_t SearchPathA(char const *, char const *name, char const *, uint32_t, char *, char **) {
  LateModule const *const module = Find(name);
  return Usable(module) ? static_cast<uint32_t>(std::string_view(module->name).size() + 1) : 0;
}

namespace zolt {

void EnterLateModule(LateModule const *module) {
  Modules &modules = TheModules();
  std::lock_guard const guard(modules.lock);
  modules.native.push_back(module);
}

LateModuleSwap::LateModuleSwap(LateModule const *module) : module_(module) {
  Modules &modules = TheModules();
  std::lock_guard const guard(modules.lock);
  modules.swapped.push_back(module);
}

LateModuleSwap::~LateModuleSwap() {
  Modules &modules = TheModules();
  std::lock_guard const guard(modules.lock);
  std::erase(modules.swapped, module_);
}

std::vector<LateModuleStatus> LateModules() {
  Modules &modules = TheModules();
  std::vector<LateModule const *> native;
  std::vector<LateModule const *> swapped;
  {
    std::lock_guard const guard(modules.lock);
    native = modules.native;
    swapped = modules.swapped;
  }
  std::vector<LateModuleStatus> all;
  for (LateModule const *const module : native) {
    using Kind = LateModuleStatus::Kind;
    bool const replaced = FindIn(swapped, Stem(module->name)) != nullptr;
    all.push_back({module->name, replaced           ? Kind::replaced
                                 : module->usable() ? Kind::native
                                                    : Kind::missing});
  }
  return all;
}

}  // namespace zolt
