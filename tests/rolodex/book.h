#ifndef ZOLT41_TESTS_ROLODEX_BOOK_H_
#define ZOLT41_TESTS_ROLODEX_BOOK_H_

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "zolt41/foundation/mem_block.h"
#include "zolt41/rolodex/rolodex.h"

namespace zolt::testing {

inline std::string ContentOf(std::string const &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteContent(std::string const &path, std::string const &content) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

inline uint32_t NumberAt(std::string const &bytes, size_t position) {
  uint32_t number = 0;
  for (size_t i = 4; i-- > 0;)
    number = number << 8 | static_cast<unsigned char>(bytes[position + i]);
  return number;
}

inline void PutNumber(std::string *bytes, size_t position, uint32_t number) {
  for (size_t i = 0; i < 4; i++) (*bytes)[position + i] = static_cast<char>(number >> 8 * i);
}

// Files that are made while this lives lie in memory, where there is such a place: trials that open
// thousands of them spend their time elsewhere.
class FilesInMemory {
 public:
  FilesInMemory() {
    char const *const old = std::getenv("TMPDIR");
    if (old != nullptr) old_ = old;
    if (std::filesystem::is_directory("/dev/shm")) setenv("TMPDIR", "/dev/shm", 1);
  }
  ~FilesInMemory() { old_.empty() ? unsetenv("TMPDIR") : setenv("TMPDIR", old_.c_str(), 1); }
  FilesInMemory(FilesInMemory const &) = delete;
  FilesInMemory &operator=(FilesInMemory const &) = delete;

 private:
  std::string old_;
};

// The same database in the order of a big-endian machine.
inline std::string BigEndian(std::string bytes) {
  auto const swap = [&bytes](size_t at) {
    auto const begin = bytes.begin() + static_cast<ptrdiff_t>(at);
    std::reverse(begin, begin + 4);
  };
  swap(0);
  for (size_t i = 0; i < 128; i++) swap(8 + 80 * i + 64);
  for (size_t at = 10248; NumberAt(bytes, at) != 0xFFFFFFFF;) {
    uint32_t const size = NumberAt(bytes, at + 8);
    for (size_t word = 0; word < 7; word++) swap(at + 4 * word);
    at += size;
  }
  return bytes;
}

// A list without properties, and bytes behind it up to `size`, at least 4.
inline std::string BodyOf(uint32_t size, char fill) {
  return std::string(4, '\0') + std::string(size - 4, fill);
}

inline std::string ListOf(PCardStorage *card) {
  char *const block = card->Get();
  std::string const list(block, GetMemSize(block));
  _DisposeMem(block);
  return list;
}

using Ids = std::vector<uint32_t>;
using Names = std::array<std::string, 3>;
using Categories = std::vector<unsigned char>;  // a list: a count and numbers

struct CardContent {
  std::string body;
  Names names;
  Categories categories = {0};
  bool operator==(CardContent const &) const = default;
};
using Cards = std::map<uint32_t, CardContent>;

// A database with verbs for tests, which sees what derived classes see.
class Book : public Rolodex {
 public:
  using Rolodex::CardIndex;
  using Rolodex::Flush;
  using Rolodex::Modify;
  using Rolodex::Rebuild;
  using Rolodex::WriteCardHeader;

  static void SetBody(PCardStorage *card, std::string const &body) {
    card->Set(body.data(), static_cast<int32_t>(body.size()));
  }
  uint32_t Add(std::string const &body, Names const &names = {}, Categories const &set = {0}) {
    PCardStorage card;
    SetBody(&card, body);
    return CreateCard(&card, names[0].c_str(), names[1].c_str(), names[2].c_str(), set.data());
  }
  int32_t Save(uint32_t id, std::string const &body) {
    PCardStorage card;
    SetBody(&card, body);
    return SaveCard(id, &card);
  }
  // "!" if it cannot be loaded.
  std::string Body(uint32_t id) {
    PCardStorage card;
    return LoadCard(id, &card) != 0 ? ListOf(&card) : "!";
  }
  Names NamesOf(uint32_t id) {
    char text[3][32] = {};
    GetCardName(id, text[0], text[1], text[2]);
    return {text[0], text[1], text[2]};
  }
  Categories CategoriesOf(uint32_t id) {
    unsigned char list[129] = {};
    GetCardCategories(id, list);
    return {list, list + (*list == 255 ? 1 : *list + 1)};
  }
  std::vector<uint32_t> Ids() {
    std::vector<uint32_t> ids;
    uint32_t cursor = 0;
    while (uint32_t const id = FindCard(nullptr, nullptr, nullptr, &cursor)) ids.push_back(id);
    return ids;
  }
  Cards All() {
    Cards cards;
    for (uint32_t const id : Ids()) cards[id] = {Body(id), NamesOf(id), CategoriesOf(id)};
    return cards;
  }
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_ROLODEX_BOOK_H_
