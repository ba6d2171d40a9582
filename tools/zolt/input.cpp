#include "tools/zolt/input.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "tools/zolt/errors.h"

namespace zolt::tool {

namespace {

constexpr size_t kMost = size_t{256} << 20;

class Descriptor {
 public:
  explicit Descriptor(std::string const &path)
      : number_(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
  ~Descriptor() {
    if (number_ > STDIN_FILENO) close(number_);
  }
  Descriptor(Descriptor const &) = delete;
  Descriptor &operator=(Descriptor const &) = delete;

  int number() const { return number_; }

 private:
  int number_;
};

}  // namespace

std::string ReadInput(std::string_view path) {
  std::string const name = path == "-" ? "standard input" : std::string(path);
  Descriptor const file{std::string(path)};
  if (file.number() < 0) throw SystemFailure(name, errno);
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

}  // namespace zolt::tool
