#include "tools/zolt/book_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>

#include "tools/zolt/library_session.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

namespace fs = std::filesystem;

constexpr int kLockedFailure = 2;
constexpr std::chrono::milliseconds kPause{20};

std::string Environment(char const *name) {
  char const *const value = getenv(name);
  return value == nullptr ? "" : value;
}

bool IsNumber(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == text.npos;
}

std::string WithProgram(std::string const &process) {
  std::string program;
  std::getline(std::ifstream("/proc/" + process + "/comm"), program);
  return process + " (" + program + ")";
}

bool HasOpen(std::string const &process, struct stat const &book) {
  std::error_code error;
  for (auto file = fs::directory_iterator("/proc/" + process + "/fd", error);
       file != fs::directory_iterator(); file.increment(error)) {
    struct stat opened {};
    if (stat(file->path().c_str(), &opened) == 0 && opened.st_ino == book.st_ino &&
        opened.st_dev == book.st_dev) {
      return true;
    }
  }
  return false;
}

// A process of ours that has the file open, as "123 (name)"; "" if none is found.
std::string HolderOf(std::string const &path) {
  struct stat book {};
  if (stat(path.c_str(), &book) != 0) return "";
  std::string const self = std::to_string(getpid());
  std::error_code error;
  for (auto process = fs::directory_iterator("/proc", error); process != fs::directory_iterator();
       process.increment(error)) {
    std::string const name = process->path().filename();
    if (IsNumber(name) && name != self && HasOpen(name, book)) return WithProgram(name);
  }
  return "";
}

}  // namespace

int32_t TryWithin(uint32_t milliseconds, std::function<int32_t()> const &attempt) {
  auto const end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  for (;;) {
    int32_t const result = attempt();
    if (result == 0 || ZOLTLastFailure(nullptr, 0) != kLockedFailure) return result;
    if (std::chrono::steady_clock::now() >= end) return result;
    std::this_thread::sleep_for(kPause);
  }
}

std::string BookPath(Call const &call) {
  std::string_view const given = call.arguments.Value(OptionId::file);
  if (call.arguments.Has(OptionId::file) && given.empty()) Refuse("-f", "names no file");
  if (!given.empty()) return std::string(given);
  std::string const named = Environment("ZOLT_ROLODEX");
  return named.empty() ? UserHome() + "/contacts.rolodex" : named;
}

ToolError BookFailure(std::string const &path) {
  ToolError failure = StoreFailure(path);
  if (failure.code == kDamaged) {
    failure.message = "is no card database, of another version, or damaged";
    failure.hint = "zolt rolodex check tells more";
  }
  if (failure.code != kLocked) return failure;
  std::string const holder = HolderOf(path);
  failure.message = "open in another program";
  if (!holder.empty())
    failure.hint = "process " + holder + " has it open; wait longer with --wait S";
  return failure;
}

WriteBar::WriteBar(std::string const &path, uint32_t wait) {
  int32_t const code = TryWithin(wait, [&] { return AFS_LZOpenFile(path.c_str(), 1, &file_); });
  if (code != 0) throw BookFailure(path);
}

WriteBar::~WriteBar() {
  AFS_CloseFile(file_);
}

std::string RealPath(std::string const &path) {
  std::error_code error;
  fs::path const real = fs::canonical(path, error);
  return error ? path : real.string();
}

std::vector<std::string> PiecesOf(std::string const &path) {
  fs::path const book = RealPath(path);
  std::string const begin = book.filename().string() + ".lost-";
  std::vector<std::string> pieces;
  std::error_code error;
  fs::path const folder = book.has_parent_path() ? book.parent_path() : ".";
  for (auto each = fs::directory_iterator(folder, error); !error && each != fs::end(each);
       each.increment(error)) {
    std::string const name = each->path().filename().string();
    if (name.starts_with(begin) && IsNumber(std::string_view(name).substr(begin.size())))
      pieces.push_back(each->path().string());
  }
  std::ranges::sort(pieces);
  return pieces;
}

}  // namespace zolt::tool
