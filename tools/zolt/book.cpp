#include "tools/zolt/book.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <thread>

#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

constexpr int kLockedFailure = 2;
constexpr std::chrono::milliseconds kPause{20};
constexpr size_t kNameSize = 32;
constexpr size_t kListSize = 129;

std::string Environment(char const *name) {
  char const *const value = getenv(name);
  return value == nullptr ? "" : value;
}

std::optional<uint32_t> Number(std::string_view text) {
  uint32_t number = 0;
  auto const result = std::from_chars(text.data(), text.data() + text.size(), number);
  bool const whole = result.ec == std::errc() && result.ptr == text.data() + text.size();
  return whole ? std::optional(number) : std::nullopt;
}

std::string WithProgram(std::string const &process) {
  std::string program;
  std::getline(std::ifstream("/proc/" + process + "/comm"), program);
  return process + " (" + program + ")";
}

// A process of ours that has the file open, as "123 (name)"; "" if none is found.
std::string HolderOf(std::string const &path) {
  struct stat book {};
  if (stat(path.c_str(), &book) != 0) return "";
  DIR *const processes = opendir("/proc");
  if (processes == nullptr) return "";
  std::string holder;
  while (dirent const *const process = readdir(processes)) {
    std::string const name = process->d_name;
    if (!Number(name) || name == std::to_string(getpid()) || !holder.empty()) continue;
    std::string const folder = "/proc/" + name + "/fd";
    DIR *const files = opendir(folder.c_str());
    if (files == nullptr) continue;
    while (dirent const *const file = readdir(files)) {
      struct stat opened {};
      bool const same = stat((folder + "/" + file->d_name).c_str(), &opened) == 0 &&
                        opened.st_ino == book.st_ino && opened.st_dev == book.st_dev;
      if (!same) continue;
      holder = WithProgram(name);
      break;
    }
    closedir(files);
  }
  closedir(processes);
  return holder;
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
  if (failure.code != kLocked) return failure;
  std::string const holder = HolderOf(path);
  failure.message = "open in another program";
  if (!holder.empty())
    failure.hint = "process " + holder + " has it open; wait longer with --wait S";
  return failure;
}

Book::Book(Call const &call, Access access) : call_(call), path_(BookPath(call)) {
  struct stat status {};
  if (stat(path_.c_str(), &status) != 0) {
    int const error = errno;
    ToolError failure = SystemFailure(path_, error);
    if (error == ENOENT) failure.hint = "zolt rolodex create makes a book";
    throw failure;
  }
  int32_t result = TryWithin(call.settings.wait, [&] {
    return rolodex_.Open(path_.c_str(), access == Access::read ? 1 : 0);
  });
  // A book that was not closed, or is of another machine, must be put in order first.
  bool const locked = ZOLTLastFailure(nullptr, 0) == kLockedFailure;
  if (result != 0 && access == Access::read && !locked) {
    result = TryWithin(call.settings.wait, [&] { return rolodex_.Open(path_.c_str(), 0); });
  }
  if (result == 0) return;
  if (ZOLTLastFailure(nullptr, 0) != 0) throw BookFailure(path_);
  throw ToolError(kDamaged, "damaged", path_, "is no card database, or of another version",
                  "zolt rolodex check tells more");
}

std::vector<uint32_t> Book::Ids(std::vector<uint8_t> const &required) {
  std::vector<unsigned char> const list = CategoryListOf(required);
  char *block = NewMem(0);
  if (block == nullptr) throw std::bad_alloc();
  uint32_t const count =
      rolodex_.SelectByCategory(required.empty() ? nullptr : list.data(), nullptr, nullptr, &block);
  std::vector<uint32_t> ids(count);
  std::memcpy(ids.data(), block, count * sizeof(uint32_t));
  _DisposeMem(block);
  return ids;
}

CardHead Book::Head(uint32_t id) {
  char names[3][kNameSize] = {};
  unsigned char list[kListSize] = {};
  rolodex_.GetCardName(id, names[0], names[1], names[2]);
  rolodex_.GetCardCategories(id, list);
  CardHead head{id, {names[0], names[1], names[2]}, {}};
  if (list[0] == 255) {
    for (int category = 0; category < 128; category++)
      head.categories.push_back(static_cast<uint8_t>(category));
  } else {
    head.categories.assign(list + 1, list + 1 + list[0]);
  }
  return head;
}

void Book::Load(uint32_t id, PCardStorage *card) {
  if (rolodex_.LoadCard(id, card) == 0) throw BookFailure(path_);
}

std::vector<CardProperty> Book::Properties(uint32_t id) {
  PCardStorage card;
  Load(id, &card);
  return PropertiesOf(&card);
}

std::vector<uint32_t> Book::Named(std::string_view text) {
  std::string const local = ToLocal(text).substr(0, kNameSize - 1);
  std::vector<uint32_t> ids;
  uint32_t cursor = 0;
  while (uint32_t const id = rolodex_.FindCard(local.c_str(), nullptr, nullptr, &cursor))
    ids.push_back(id);
  if (!ids.empty()) return ids;
  std::string const folded = Folded(local);
  for (uint32_t const id : Ids()) {
    if (Folded(Head(id).names[0]).find(folded) != std::string::npos) ids.push_back(id);
  }
  return ids;
}

std::vector<uint32_t> Book::Keyed(std::string_view key) {
  std::vector<uint32_t> ids;
  for (uint32_t const id : Ids()) {
    for (CardProperty const &property : Properties(id)) {
      bool const same = property.name == kKeyProperty && property.value.size() >= 24 &&
                        SameName(Hex(property.value.substr(0, 24)).substr(2), key);
      if (same) ids.push_back(id);
    }
  }
  return ids;
}

std::vector<uint32_t> Book::Find(std::string_view operand) {
  std::vector<uint32_t> ids;
  bool const byId = operand.starts_with("id:");
  std::optional<uint32_t> const number = Number(byId ? operand.substr(3) : operand);
  if (byId && !number) Refuse(std::string(operand), "is no number of a card");
  if (number) {
    if (rolodex_.GetCardName(*number, nullptr, nullptr, nullptr) != 0) ids.push_back(*number);
  } else if (operand.starts_with("key:")) {
    ids = Keyed(operand.substr(4));
  } else {
    ids = Named(operand.starts_with("name:") ? operand.substr(5) : operand);
  }
  if (ids.empty()) throw ToolError(kNo, "absent", std::string(operand), "no such card");
  if (ids.size() == 1 || call_.arguments.Has(OptionId::all)) return ids;
  if (!call_.arguments.Has(OptionId::first)) FailWithSeveral(operand, ids);
  return {ids.front()};
}

uint32_t Book::FindOne(std::string_view operand) {
  return Find(operand).front();
}

void Book::FailWithSeveral(std::string_view operand, std::vector<uint32_t> const &ids) {
  if (!call_.settings.json) {
    for (uint32_t const id : ids) {
      CardHead const head = Head(id);
      WriteError(Escape("id:" + std::to_string(id) + "  " + ToUtf8(head.names[0]) + "  " +
                        ToUtf8(head.names[2])));
    }
  }
  throw ToolError(kNo, "several", std::string(operand),
                  std::to_string(ids.size()) + " cards are so named",
                  "say which one with id:N, or use --first or --all");
}

std::string CategoriesText(std::vector<uint8_t> const &categories) {
  std::string text;
  for (uint8_t const category : categories)
    text += (text.empty() ? "" : ",") + std::to_string(category);
  return text;
}

std::vector<uint8_t> CategoriesFrom(std::string_view text) {
  std::vector<uint8_t> categories;
  while (!text.empty()) {
    size_t const end = std::min(text.find(','), text.size());
    std::optional<uint32_t> const number = Number(text.substr(0, end));
    if (!number || *number > 127) {
      Refuse(std::string(text.substr(0, end)), "is no category", "they are numbers from 0 to 127");
    }
    categories.push_back(static_cast<uint8_t>(*number));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return categories;
}

std::vector<unsigned char> CategoryListOf(std::vector<uint8_t> const &categories) {
  std::vector<unsigned char> list(categories.size() + 1);
  list[0] = static_cast<unsigned char>(categories.size());
  std::ranges::copy(categories, list.begin() + 1);
  return list;
}

}  // namespace zolt::tool
