#ifndef ZOLT41_PLATFORM_DESKTOP_SHELL_H_
#define ZOLT41_PLATFORM_DESKTOP_SHELL_H_

#include <cstdint>

// The desktop's shell. The module Shell32 has ShellExecuteA, which is reached through
// late_module.h: it opens `file`, which is local text, with xdg-open, and gives a number above 32
// if that took it, else one of these.
inline constexpr uintptr_t SE_ERR_FNF = 2;
inline constexpr uintptr_t SE_ERR_ACCESSDENIED = 5;  // no operation but "open"; text like an option
inline constexpr uintptr_t SE_ERR_NOASSOC = 31;
inline constexpr int32_t SW_SHOWNORMAL = 1;

using ShellExecute = uintptr_t (*)(uintptr_t owner, char const *operation, char const *file,
                                   char const *parameters, char const *directory, int32_t show);

namespace zolt {

// xdg-open is there.
bool HasLinkOpener();

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_DESKTOP_SHELL_H_
