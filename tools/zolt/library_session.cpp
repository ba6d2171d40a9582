#include "tools/zolt/library_session.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>

#include "tools/zolt/errors.h"
#include "tools/zolt/output.h"
#include "tools/zolt/section_path.h"
#include "tools/zolt/text.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

std::string Environment(char const *name) {
  char const *const value = getenv(name);
  return value == nullptr ? "" : value;
}

std::string OwnerOf(std::string const &path) {
  struct stat found {};
  if (stat(path.c_str(), &found) != 0) return "nobody yet";
  passwd const *const entry = getpwuid(found.st_uid);
  return entry != nullptr ? entry->pw_name : std::to_string(found.st_uid);
}

// The library would end a longer path, or one with an empty name, before its end.
constexpr size_t kLongestTree = 254;

// The tree that the options name, in the local code page; empty for the default ones.
std::string tree;

char const *TreeOrDefault() {
  return tree.empty() ? nullptr : tree.c_str();
}

std::string TreeOf(Arguments const &arguments) {
  if (!arguments.Has(OptionId::tree)) return "";
  std::string_view const path = arguments.Value(OptionId::tree);
  SplitPath(path, "--tree " + std::string(path));
  std::string local = ToLocal(path);
  if (local.size() > kLongestTree) Refuse("--tree", "a path has at most 254 bytes");
  return local;
}

}  // namespace

std::string UserHome() {
  if (std::string home = Environment("ZOLT_HOME"); !home.empty()) return home;
  std::string data = Environment("XDG_DATA_HOME");
  if (data.empty() || data.front() != '/') data = Environment("HOME") + "/.local/share";
  return data + "/zolt41";
}

void PrepareLibrary(Arguments const &arguments, Settings const &settings) {
  if (arguments.Has(OptionId::home)) {
    std::string const home(arguments.Value(OptionId::home));
    if (home.empty()) Refuse("--home", "names no directory");
    setenv("ZOLT_HOME", home.c_str(), 1);
  }
  ZOLTSetLockWait(settings.wait);
  tree = TreeOf(arguments);
}

HKEY OpenTop(Level const &level) {
  std::string path = tree;
  if (path.empty()) {
    path.resize(kLongestTree + 1);
    path.resize(static_cast<size_t>(
        ZOLTDefaultTree(level.level, path.data(), static_cast<int32_t>(path.size()))));
  }
  std::ranges::replace(path, ':', '\\');
  HKEY key = 0;
  RegOpenKeyA(level.root, path.c_str(), &key);
  return key;
}

LibrarySession::LibrarySession() {
  InitZOLT();
  InitPrefs(TreeOrDefault());
}

LibrarySession::~LibrarySession() {
  DisposeZOLT();
}

StoreSession::StoreSession(Level const &level)
    : level_(level), store_(level.level, TreeOrDefault()) {
  level_.setStore(&store_);
}

StoreSession::~StoreSession() {
  level_.setStore(nullptr);
}

void SayWhoseStore(Settings const &settings, Level const &level) {
  bool const chatter = !settings.quiet && !settings.json;
  if (!chatter || geteuid() != 0 || Environment("SUDO_USER").empty()) return;
  if (level.root != HKEY_CURRENT_USER) return;
  std::string const home = UserHome();
  WriteError("zolt: " + Escape("this is the store of " + OwnerOf(home) + ", in " + home));
}

}  // namespace zolt::tool
