#include "tools/zolt/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tools/zolt/errors.h"

namespace zolt::tool {

namespace {

constexpr size_t kMost = size_t{256} << 20;

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ > STDIN_FILENO) close(number_);
  }
  Descriptor(Descriptor const &) = delete;
  Descriptor &operator=(Descriptor const &) = delete;

  int number() const { return number_; }

 private:
  int number_;
};

std::string ReadAll(Descriptor const &file, std::string const &name) {
  std::string content;
  char block[65536];
  for (;;) {
    ssize_t const got = read(file.number(), block, sizeof block);
    if (got == 0) return content;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw SystemFailure(name, errno);
    content.append(block, static_cast<size_t>(got));
    if (content.size() > kMost) Refuse(name, "is too large for a value");
  }
}

}  // namespace

std::string ReadInput(std::string_view path) {
  if (path == "-") return ReadAll(Descriptor(STDIN_FILENO), "standard input");
  std::string const name(path);
  Descriptor const file(open(name.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.number() < 0) throw SystemFailure(name, errno);
  return ReadAll(file, name);
}

std::string ReadPlainFile(std::string const &path) {
  Descriptor const file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.number() < 0) throw SystemFailure(path, errno);
  struct stat status {};
  bool const plain = fstat(file.number(), &status) == 0 && S_ISREG(status.st_mode);
  if (!plain) throw ToolError(kFailed, "io", path, "is no plain file");
  return ReadAll(file, path);
}

}  // namespace zolt::tool
