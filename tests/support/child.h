#ifndef ZOLT41_TESTS_SUPPORT_CHILD_H_
#define ZOLT41_TESTS_SUPPORT_CHILD_H_

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/fork.h"

namespace zolt::testing {

// Another process, forked from this one, that runs a function and ends with its result. It can say
// lines, and wait for lines said to it. Whatever is left of it is killed at the end.
class Child {
 public:
  class Pipe {
   public:
    Pipe(int in, int out) : in_(in), out_(out) {}
    void Say(std::string const &line) const {
      std::string const whole = line + "\n";
      if (write(out_, whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) _exit(99);
    }
    // The next line without its end, or "" at the end of the other process or after 60 seconds.
    std::string Hear() {
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
    // Says that it has what it is for, and keeps it until told to go on.
    void Hold() {
      Say("held");
      Hear();
    }
    void CloseIn() { close(std::exchange(in_, -1)); }
    void CloseOut() { close(std::exchange(out_, -1)); }
    // For a process that becomes another program: the pipe is its standard input and output.
    void BecomeStandard() const {
      dup2(in_, STDIN_FILENO);
      dup2(out_, STDOUT_FILENO);
    }

   private:
    int in_;
    int out_;
    std::string buffer_;
  };

  explicit Child(std::function<int(Pipe &)> const &run) {
    // What it hears from and is heard by, with the end to read of each first.
    std::array<int, 4> ends{};
    if (pipe2(&ends[0], O_CLOEXEC) != 0 || pipe2(&ends[2], O_CLOEXEC) != 0)
      throw std::runtime_error("no pipe");
    id_ = Fork();
    bool const child = id_ == 0;
    pipe_ = child ? Pipe(ends[0], ends[3]) : Pipe(ends[2], ends[1]);
    for (size_t const other : {child ? 1U : 0U, child ? 2U : 3U}) close(ends[other]);
    if (child) _exit(run(pipe_));
  }
  ~Child() {
    if (id_ > 0) {
      Signal(SIGKILL);
      Wait();
    }
    pipe_.CloseIn();
    pipe_.CloseOut();
  }
  Child(Child const &) = delete;
  Child &operator=(Child const &) = delete;

  Pipe &pipe() { return pipe_; }
  pid_t id() const { return id_; }
  void Signal(int number) const { kill(id_, number); }
  // Says that no more lines come.
  void EndInput() { pipe_.CloseOut(); }
  // Waits for the end. The exit code, or minus the signal's number. -1000 after 60 seconds.
  int Wait() {
    int const handle = static_cast<int>(syscall(SYS_pidfd_open, id_, 0));
    bool const ended = handle < 0 || Readable(handle);
    if (handle >= 0) close(handle);
    if (!ended) return -1000;
    int status = 0;
    waitpid(id_, &status, 0);
    id_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }

  // Puts the program whose path and arguments these are in the place of this process.
  static int Become(std::vector<std::string> words) {
    std::vector<char *> argv;
    for (std::string &word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    return 127;
  }

 private:
  static bool Readable(int descriptor) {
    pollfd wait{descriptor, POLLIN, 0};
    return poll(&wait, 1, 60000) == 1;
  }

  pid_t id_ = -1;
  Pipe pipe_{-1, -1};
};

inline bool HoldsInChild(std::function<bool()> const &holds) {
  return Child([&](Child::Pipe &) { return holds() ? 0 : 1; }).Wait() == 0;
}

// Forks twenty children, in which `holds` is to hold, while another thread does `work` all the
// time.
inline void ForkMeanwhile(std::function<void()> const &work, std::function<bool()> const &holds) {
  std::atomic<bool> done = false;
  std::thread other([&] {
    while (!done) work();
  });
  for (int i = 0; i < 20 && !::testing::Test::HasFailure(); i++) EXPECT_TRUE(HoldsInChild(holds));
  done = true;
  other.join();
}

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_CHILD_H_
