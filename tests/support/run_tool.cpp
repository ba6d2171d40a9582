#include "tests/support/run_tool.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <sstream>
#include <stdexcept>

namespace zolt::testing {
namespace {

constexpr int kDeadline = 60000;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {
    if (number < 0) throw std::runtime_error("no descriptor");
  }
  ~Descriptor() { close(number_); }
  Descriptor(Descriptor const &) = delete;
  Descriptor &operator=(Descriptor const &) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

int MemoryFile(std::string const &content) {
  int const file = memfd_create("tool", MFD_CLOEXEC);
  if (write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size())) {
    throw std::runtime_error("no room in memory");
  }
  lseek(file, 0, SEEK_SET);
  return file;
}

// A terminal's master; what is written to the other side comes out unchanged.
int Terminal(std::string *slave) {
  int const master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  std::array<char, 128> name{};
  if (grantpt(master) != 0 || unlockpt(master) != 0 ||
      ptsname_r(master, name.data(), name.size()) != 0) {
    throw std::runtime_error("no terminal");
  }
  termios modes{};
  tcgetattr(master, &modes);
  cfmakeraw(&modes);
  tcsetattr(master, TCSANOW, &modes);
  *slave = name.data();
  return master;
}

int PipeWithoutReader() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  close(ends[0]);
  return ends[1];
}

int OutputFor(ToolOutput output, std::string *slave) {
  switch (output) {
    case ToolOutput::terminal:
      return Terminal(slave);
    case ToolOutput::fullDevice:
      return open("/dev/full", O_WRONLY | O_CLOEXEC);
    case ToolOutput::brokenPipe:
      return PipeWithoutReader();
    default:
      return MemoryFile("");
  }
}

std::string ReadAll(int file) {
  std::string content;
  std::array<char, 65536> block{};
  for (;;) {
    ssize_t const got = read(file, block.data(), block.size());
    if (got <= 0) return content;
    content.append(block.data(), static_cast<size_t>(got));
  }
}

std::string Captured(int file) {
  lseek(file, 0, SEEK_SET);
  return ReadAll(file);
}

int WaitFor(pid_t id) {
  Descriptor const handle(static_cast<int>(syscall(SYS_pidfd_open, id, 0)));
  pollfd wait{handle.number(), POLLIN, 0};
  bool const ended = poll(&wait, 1, kDeadline) == 1;
  if (!ended) kill(id, SIGKILL);
  int status = 0;
  waitpid(id, &status, 0);
  if (!ended) return -1000;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

template <typename Texts>
std::vector<char *> Pointers(Texts &texts) {
  std::vector<char *> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string &text : texts) pointers.push_back(text.data());
  return pointers;
}

std::string ToolPath() {
  char const *const path = getenv("ZOLT_TOOL");
  return path == nullptr ? ZOLT_TOOL : path;
}

}  // namespace

ToolResult RunTool(std::vector<std::string> const &arguments, ToolSetting const &setting) {
  std::string slave;
  Descriptor const in(MemoryFile(setting.input));
  Descriptor const out(OutputFor(setting.output, &slave));
  Descriptor const err(MemoryFile(""));

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.number(), 0);
  posix_spawn_file_actions_adddup2(&actions, err.number(), 2);
  if (setting.output == ToolOutput::closed) {
    posix_spawn_file_actions_addclose(&actions, 1);
  } else if (slave.empty()) {
    posix_spawn_file_actions_adddup2(&actions, out.number(), 1);
  } else {
    posix_spawn_file_actions_addopen(&actions, 1, slave.c_str(), O_RDWR | O_NOCTTY, 0);
  }

  std::vector<std::string> words = arguments;
  words.insert(words.begin(), ToolPath());
  std::vector<char *> argv = Pointers(words);
  argv.push_back(nullptr);
  // The first of two of one name counts.
  std::vector<std::string> added = setting.environment;
  std::vector<char *> environment = Pointers(added);
  for (char **entry = environ; *entry != nullptr; entry++) environment.push_back(*entry);
  environment.push_back(nullptr);

  pid_t id = 0;
  int const failed =
      posix_spawn(&id, words[0].c_str(), &actions, nullptr, argv.data(), environment.data());
  posix_spawn_file_actions_destroy(&actions);
  if (failed != 0) throw std::runtime_error("the tool cannot be started");
  int const code = WaitFor(id);
  return {code, slave.empty() ? Captured(out.number()) : ReadAll(out.number()),
          Captured(err.number())};
}

std::vector<std::string> Words(std::string const &line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

}  // namespace zolt::testing
