#include "benchmarks/elsewhere.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "benchmarks/measure.h"

namespace zolt::bench {
namespace {

std::string ProgramBeside(char const *name) {
  return std::filesystem::read_symlink("/proc/self/exe").replace_filename(name);
}

}  // namespace

WriterElsewhere::WriterElsewhere() {
  int input[2];
  int output[2];
  Require(pipe2(input, O_CLOEXEC) == 0 && pipe2(output, O_CLOEXEC) == 0, "no pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  std::string program = ProgramBeside("bench_write_elsewhere");
  char *arguments[] = {program.data(), nullptr};
  int const failed = posix_spawn(&process_, program.c_str(), &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(input[0]);
  close(output[1]);
  Require(failed == 0, "the other writer did not start");
  char sign = 0;
  Require(read(output[0], &sign, 1) == 1, "the other writer did not begin");
  close(output[0]);
  stop_ = input[1];
}

WriterElsewhere::~WriterElsewhere() {
  close(stop_);
  int status = 0;
  waitpid(process_, &status, 0);
  Require(status == 0, "the other writer failed");
}

}  // namespace zolt::bench
