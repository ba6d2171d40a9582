#ifndef ZOLT41_TESTS_SUPPORT_TEMP_HOME_H_
#define ZOLT41_TESTS_SUPPORT_TEMP_HOME_H_

#include <string>

namespace zolt::testing {

// A new, empty home in the temporary directory, named by ZOLT_HOME for as long as this lives, and
// removed with all in it at the end.
class TempHome {
 public:
  TempHome();
  ~TempHome();
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
