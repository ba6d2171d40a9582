#include <dlfcn.h>

#include <filesystem>

#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/text.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

namespace fs = std::filesystem;

// The names by which the file has functions that are not C's.
constexpr char kSetLockWait[] = "_Z15ZOLTSetLockWaitj";
constexpr char kLastFailure[] = "_Z15ZOLTLastFailurePcj";

// The library as the file that clients load. What is registered is where it lies, and this program
// has the library within itself.
class LibraryFile {
 public:
  LibraryFile() {
    std::error_code ignored;
    fs::path const folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    for (fs::path const &path :
         {folder / "../lib" / ZOLT_LIBRARY, folder / ZOLT_LIBRARY_FOLDER / ZOLT_LIBRARY,
          fs::path(ZOLT_LIBRARY)}) {
      if (handle_ == nullptr) handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    if (handle_ == nullptr) {
      throw ToolError(kFailed, "missing", ZOLT_LIBRARY, "is not installed",
                      "install it beside zolt, or where the loader looks");
    }
  }

  template <typename Function>
  Function *Named(char const *name) const {
    auto *const found = reinterpret_cast<Function *>(dlsym(handle_, name));
    if (found == nullptr)
      throw ToolError(kFailed, "missing", ZOLT_LIBRARY, "is of another version");
    return found;
  }

  // As it is registered.
  std::string Path() const {
    Dl_info info{};
    dladdr(reinterpret_cast<void *>(Named<HRESULT(BOOL)>("ZOLTRegisterServer")), &info);
    std::error_code ignored;
    return fs::absolute(info.dli_fname, ignored).lexically_normal();
  }

 private:
  // For as long as the process lives: its threads and its exit are in it.
  void *handle_ = nullptr;
};

int Enter(Call const &call, char const *function, std::string const &done) {
  bool const machine = call.arguments.Has(OptionId::machine);
  LibraryFile const library;
  PrepareLibrary(call.arguments, call.settings);
  library.Named<void(uint32_t)>(kSetLockWait)(call.settings.wait);
  if (!call.settings.dryRun && library.Named<HRESULT(BOOL)>(function)(machine ? 1 : 0) != S_OK) {
    char subject[4096] = "";
    auto *const lastFailure = library.Named<int32_t(char *, uint32_t)>(kLastFailure);
    FailureWords const &words = WordsOf(lastFailure(subject, sizeof subject));
    throw ToolError(words.code, words.kind, subject, words.message, words.hint);
  }
  if (!call.settings.quiet && !call.settings.json) {
    WriteError("zolt: " + Escape(library.Path()) + ": " + done +
               (machine ? " for all users" : " for this user") +
               (call.settings.dryRun ? " (not written)" : ""));
  }
  return kDone;
}

int Register(Call const &call) {
  return Enter(call, "ZOLTRegisterServer", "registered");
}

int Unregister(Call const &call) {
  return Enter(call, "ZOLTUnregisterServer", "no longer registered");
}

}  // namespace

Verb const kRegister = {
    .group = "register",
    .name = "",
    .operands = "",
    .summary = "let programs find the component server",
    .options = {OptionId::machine},
    .least = 0,
    .most = 0,
    .run = Register,
    .description =
        "Enters the class of the component server, and where its library lies, among the user's\n"
        "classes, or with --machine among those of all users, which ends with 3 without the right\n"
        "to it. What was entered before is replaced.",
    .examples = "  zolt register\n",
};

Verb const kUnregister = {
    .group = "unregister",
    .name = "",
    .operands = "",
    .summary = "take the component server out again",
    .options = {OptionId::machine},
    .least = 0,
    .most = 0,
    .run = Unregister,
    .description = "Takes away what zolt register enters; what is not there is no failure.",
    .examples = "  zolt unregister\n",
};

}  // namespace zolt::tool
