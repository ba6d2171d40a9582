#include "zolt41/platform/desktop/command.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace zolt {
namespace {

bool IsProgram(std::string const &path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
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

bool HasControls(std::string_view text) {
  unsigned char before = 0;
  for (char const c : text) {
    auto const byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7F || (before == 0xC2 && byte < 0xA0)) return true;
    before = byte;
  }
  return false;
}

bool IsPlainArgument(std::string_view text) {
  return !text.starts_with('-') && !HasControls(text);
}

}  // namespace zolt
