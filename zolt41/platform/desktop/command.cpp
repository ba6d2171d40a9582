#include "zolt41/platform/desktop/command.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <thread>

namespace zolt {
namespace {

// The input as a file without a name, so that nobody waits for a program to read it.
int InputFile(std::string_view input) {
  int const file = memfd_create("zolt41-input", MFD_CLOEXEC);
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

pid_t Start(std::string const &program, std::vector<std::string> const &arguments, int input) {
  std::vector<char *> words;
  for (std::string const &argument : arguments)
    words.push_back(const_cast<char *>(argument.c_str()));
  words.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attributes;
  posix_spawn_file_actions_init(&actions);
  posix_spawnattr_init(&attributes);
  posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
  // What the client blocks or ignores is its own business.
  sigset_t none;
  sigset_t all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setsigdefault(&attributes, &all);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  pid_t process = -1;
  int const error =
      posix_spawn(&process, program.c_str(), &actions, &attributes, words.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attributes);
  return error == 0 ? process : -1;
}

int ExitCodeOf(pid_t process) {
  int status = 0;
  pid_t ended = 0;
  do {
    ended = waitpid(process, &status, 0);
  } while (ended < 0 && errno == EINTR);
  // Where the client has children reaped by the system nobody knows.
  if (ended < 0) return 0;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool EndsWithin(pid_t process, int milliseconds) {
  auto const handle = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
  if (handle < 0) return true;
  pollfd poll{handle, POLLIN, 0};
  int ready = 0;
  do {
    ready = ::poll(&poll, 1, milliseconds);
  } while (ready < 0 && errno == EINTR);
  close(handle);
  return ready != 0;
}

bool IsProgram(std::string const &path) {
  return access(path.c_str(), X_OK) == 0;
}

}  // namespace

std::string FindProgram(char const *name, std::vector<std::string> const &more) {
  char const *const variable = secure_getenv("PATH");
  std::string_view path = variable == nullptr ? "/usr/local/bin:/usr/bin:/bin" : variable;
  std::vector<std::string> directories;
  while (!path.empty()) {
    size_t const end = std::min(path.find(':'), path.size());
    directories.emplace_back(path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  directories.insert(directories.end(), more.begin(), more.end());
  for (std::string const &directory : directories) {
    std::string program = directory + "/" + name;
    if (directory.starts_with('/') && IsProgram(program)) return program;
  }
  return "";
}

bool HasDesktop() {
  for (char const *const name : {"WAYLAND_DISPLAY", "DISPLAY"}) {
    char const *const value = secure_getenv(name);
    if (value != nullptr && *value != '\0') return true;
  }
  return false;
}

bool IsPlainArgument(std::string_view text) {
  bool const control = std::ranges::any_of(
      text, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
  return !text.starts_with('-') && !control;
}

int RunCommand(std::string const &program, std::vector<std::string> const &arguments,
               std::string_view input, int milliseconds) {
  int const file = InputFile(input);
  if (file < 0) return -1;
  pid_t const process = Start(program, arguments, file);
  close(file);
  if (process < 0) return -1;
  if (EndsWithin(process, milliseconds)) return ExitCodeOf(process);
  std::thread([process] { ExitCodeOf(process); }).detach();
  return 0;
}

}  // namespace zolt
