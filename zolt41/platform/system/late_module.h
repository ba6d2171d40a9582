#ifndef ZOLT41_PLATFORM_SYSTEM_LATE_MODULE_H_
#define ZOLT41_PLATFORM_SYSTEM_LATE_MODULE_H_

#include <cstdint>
#include <span>
#include <string>
#include <vector>

// Modules that are loaded late, by name: services of the machine that may be missing. A module is
// a row that was entered here: a name, its functions, and a test whether the machine has what they
// stand on. Names are equal without regard to the case of ASCII letters, and to ".DLL" at the end.

using HMODULE = uintptr_t;
using FARPROC = void (*)();

// 0 if there is no such module, or the machine lacks what it stands on.
HMODULE LoadLibraryA(char const *name);
// Null if the module is 0 or has no function of that name.
FARPROC GetProcAddress(HMODULE module, char const *function);
// Gives 1, or 0 for 0.
int32_t FreeLibrary(HMODULE module);

// 0 if the module would not be loaded; else the length that its name would take with its NUL.
// Where a name is looked for, and into what, has no effect.
uint32_t SearchPathA(char const *path, char const *name, char const *extension, uint32_t size,
                     char *buffer, char **filePart);

namespace zolt {

struct LateFunction {
  char const *name;
  FARPROC entry;
};

struct LateModule {
  char const *name;
  std::span<LateFunction const> functions;
  bool (*usable)();
};

// For the life of the process.
void EnterLateModule(LateModule const *module);

// Puts another module in the place of the one of its name, for as long as this lives. Of several of
// one name the last counts, and they end in the other order.
class LateModuleSwap {
 public:
  explicit LateModuleSwap(LateModule const *module);
  ~LateModuleSwap();
  LateModuleSwap(LateModuleSwap const &) = delete;
  LateModuleSwap &operator=(LateModuleSwap const &) = delete;

 private:
  LateModule const *module_;
};

struct LateModuleStatus {
  std::string name;
  enum class Kind { native, missing, replaced } kind;
};
std::vector<LateModuleStatus> LateModules();

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_LATE_MODULE_H_
