#ifndef ZOLT41_TESTS_SUPPORT_TEMP_HOME_H_
#define ZOLT41_TESTS_SUPPORT_TEMP_HOME_H_

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "zolt41/platform/kernel/shared_segment.h"

namespace zolt::testing {

// A new, empty home, named by ZOLT_HOME for as long as this lives, and removed with all in it at
// the end.
class TempHome {
 public:
  explicit TempHome(std::filesystem::path const &parent = std::filesystem::temp_directory_path())
      : path_(parent / "zolt41-test-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no temporary directory");
    setenv("ZOLT_HOME", path_.c_str(), 1);
  }
  ~TempHome() {
    std::error_code ignored;
    setenv("ZOLT_HOME", path_.c_str(), 1);
    std::filesystem::remove(SegmentPath(), ignored);
    unsetenv("ZOLT_HOME");
    std::filesystem::remove_all(path_, ignored);
  }
  TempHome(TempHome const &) = delete;
  TempHome &operator=(TempHome const &) = delete;

  std::string const &path() const { return path_; }
  std::string UserHive() const { return path_ + "/user.hive"; }
  std::string UserSync() const { return path_ + "/user.sync"; }
  std::string MachineHive() const { return path_ + "/machine/machine.hive"; }

 private:
  std::string path_;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_TEMP_HOME_H_
