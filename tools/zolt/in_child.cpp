#include "tools/zolt/in_child.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <vector>

#include "tools/zolt/errors.h"

namespace zolt::tool {

namespace {

// The text, or the five parts of an error, each ended by a NUL.
std::string Answer(std::function<std::string()> const &work) {
  std::string answer;
  try {
    answer = work() + '\0';
  } catch (ToolError const &error) {
    for (std::string const &part : {std::to_string(error.code), std::string(error.kind),
                                    error.subject, error.message, error.hint}) {
      answer += part + '\0';
    }
  }
  return answer;
}

void WriteAll(int descriptor, std::string const &bytes) {
  for (size_t done = 0; done < bytes.size();) {
    ssize_t const written = write(descriptor, bytes.data() + done, bytes.size() - done);
    if (written < 0 && errno != EINTR) return;
    if (written > 0) done += static_cast<size_t>(written);
  }
}

std::string ReadAll(int descriptor) {
  std::string bytes;
  std::array<char, 4096> block{};
  for (;;) {
    ssize_t const got = read(descriptor, block.data(), block.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return bytes;
    bytes.append(block.data(), static_cast<size_t>(got));
  }
}

std::vector<std::string> PartsOf(std::string const &answer) {
  std::vector<std::string> parts;
  size_t begin = 0;
  for (size_t end = answer.find('\0'); end != std::string::npos; end = answer.find('\0', begin)) {
    parts.push_back(answer.substr(begin, end - begin));
    begin = end + 1;
  }
  return parts;
}

}  // namespace

std::string InChild(std::function<std::string()> const &work) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) throw SystemFailure("a pipe", errno);
  pid_t const child = fork();
  if (child < 0) throw SystemFailure("a process", errno);
  if (child == 0) {
    close(ends[0]);
    WriteAll(ends[1], Answer(work));
    // What was loaded ends in order.
    std::exit(kDone);
  }
  close(ends[1]);
  std::vector<std::string> const parts = PartsOf(ReadAll(ends[0]));
  close(ends[0]);
  while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
  if (parts.size() == 1) return parts[0];
  if (parts.size() != 5) throw ToolError(kFailed, "io", "zolt", "its child process broke off");
  static std::string const kind = parts[1];  // for as long as the error
  throw ToolError(static_cast<ExitCode>(std::stoi(parts[0])), kind.c_str(), parts[2], parts[3],
                  parts[4]);
}

}  // namespace zolt::tool
