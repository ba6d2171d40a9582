#include "tools/zolt/scratch_folder.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "tools/zolt/errors.h"
#include "tools/zolt/interruption.h"

namespace zolt::tool {

ScratchFolder::ScratchFolder() {
  char const *const folder = getenv("TMPDIR");
  path_ = std::string(folder == nullptr || *folder == '\0' ? "/tmp" : folder) + "/zolt-XXXXXX";
  if (mkdtemp(path_.data()) == nullptr) throw SystemFailure(path_, errno);
  RemoveWhenInterrupted(path_);
}

ScratchFolder::~ScratchFolder() {
  RemoveWhenInterrupted("");
  if (kept_) return;
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

}  // namespace zolt::tool
