#ifndef ZOLT41_TOOLS_ZOLT_SCRATCH_FOLDER_H_
#define ZOLT41_TOOLS_ZOLT_SCRATCH_FOLDER_H_

#include <string>
#include <string_view>

namespace zolt::tool {

// A folder for files that only live for a moment, since the library reads and writes by name. It is
// the user's alone, and goes with all that is in it.
class ScratchFolder {
 public:
  ScratchFolder();
  ~ScratchFolder();
  ScratchFolder(ScratchFolder const &) = delete;
  ScratchFolder &operator=(ScratchFolder const &) = delete;

  // It stays after all, for the user to look into.
  void Keep() { kept_ = true; }

  std::string File(std::string_view name) const { return path_ + "/" + std::string(name); }

 private:
  std::string path_;
  bool kept_ = false;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_SCRATCH_FOLDER_H_
