#include "tests/support/run_tool.h"

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <termios.h>

#include <iomanip>
#include <sstream>

#include "tests/support/child.h"

namespace zolt::testing {
namespace {

int MemoryFile(std::string const &content) {
  int const file = memfd_create("tool", MFD_CLOEXEC);
  if (write(file, content.data(), content.size()) != static_cast<ssize_t>(content.size())) {
    throw std::runtime_error("no room in memory");
  }
  lseek(file, 0, SEEK_SET);
  return file;
}

// A terminal's master; what is written to the other side comes out unchanged.
int Terminal() {
  int const master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (unlockpt(master) != 0) throw std::runtime_error("no terminal");
  termios modes{};
  tcgetattr(master, &modes);
  cfmakeraw(&modes);
  tcsetattr(master, TCSANOW, &modes);
  return master;
}

int OutputFor(ToolOutput output) {
  if (output == ToolOutput::terminal) return Terminal();
  if (output == ToolOutput::fullDevice) return open("/dev/full", O_WRONLY | O_CLOEXEC);
  if (output != ToolOutput::brokenPipe) return MemoryFile("");
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  close(ends[0]);
  return ends[1];
}

// All that was written, or "" where nothing can be read.
std::string Captured(int file) {
  lseek(file, 0, SEEK_SET);
  std::string content;
  std::array<char, 65536> block{};
  for (;;) {
    ssize_t const got = read(file, block.data(), block.size());
    if (got <= 0) return content;
    content.append(block.data(), static_cast<size_t>(got));
  }
}

}  // namespace

ToolResult RunTool(std::vector<std::string> const &arguments, ToolSetting const &setting) {
  int const in = MemoryFile(setting.input);
  int const out = OutputFor(setting.output);
  int const err = MemoryFile("");
  Child tool([&](Child::Pipe &) {
    bool const terminal = setting.output == ToolOutput::terminal;
    dup2(in, 0);
    dup2(terminal ? ioctl(out, TIOCGPTPEER, O_RDWR | O_NOCTTY) : out, 1);
    dup2(err, 2);
    if (setting.output == ToolOutput::closed) close(1);
    for (std::string const &entry : setting.environment) putenv(strdup(entry.c_str()));
    std::vector<std::string> words = {ZOLT_TOOL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return Child::Become(words);
  });
  ToolResult const result = {tool.Wait(), Captured(out), Captured(err)};
  for (int const file : {in, out, err}) close(file);
  return result;
}

std::vector<std::string> Words(std::string const &line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> std::quoted(word, '\'');) words.push_back(word);
  return words;
}

}  // namespace zolt::testing
