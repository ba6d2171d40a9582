#include "tests/support/temp_home.h"

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>

#include "zolt41/platform/kernel/shared_segment.h"

namespace zolt::testing {

TempHome::TempHome() {
  std::string pattern = std::filesystem::temp_directory_path() / "zolt41-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary directory");
  path_ = pattern;
  setenv("ZOLT_HOME", path_.c_str(), 1);
}

TempHome::~TempHome() {
  std::error_code ignored;
  setenv("ZOLT_HOME", path_.c_str(), 1);
  std::filesystem::remove(SegmentPath(), ignored);
  unsetenv("ZOLT_HOME");
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace zolt::testing
