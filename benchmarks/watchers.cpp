#include "benchmarks/watchers.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <utility>

#include "benchmarks/measure.h"

namespace zolt::bench {
namespace {

constexpr int kSettleTries = 50;
constexpr int kSettleMilliseconds = 200;
constexpr int kLostMilliseconds = 5000;

}  // namespace

Watchers::Watchers(char const *role, size_t count) {
  int input[2];
  int output[2];
  Require(pipe2(input, O_CLOEXEC) == 0 && pipe2(output, O_CLOEXEC) == 0, "no pipe");
  for (size_t i = 0; i < count; i++) Start(role, input[0], output[1]);
  close(input[0]);
  close(output[1]);
  end_ = input[1];
  char sign = 0;
  for (size_t i = 0; i < count; i++)
    Require(read(output[0], &sign, 1) == 1, "a watcher did not begin");
  close(output[0]);
}

Watchers::~Watchers() {
  close(end_);
  if (halted_ != -1) kill(halted_, SIGKILL);
  for (pid_t const process : processes_) {
    int status = 0;
    waitpid(process, &status, 0);
    Require(process == halted_ || status == 0, "a watcher failed");
  }
}

void Watchers::Start(char const *role, int input, int output) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  // Neither copy may land on what is still to be copied.
  int const memory = fcntl(heard_.memory(), F_DUPFD_CLOEXEC, 100);
  int const bell = fcntl(heard_.bell(), F_DUPFD_CLOEXEC, 100);
  posix_spawn_file_actions_adddup2(&actions, memory, Heard::kMemory);
  posix_spawn_file_actions_adddup2(&actions, bell, Heard::kBell);
  std::string argument = role;
  char program[] = "/proc/self/exe";
  char *arguments[] = {program, argument.data(), nullptr};
  pid_t process = 0;
  int const failed = posix_spawn(&process, program, &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(memory);
  close(bell);
  Require(failed == 0, "a watcher did not start");
  processes_.push_back(process);
}

void Watchers::SendNow(Send const &send) {
  int64_t const now = MonotonicNanoseconds();
  heard_.Expect(now, static_cast<uint32_t>(processes_.size()));
  send(std::to_string(now).c_str());
}

void Watchers::Settle(Send const &send) {
  for (int i = 0; i < kSettleTries; i++) {
    SendNow(send);
    if (heard_.Await(kSettleMilliseconds)) return;
  }
  Fail("the watchers hear nothing");
}

double Watchers::TimeToLast(Send const &send) {
  SendNow(send);
  Require(heard_.Await(kLostMilliseconds), "a watcher has not heard");
  return heard_.LatestNanoseconds();
}

double Watchers::TimeToSend(Send const &send, uint32_t count) {
  uint32_t const before = heard_.count();
  Stopwatch const watch;
  for (uint32_t i = 1; i < count; i++) send(std::to_string(MonotonicNanoseconds()).c_str());
  SendNow(send);
  double const time = watch.Nanoseconds();
  Require(heard_.Await(kLostMilliseconds), "a watcher has not heard the last news");
  Require(heard_.count() - before >= count * processes_.size(), "some news was lost");
  return time / count;
}

void Watchers::Halt(size_t index, int signal) {
  halted_ = processes_[index];
  siginfo_t state{};
  Require(kill(halted_, signal) == 0 &&
              waitid(P_PID, static_cast<id_t>(halted_), &state, WSTOPPED | WEXITED | WNOWAIT) == 0,
          "a watcher does not stand still");
}

void ReadyUntil(std::function<void()> end) {
  std::thread([end = std::move(end)] {
    char unused = 0;
    Require(read(STDIN_FILENO, &unused, 1) == 0, "the sender says something");
    end();
  }).detach();
  Require(write(STDOUT_FILENO, "r", 1) == 1, "nobody waits");
}

}  // namespace zolt::bench
