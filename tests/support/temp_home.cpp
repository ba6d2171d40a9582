#include "tests/support/temp_home.h"

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>

namespace zolt::testing {

TempHome::TempHome() {
  std::string pattern = std::filesystem::temp_directory_path() / "zolt41-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
  path_ = pattern;
  setenv("ZOLT_HOME", path_.c_str(), 1);
}

TempHome::~TempHome() {
  unsetenv("ZOLT_HOME");
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace zolt::testing
