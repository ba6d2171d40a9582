#include "tools/zolt/error_capture.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "tools/zolt/text.h"
#include "tools/zolt/utf8.h"

namespace zolt::tool {

namespace {

constexpr size_t kMost = 4096;

}  // namespace

ErrorCapture::ErrorCapture()
    : usual_(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)),
      file_(memfd_create("zolt-errors", MFD_CLOEXEC)) {
  if (usual_ >= 0 && file_ >= 0) dup2(file_, STDERR_FILENO);
}

ErrorCapture::~ErrorCapture() {
  if (usual_ >= 0 && file_ >= 0) dup2(usual_, STDERR_FILENO);
  if (usual_ >= 0) close(usual_);
  if (file_ >= 0) close(file_);
}

std::string ErrorCapture::FirstLine() const {
  char bytes[kMost];
  ssize_t const got = pread(file_, bytes, sizeof bytes, 0);
  std::string_view text(bytes, got > 0 ? static_cast<size_t>(got) : 0);
  text.remove_prefix(std::min<size_t>(text.find_first_not_of(" \t\r\n"), text.size()));
  text = text.substr(0, text.find_first_of("\r\n"));
  return ValidUtf8(text) ? std::string(text) : ToUtf8(text);
}

}  // namespace zolt::tool
