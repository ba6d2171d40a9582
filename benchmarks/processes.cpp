// Whole processes, from their start to their end. Each line of the standard input is a command:
// key, tab, the program's path, tab, its arguments parted by tabs. An argument @ stands for a
// number that differs from one round to the next. bench_processes ROUNDS; 120 without that.

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "benchmarks/measure.h"

namespace {

using namespace zolt::bench;

constexpr int kUsualRounds = 120;
constexpr int kFirstRounds = 3;  // fill the caches of the system and are not counted

struct Command {
  std::string key;
  std::vector<std::string> arguments;
  std::vector<double> times;
};

std::vector<Command> ReadCommands() {
  std::vector<Command> commands;
  for (std::string line; std::getline(std::cin, line);) {
    Command command;
    std::istringstream fields(line);
    std::getline(fields, command.key, '\t');
    for (std::string field; std::getline(fields, field, '\t');) command.arguments.push_back(field);
    Require(!command.arguments.empty(), "a command without a program");
    commands.push_back(command);
  }
  return commands;
}

double Run(Command const &command, posix_spawn_file_actions_t const &actions, int round) {
  std::vector<std::string> texts = command.arguments;
  std::replace(texts.begin(), texts.end(), std::string("@"), std::to_string(round % 2 + 40));
  std::vector<char *> arguments;
  for (std::string &text : texts) arguments.push_back(text.data());
  arguments.push_back(nullptr);
  pid_t process = 0;
  int status = 0;
  Stopwatch const watch;
  if (posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(), environ) != 0)
    Fail(command.arguments[0] + " did not start");
  waitpid(process, &status, 0);
  double const time = watch.Nanoseconds();
  if (status != 0) Fail(command.key + " failed");
  return time;
}

}  // namespace

int main(int count, char **words) {
  int const rounds = count > 1 ? std::stoi(words[1]) : kUsualRounds;
  std::vector<Command> commands = ReadCommands();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (int const output : {STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&actions, output, "/dev/null", O_WRONLY, 0);
  }
  std::mt19937 random(1);
  std::vector<Command *> order;
  for (Command &command : commands) order.push_back(&command);
  for (int round = 0; round < kFirstRounds + rounds; round++) {
    std::shuffle(order.begin(), order.end(), random);
    for (Command *command : order) {
      double const time = Run(*command, actions, round);
      if (round >= kFirstRounds) command->times.push_back(time);
    }
  }
  posix_spawn_file_actions_destroy(&actions);
  for (Command const &command : commands) Report(command.key, Median(command.times));
}
