#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdint>

#include "zolt41/platform/desktop/command.h"

namespace zolt {
namespace {

constexpr int kNoProgram = 127;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { Close(); }
  Descriptor(Descriptor const &) = delete;
  Descriptor &operator=(Descriptor const &) = delete;

  int number() const { return number_; }
  void Close() {
    if (number_ >= 0) close(number_);
    number_ = -1;
  }

 private:
  int number_;
};

// The same file at a number above the standard ones, whose places are filled one after the other.
int AboveStandard(int descriptor) {
  if (descriptor < 0) return -1;
  int const above = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  close(descriptor);
  return above;
}

// The input as a file without a name, so that nobody waits for a program to read it.
int InputFile(std::string_view input) {
  int const file = AboveStandard(memfd_create("zolt41-input", MFD_CLOEXEC));
  if (file < 0) return -1;
  while (!input.empty()) {
    ssize_t const written = write(file, input.data(), input.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) {
      close(file);
      return -1;
    }
    input.remove_prefix(static_cast<size_t>(written));
  }
  lseek(file, 0, SEEK_SET);
  return file;
}

// All that the new processes need. The client may have other threads: between a fork and the start
// of a program nothing is called that could wait for a lock or take memory.
struct Prepared {
  char const *program;
  char *const *words;
  int input;
  int nowhere;
  int report;
  bool tellsErrors;
};

void UseDefaultSignals() {
  struct sigaction usual {};
  usual.sa_handler = SIG_DFL;
  for (int number = 1; number < NSIG; number++) sigaction(number, &usual, nullptr);
}

[[noreturn]] void BecomeProgram(Prepared const &prepared) {
  dup2(prepared.input, STDIN_FILENO);
  dup2(prepared.nowhere, STDOUT_FILENO);
  // Without one the first file that the program opens would take its place.
  bool const tells = prepared.tellsErrors && fcntl(STDERR_FILENO, F_GETFD) >= 0;
  if (!tells) dup2(prepared.nowhere, STDERR_FILENO);
  close_range(STDERR_FILENO + 1, UINT_MAX, CLOSE_RANGE_CLOEXEC);
  // What the client blocks is its own business.
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  execve(prepared.program, prepared.words, environ);
  _exit(kNoProgram);
}

bool Report(int report, int code) {
  return write(report, &code, sizeof code) == sizeof code;
}

// Starts the program as a child of its own, whose code nobody else can take. Reports that it runs,
// and then its code.
[[noreturn]] void Supervise(Prepared const &prepared) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  UseDefaultSignals();
  pid_t const program = _Fork();
  if (program == 0) BecomeProgram(prepared);
  // What the client has open stays open no longer than the client wants.
  int const report = dup2(prepared.report, 0);
  close_range(1, UINT_MAX, 0);
  int status = 0;
  bool const ended = program > 0 && Report(report, kStillRuns) &&
                     waitpid(program, &status, 0) == program && WIFEXITED(status);
  _exit(Report(report, ended ? WEXITSTATUS(status) : kNoCode) ? 0 : 1);
}

// A child that sends no signal at its end, so that only who names it can wait for it, and it is not
// reaped where a client ignores its children.
pid_t StartSupervisor(Prepared const &prepared) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  // None of the client's handlers may run in the child.
  pthread_sigmask(SIG_SETMASK, &all, &before);
  auto const supervisor = static_cast<pid_t>(syscall(SYS_clone, 0, 0, 0, 0, 0));
  if (supervisor == 0) Supervise(prepared);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return supervisor;
}

int Read(int report) {
  int code = 0;
  ssize_t got = 0;
  do {
    got = read(report, &code, sizeof code);
  } while (got < 0 && errno == EINTR);
  return got == sizeof code ? code : kNoCode;
}

int Reported(int report, int milliseconds) {
  using std::chrono::steady_clock;
  // The time begins when the program runs: before that nothing was handed on.
  if (int const first = Read(report); first != kStillRuns) return first;
  auto const end = steady_clock::now() + std::chrono::milliseconds(milliseconds);
  for (;;) {
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now());
    pollfd wait{report, POLLIN, 0};
    int const ready = poll(&wait, 1, static_cast<int>(std::max<int64_t>(left.count(), 0)));
    if (ready < 0 && errno == EINTR) continue;
    return ready > 0 ? Read(report) : kStillRuns;
  }
}

void End(pid_t supervisor, bool still) {
  if (still) kill(supervisor, SIGKILL);
  while (waitpid(supervisor, nullptr, static_cast<int>(__WCLONE)) < 0 && errno == EINTR) continue;
}

}  // namespace

int RunCommand(Command const &command) {
  std::vector<char *> words;
  for (std::string const &argument : command.arguments)
    words.push_back(const_cast<char *>(argument.c_str()));
  words.push_back(nullptr);
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) return kNoCode;
  Descriptor const report(AboveStandard(ends[0]));
  Descriptor reporting(AboveStandard(ends[1]));
  Descriptor const input(InputFile(command.input));
  Descriptor const nowhere(AboveStandard(open("/dev/null", O_WRONLY | O_CLOEXEC)));
  Prepared const prepared = {command.program.c_str(), words.data(),       input.number(),
                             nowhere.number(),        reporting.number(), command.tellsErrors};
  if (report.number() < 0 || prepared.report < 0 || prepared.input < 0 || prepared.nowhere < 0) {
    return kNoCode;
  }
  pid_t const supervisor = StartSupervisor(prepared);
  if (supervisor < 0) return kNoCode;
  reporting.Close();
  int const code = Reported(report.number(), command.milliseconds);
  End(supervisor, code == kStillRuns);
  return code;
}

}  // namespace zolt
