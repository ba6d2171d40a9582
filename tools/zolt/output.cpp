#include "tools/zolt/output.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "tools/zolt/errors.h"

namespace zolt::tool {

namespace {

constexpr size_t kBlock = 65536;

}  // namespace

void EndByBrokenPipe() {
  signal(SIGPIPE, SIG_DFL);
  sigset_t pipe;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  sigprocmask(SIG_UNBLOCK, &pipe, nullptr);
  raise(SIGPIPE);
  _exit(128 + SIGPIPE);
}

void HoldStandardDescriptors() {
  for (int descriptor = 0; descriptor < 3; descriptor++) {
    if (fcntl(descriptor, F_GETFD) != -1 || errno != EBADF) continue;
    // Opened the wrong way round, so that a use still fails.
    if (open("/dev/null", descriptor == 0 ? O_WRONLY : O_RDONLY) != descriptor) return;
  }
}

Output::Output(int descriptor, std::string name)
    : descriptor_(descriptor), name_(std::move(name)), terminal_(isatty(descriptor) == 1) {}

void Output::Write(std::string_view bytes) {
  waiting_ += bytes;
  if (waiting_.size() >= kBlock) Flush();
}

void Output::Flush() {
  std::string_view rest = waiting_;
  while (!rest.empty()) {
    ssize_t const written = write(descriptor_, rest.data(), rest.size());
    if (written >= 0) {
      rest.remove_prefix(static_cast<size_t>(written));
    } else if (errno == EPIPE) {
      EndByBrokenPipe();
    } else if (errno != EINTR) {
      throw SystemFailure(name_, errno);
    }
  }
  waiting_.clear();
}

void Output::Finish() {
  Flush();
  if (close(descriptor_) != 0 && errno != EINTR) throw SystemFailure(name_, errno);
}

void WriteError(std::string line) {
  line += '\n';
  WriteErrorText(line);
}

void WriteErrorText(std::string_view text) {
  std::string_view rest = text;
  while (!rest.empty()) {
    ssize_t const written = write(STDERR_FILENO, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    rest.remove_prefix(static_cast<size_t>(written));
  }
}

bool ErrorIsTerminal() {
  return isatty(STDERR_FILENO) == 1;
}

}  // namespace zolt::tool
