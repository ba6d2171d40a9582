#ifndef ZOLT41_TESTS_SERVICES_STAND_IN_H_
#define ZOLT41_TESTS_SERVICES_STAND_IN_H_

#include <sys/stat.h>

#include <fstream>

#include "tests/support/files.h"

namespace zolt::testing {

// Programs that stand in for those of the machine: they alone are in PATH, and write down their
// arguments and their input.
class StandInTest : public FileTest {
 protected:
  StandInTest() {
    if (char const *const path = getenv("PATH"); path != nullptr) path_ = path;
    std::filesystem::create_directory(Folder());
    setenv("PATH", Folder().c_str(), 1);
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
  }
  ~StandInTest() override { setenv("PATH", path_.c_str(), 1); }

  std::string Folder() const { return Path("bin"); }

  // `last` are commands that it runs at its end.
  void StandIn(std::string const &name, std::string const &last = "") const {
    std::string const file = Folder() + "/" + name;
    std::ofstream(file)
        << "#!/bin/sh\n{ for word in \"$@\"; do printf '<%s>' \"$word\"; done; echo; "
           "/bin/cat; } > '"
        << file << ".heard'\n"
        << last << "\n";
    chmod(file.c_str(), 0755);
  }

  // "" if it was not started.
  std::string Heard(std::string const &name) const {
    return ContentOf(Folder() + "/" + name + ".heard");
  }

 private:
  std::string path_;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SERVICES_STAND_IN_H_
