#include "zolt41/platform/desktop/shell.h"

#include <string>
#include <string_view>

#include "zolt41/platform/desktop/command.h"
#include "zolt41/platform/system/codepage.h"
#include "zolt41/platform/system/late_module.h"

namespace {

// Some programs that open a link go on for as long as their window does.
constexpr int kPatience = 2000;
constexpr uintptr_t kTaken = 42;
constexpr int kNoFile = 2;

std::string Opener() {
  return zolt::FindProgram("xdg-open");
}

uintptr_t NativeShellExecute(uintptr_t, char const *operation, char const *file, char const *,
                             char const *, int32_t) {
  bool const opens = operation == nullptr || std::string_view(operation) == "open";
  std::string const link = file == nullptr ? "" : zolt::Utf8FromLocal(file);
  if (!opens || link.empty() || !zolt::IsPlainArgument(link)) return SE_ERR_ACCESSDENIED;
  std::string const program = Opener();
  if (program.empty()) return SE_ERR_FNF;
  int const code = zolt::RunCommand({program, {"xdg-open", link}, "", kPatience, false});
  if (code == 0 || code == zolt::kStillRuns) return kTaken;
  return code == kNoFile ? SE_ERR_FNF : SE_ERR_NOASSOC;
}

zolt::LateFunction const kFunctions[] = {
    {"ShellExecuteA", reinterpret_cast<FARPROC>(NativeShellExecute)}};
zolt::LateModule const kModule = {"Shell32", kFunctions, zolt::HasLinkOpener};

[[gnu::constructor]] void Enter() {
  zolt::EnterLateModule(&kModule);
}

}  // namespace

namespace zolt {

bool HasLinkOpener() {
  return !Opener().empty();
}

}  // namespace zolt
