#include "tools/zolt/library_file.h"

#include <cerrno>
#include <filesystem>

#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

namespace fs = std::filesystem;

// The names by which the file has functions that are not C's.
constexpr char kSetLockWait[] = "_Z15ZOLTSetLockWaitj";
constexpr char kLastFailure[] = "_Z15ZOLTLastFailurePcj";

std::string Whole(std::string const &path) {
  std::error_code ignored;
  return fs::absolute(path, ignored).lexically_normal();
}

void CheckThatClientsLoad(std::string const &path) {
  char place[4096] = "";
  HRESULT const result = ZOLTCheckModule(path.c_str(), place, sizeof place);
  if (result == S_OK) return;
  if (result == CO_E_DLLNOTFOUND) throw SystemFailure(path, ENOENT);
  throw ToolError(kFailed, "denied", place,
                  "is no file, or others can change it, so no program would load " + path,
                  "take their right away with chmod go-w on it, or install the library elsewhere");
}

void *LoadInstalled() {
  std::error_code ignored;
  fs::path const folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
  void *handle = nullptr;
  for (fs::path const &path :
       {folder / "../lib" / ZOLT_LIBRARY, folder / ZOLT_LIBRARY_FOLDER / ZOLT_LIBRARY,
        fs::path(ZOLT_LIBRARY)}) {
    if (handle == nullptr) handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  }
  if (handle != nullptr) return handle;
  throw ToolError(kFailed, "missing", ZOLT_LIBRARY, "is not installed",
                  "install it beside zolt, or where the loader looks, or name it with --module");
}

// Only what clients would load is run here.
void *LoadChecked(std::string const &path) {
  CheckThatClientsLoad(path);
  void *const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle != nullptr) return handle;
  throw ToolError(kFailed, "missing", path, "cannot be loaded", dlerror());
}

}  // namespace

LibraryFile::LibraryFile(std::string const &path)
    : handle_(path.empty() ? LoadInstalled() : LoadChecked(Whole(path))), path_(path) {
  Dl_info info{};
  dladdr(reinterpret_cast<void *>(Named<HRESULT(BOOL)>("ZOLTRegisterServer")), &info);
  path_ = Whole(info.dli_fname);
  CheckThatClientsLoad(path_);
}

void LibraryFile::SetLockWait(uint32_t wait) const {
  Named<void(uint32_t)>(kSetLockWait)(wait);
}

ToolError LibraryFile::Failure() const {
  char subject[4096] = "";
  FailureWords const &words =
      WordsOf(Named<int32_t(char *, uint32_t)>(kLastFailure)(subject, sizeof subject));
  return {words.code, words.kind, subject, words.message, words.hint};
}

}  // namespace zolt::tool
