#include "zolt41/platform/desktop/shell.h"

#include <unistd.h>

#include <string>
#include <string_view>
#include <vector>

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
  int const code = zolt::RunCommand(program, {"xdg-open", link}, "", kPatience);
  if (code == 0) return kTaken;
  return code == kNoFile ? SE_ERR_FNF : SE_ERR_NOASSOC;
}

zolt::LateFunction const kFunctions[] = {
    {"ShellExecuteA", reinterpret_cast<FARPROC>(NativeShellExecute)}};
zolt::LateModule const kModule = {"Shell32", kFunctions, zolt::HasLinkOpener};

[[gnu::constructor]] void Enter() {
  zolt::EnterLateModule(&kModule);
}

// The arguments of the first helper that is there.
std::vector<std::string> DialogCommand(std::string const &text, std::string const &caption) {
  std::vector<std::vector<std::string>> const helpers = {
      {"zenity", "--info", "--no-markup", "--title=" + caption, "--text=" + text},
      {"kdialog", "--title", caption, "--msgbox", text},
      {"xmessage", "-center", "-title", caption, text}};
  if (!zolt::HasDesktop()) return {};
  for (std::vector<std::string> const &helper : helpers)
    if (!zolt::FindProgram(helper[0].c_str()).empty()) return helper;
  return {};
}

}  // namespace

namespace zolt {

bool HasLinkOpener() {
  return !Opener().empty();
}

}  // namespace zolt

int32_t MessageBoxA(uintptr_t, char const *text, char const *caption, uint32_t) {
  std::string const message = text == nullptr ? "" : zolt::Utf8FromLocal(text);
  std::string const title = caption == nullptr ? "zolt41" : zolt::Utf8FromLocal(caption);
  std::vector<std::string> const command = DialogCommand(message, title);
  if (!command.empty() &&
      zolt::RunCommand(zolt::FindProgram(command[0].c_str()), command, "", 0) == 0) {
    return 1;
  }
  std::string const line = title + ": " + message + "\n";
  [[maybe_unused]] ssize_t const written = write(STDERR_FILENO, line.data(), line.size());
  return 1;
}
