#include "zolt41/platform/desktop/message_box.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "zolt41/platform/desktop/command.h"
#include "zolt41/platform/system/codepage.h"

namespace {

// A helper that finds no display ends within this time.
constexpr int kPatience = 300;

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

bool ShowInDialog(std::string const &text, std::string const &caption) {
  std::vector<std::string> const words = DialogCommand(text, caption);
  if (words.empty()) return false;
  int const code =
      zolt::RunCommand({zolt::FindProgram(words[0].c_str()), words, "", kPatience, false});
  return code == 0 || code == zolt::kStillRuns;
}

// For as long as this lives, a write without a reader sends this thread no signal.
class WithoutPipeSignal {
 public:
  WithoutPipeSignal() {
    sigset_t waiting;
    sigpending(&waiting);
    waited_ = sigismember(&waiting, SIGPIPE) == 1;
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~WithoutPipeSignal() {
    timespec const now{};
    if (!waited_) sigtimedwait(&pipe_, nullptr, &now);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  WithoutPipeSignal(WithoutPipeSignal const &) = delete;
  WithoutPipeSignal &operator=(WithoutPipeSignal const &) = delete;

 private:
  sigset_t pipe_{};
  sigset_t before_{};
  bool waited_ = false;
};

void WriteLine(std::string_view line) {
  pollfd room{STDERR_FILENO, POLLOUT, 0};
  if (poll(&room, 1, 0) != 1 || room.revents != POLLOUT) return;
  WithoutPipeSignal const without;
  // More would have to wait in a pipe that has room.
  size_t const size = std::min<size_t>(line.size(), PIPE_BUF);
  [[maybe_unused]] ssize_t const written = write(STDERR_FILENO, line.data(), size);
}

}  // namespace

int32_t MessageBoxA(uintptr_t, char const *text, char const *caption, uint32_t) {
  std::string const message = text == nullptr ? "" : zolt::Utf8FromLocal(text);
  std::string const title = caption == nullptr ? "zolt41" : zolt::Utf8FromLocal(caption);
  if (!ShowInDialog(message, title)) WriteLine(title + ": " + message + "\n");
  return 1;
}
