#include "tests/support/child.h"

#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <stdexcept>

namespace zolt::testing {
namespace {

constexpr int kDeadline = 60000;

bool Readable(int descriptor) {
  pollfd wait{descriptor, POLLIN, 0};
  return poll(&wait, 1, kDeadline) == 1;
}

}  // namespace

void Child::Pipe::Say(std::string const &line) const {
  std::string const whole = line + "\n";
  if (write(out_, whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) _exit(99);
}

std::string Child::Pipe::Hear() {
  for (;;) {
    if (size_t const end = buffer_.find('\n'); end != std::string::npos) {
      std::string line = buffer_.substr(0, end);
      buffer_.erase(0, end + 1);
      return line;
    }
    std::array<char, 4096> block{};
    ssize_t const got = Readable(in_) ? read(in_, block.data(), block.size()) : 0;
    if (got <= 0) return "";
    buffer_.append(block.data(), static_cast<size_t>(got));
  }
}

void Child::Pipe::BecomeStandard() const {
  dup2(in_, STDIN_FILENO);
  dup2(out_, STDOUT_FILENO);
}

Child::Child(std::function<int(Pipe &)> const &run) : id_(-1), in_(-1), out_(-1), pipe_(-1, -1) {
  std::array<int, 2> toChild{};
  std::array<int, 2> toParent{};
  if (pipe2(toChild.data(), 0) != 0 || pipe2(toParent.data(), 0) != 0) {
    throw std::runtime_error("no pipe");
  }
  id_ = fork();
  if (id_ == 0) {
    close(toChild[1]);
    close(toParent[0]);
    Pipe pipe(toChild[0], toParent[1]);
    _exit(run(pipe));
  }
  close(toChild[0]);
  close(toParent[1]);
  in_ = toParent[0];
  out_ = toChild[1];
  pipe_ = Pipe(in_, out_);
}

Child::~Child() {
  if (id_ > 0) {
    Signal(SIGKILL);
    Wait();
  }
  close(in_);
  close(out_);
}

void Child::Signal(int number) const {
  kill(id_, number);
}

void Child::EndInput() {
  close(out_);
  out_ = -1;
}

int Child::Wait() {
  int const handle = static_cast<int>(syscall(SYS_pidfd_open, id_, 0));
  bool const ended = handle < 0 || Readable(handle);
  if (handle >= 0) close(handle);
  if (!ended) return -1000;
  int status = 0;
  waitpid(id_, &status, 0);
  id_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace zolt::testing
