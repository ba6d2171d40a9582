#include "tools/zolt/book.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <new>
#include <set>
#include <system_error>

#include "tools/zolt/errors.h"
#include "tools/zolt/near_name.h"
#include "tools/zolt/progress.h"
#include "tools/zolt/scratch_folder.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

namespace fs = std::filesystem;

constexpr int kDeniedFailure = 1;
constexpr int kDamagedFailure = 4;
constexpr size_t kNameSize = 32;
constexpr size_t kListSize = 129;
constexpr uint8_t kCategories = 128;

std::optional<uint32_t> Number(std::string_view text) {
  uint32_t number = 0;
  auto const result = std::from_chars(text.data(), text.data() + text.size(), number);
  bool const whole = result.ec == std::errc() && result.ptr == text.data() + text.size();
  return whole ? std::optional(number) : std::nullopt;
}

}  // namespace

Book::Book(Call const &call, Access access) : call_(call), path_(BookPath(call)) {
  struct stat status {};
  if (stat(path_.c_str(), &status) != 0) {
    int const error = errno;
    ToolError failure = SystemFailure(path_, error);
    if (error == ENOENT) failure.hint = "zolt rolodex create makes a book";
    throw failure;
  }
  bool const reads = access == Access::read || call.settings.dryRun;
  std::vector<std::string> pieces;
  if (!reads) pieces = PiecesOf(path_);
  int32_t result =
      TryWithin(call.settings.wait, [&] { return rolodex_.Open(path_.c_str(), reads ? 1 : 0); });
  // Reads the index, which may have to be made anew.
  if (!reads && result == 0) rolodex_.FindCard(nullptr, nullptr, nullptr, nullptr);
  if (!reads) TellNewPieces(pieces);
  if (result == 0) return;
  int const failure = ZOLTLastFailure(nullptr, 0);
  if (reads && (failure == kDamagedFailure || failure == kDeniedFailure)) result = OpenCopy();
  if (result == 0) return;
  if (ZOLTLastFailure(nullptr, 0) != 0) throw BookFailure(path_);
  throw ToolError(kDamaged, "damaged", path_, "is no card database, or of another version",
                  "zolt rolodex check tells more");
}

// What was not closed, or is of another machine, has to be put in order to be read. That is for
// those to do who write: here a copy is, of which nothing may be lost.
int32_t Book::OpenCopy() {
  Progress const progress(call_.settings, "reading the book");
  ScratchFolder const scratch;
  std::string const copy = scratch.File("book");
  {
    WriteBar const bar(path_, call_.settings.wait);
    std::error_code error;
    if (!fs::copy_file(path_, copy, error)) throw SystemFailure(path_, error.value());
    fs::permissions(copy, fs::perms::owner_read | fs::perms::owner_write);
  }
  RolodexReport report;
  bool const checked = CheckRolodex(copy.c_str(), nullptr, nullptr, &report) == 0;
  bool loses = checked && report.cut + report.lost > 0;
  int32_t const result = loses ? 0 : rolodex_.Open(copy.c_str(), 0);
  // What is in the other byte order cannot be checked before.
  loses = loses || (!checked && !PiecesOf(copy).empty());
  if (loses) {
    throw ToolError(kDamaged, "damaged", path_, "is damaged, and reading it would leave cards out",
                    "zolt rolodex check names them, and with --repair mends it");
  }
  return result;
}

void Book::TellNewPieces(std::vector<std::string> const &known) {
  for (std::string const &piece : PiecesOf(path_)) {
    if (std::ranges::find(known, piece) != known.end()) continue;
    Report({kDamaged, "damaged", path_, "was damaged; what stood behind the damage is in " + piece,
            "zolt rolodex check --repair " + piece + " brings its cards back"},
           call_.settings.json, false);
  }
}

void Book::CheckDone() const {
  if (ZOLTLastFailure(nullptr, 0) != 0) throw BookFailure(path_);
}

void Book::Close() {
  // Forgets what failed before.
  rolodex_.GetCardName(0, nullptr, nullptr, nullptr);
  rolodex_.Close();
  CheckDone();
}

void Book::EachCard(char const *what, std::function<void(uint32_t)> const &visit) {
  std::vector<uint32_t> const ids = Ids();
  Progress progress(call_.settings, what, ids.size());
  for (uint32_t const id : ids) {
    progress.Step();
    visit(id);
  }
}

std::vector<uint32_t> Book::Ids(std::vector<uint8_t> const &required) {
  std::vector<unsigned char> const list = CategoryListOf(required);
  char *block = NewMem(0);
  if (block == nullptr) throw std::bad_alloc();
  uint32_t const count =
      rolodex_.SelectByCategory(required.empty() ? nullptr : list.data(), nullptr, nullptr, &block);
  int const failure = ZOLTLastFailure(nullptr, 0);
  std::vector<uint32_t> ids(count);
  if (count > 0) std::memcpy(ids.data(), block, count * sizeof(uint32_t));
  _DisposeMem(block);
  if (failure != 0) throw BookFailure(path_);
  return ids;
}

CardHead Book::Head(uint32_t id) {
  char names[3][kNameSize] = {};
  unsigned char list[kListSize] = {};
  rolodex_.GetCardName(id, names[0], names[1], names[2]);
  rolodex_.GetCardCategories(id, list);
  CardHead head{id, {names[0], names[1], names[2]}, {}};
  if (list[0] == 255) {
    for (uint8_t category = 0; category < kCategories; category++)
      head.categories.push_back(category);
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
  EachCard("searching", [&](uint32_t id) {
    if (Folded(Head(id).names[0]).find(folded) != std::string::npos) ids.push_back(id);
  });
  return ids;
}

std::vector<uint32_t> Book::Keyed(std::string_view key) {
  std::vector<uint32_t> ids;
  EachCard("searching", [&](uint32_t id) {
    for (CardProperty const &property : Properties(id)) {
      bool const same = property.name == kKeyProperty && property.value.size() >= 24 &&
                        SameName(Hex(property.value.substr(0, 24)).substr(2), key);
      if (same) ids.push_back(id);
    }
  });
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

std::vector<std::pair<uint8_t, std::string>> Book::CategoryNames() {
  std::vector<std::pair<uint8_t, std::string>> names;
  for (uint8_t category = 0; category < kCategories; category++) {
    std::string const name = NameOf(*rolodex_.GetCategoryInfo(category));
    if (!name.empty()) names.emplace_back(category, ToUtf8(name));
  }
  return names;
}

// Those of exactly that name, else those of it in another case.
std::vector<uint8_t> Book::CategoriesNamed(std::string_view name) {
  std::vector<uint8_t> exact;
  std::vector<uint8_t> folded;
  for (auto const &[category, each] : CategoryNames()) {
    if (each == name) exact.push_back(category);
    if (SameName(each, name)) folded.push_back(category);
  }
  return exact.empty() ? folded : exact;
}

uint8_t Book::CategoryFrom(std::string_view word) {
  if (word.empty() || Number(word)) return CategoryNumber(word);
  std::vector<uint8_t> const named = CategoriesNamed(word);
  if (named.size() == 1) return named.front();
  if (!named.empty()) {
    throw ToolError(kNo, "several", std::string(word),
                    std::to_string(named.size()) + " categories are so named",
                    "say which one by its number: " + CategoriesText(named));
  }
  std::vector<std::string> names;
  for (auto const &[category, name] : CategoryNames()) names.push_back(name);
  std::string const near = DidYouMean(word, names);
  throw ToolError(kNo, "absent", std::string(word), "no such category",
                  near.empty() ? "zolt rolodex info lists those with a name" : near);
}

std::vector<uint8_t> Book::CategoriesFrom(std::string_view text) {
  if (CategoriesNamed(text).size() == 1) return {CategoryFrom(text)};
  std::vector<uint8_t> categories;
  do {
    size_t const end = std::min(text.find(','), text.size());
    categories.push_back(CategoryFrom(text.substr(0, end)));
    text.remove_prefix(std::min(end + 1, text.size()));
  } while (!text.empty());
  return categories;
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

std::string NameOf(CategoryInfo const &info) {
  return {info.text, strnlen(info.text, sizeof info.text)};
}

std::string CategoriesText(std::vector<uint8_t> const &categories) {
  std::string text;
  for (uint8_t const category : categories)
    text += (text.empty() ? "" : ",") + std::to_string(category);
  return text;
}

uint8_t CategoryNumber(std::string_view text) {
  std::optional<uint32_t> const number = Number(text);
  if (!number || *number >= kCategories) {
    Refuse(std::string(text), "is no number of a category", "they are from 0 to 127");
  }
  return static_cast<uint8_t>(*number);
}

std::vector<unsigned char> CategoryListOf(std::vector<uint8_t> const &categories) {
  std::set<uint8_t> const each(categories.begin(), categories.end());
  std::vector<unsigned char> list(each.size() + 1);
  list[0] = static_cast<unsigned char>(each.size());
  std::ranges::copy(each, list.begin() + 1);
  return list;
}

}  // namespace zolt::tool
