#ifndef ZOLT41_TESTS_ROLODEX_BOOK_H_
#define ZOLT41_TESTS_ROLODEX_BOOK_H_

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <vector>

#include "tests/support/files.h"
#include "tests/support/mem_bytes.h"
#include "zolt41/cardfile/call_card.h"
#include "zolt41/foundation/endian.h"
#include "zolt41/rolodex/rolodex.h"

namespace zolt::testing {

constexpr uint32_t kArea = 10248;       // where cards begin
constexpr uint32_t kRecord = 124 + 50;  // one with a body of 50
constexpr uint32_t kThird = kArea + 2 * kRecord;

inline uint32_t NumberAt(std::string const &bytes, size_t position) {
  return LoadLittle32(bytes.data() + position);
}

inline void PutNumber(std::string *bytes, size_t position, uint32_t number) {
  StoreLittle32(number, bytes->data() + position);
}

inline std::string With(std::string content, size_t position, uint32_t number) {
  PutNumber(&content, position, number);
  return content;
}

// Long trials are a hundred times longer where there is time for it, and brief where a sanitizer
// makes them slow and only a look at each step is wanted.
inline uint32_t Often(uint32_t times) {
  if (std::getenv("ZOLT_SLOW") != nullptr) return times * 100;
  return std::getenv("ZOLT_BRIEF") != nullptr ? times / 5 : times;
}

// The same database in the order of a big-endian machine.
inline std::string BigEndian(std::string bytes) {
  auto const swap = [&bytes](size_t at) {
    auto const begin = bytes.begin() + static_cast<ptrdiff_t>(at);
    std::reverse(begin, begin + 4);
  };
  swap(0);
  for (size_t i = 0; i < 128; i++) swap(8 + 80 * i + 64);
  for (size_t at = kArea; NumberAt(bytes, at) != 0xFFFFFFFF;) {
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

  static void SetBody(PCardStorage *card, std::string const &body) {
    card->Set(body.data(), static_cast<int32_t>(body.size()));
  }
  uint32_t Add(std::string const &body, Names const &names = {}, Categories const &set = {0}) {
    PCardStorage card;
    SetBody(&card, body);
    return CreateCard(&card, names[0].c_str(), names[1].c_str(), names[2].c_str(), set.data());
  }
  // By CreateCards. The ids of those that were added.
  Ids AddMany(std::vector<CardContent> const &contents) {
    std::vector<CallCard> cards(contents.size());
    std::vector<PCardStorage *> pointers;
    std::vector<CardNames> names;
    std::vector<unsigned char const *> sets;
    for (size_t i = 0; i < contents.size(); i++) {
      CardContent const &card = contents[i];
      SetBody(&cards[i], card.body);
      pointers.push_back(&cards[i]);
      names.push_back({card.names[0].c_str(), card.names[1].c_str(), card.names[2].c_str()});
      sets.push_back(card.categories.data());
    }
    Ids ids(contents.size());
    ids.resize(CreateCards(static_cast<uint32_t>(contents.size()), pointers.data(), names.data(),
                           sets.data(), ids.data()));
    return ids;
  }
  int32_t Save(uint32_t id, std::string const &body) {
    PCardStorage card;
    SetBody(&card, body);
    return SaveCard(id, &card);
  }
  // "!" if it cannot be loaded.
  std::string Body(uint32_t id) {
    PCardStorage card;
    if (LoadCard(id, &card) == 0) return "!";
    return Taken(card.Get());
  }
  Names NamesOf(uint32_t id) {
    char text[3][32] = {};
    GetCardName(id, text[0], text[1], text[2]);
    return {text[0], text[1], text[2]};
  }
  CardContent Card(uint32_t id) {
    unsigned char list[129] = {};
    GetCardCategories(id, list);
    return {Body(id), NamesOf(id), {list, list + (*list == 255 ? 1 : *list + 1)}};
  }
  // By SelectByCategory, with a block that was there before.
  Ids By(unsigned char const *required, unsigned char const *keep, unsigned char const *exclude) {
    char *block = NewMem(8);
    uint32_t const count = SelectByCategory(required, keep, exclude, &block);
    std::string const bytes = Taken(block);
    EXPECT_EQ(bytes.size(), 4 * count);
    Ids ids;
    for (uint32_t i = 0; i < count; i++) ids.push_back(NumberAt(bytes, 4 * i));
    return ids;
  }
  uint32_t Mark(Ids const &ids, char const *property, int oper, char const *value,
                uint32_t category) {
    auto const size = static_cast<uint32_t>(4 * ids.size());
    char *const block = NewMem(size);
    std::copy_n(reinterpret_cast<char const *>(ids.data()), size, block);
    uint32_t const count = Select(block, property, static_cast<CSOper>(oper), value, category);
    _DisposeMem(block);
    return count;
  }
  // In file order.
  Ids AllIds() {
    Ids ids;
    uint32_t cursor = 0;
    while (uint32_t const id = FindCard(nullptr, nullptr, nullptr, &cursor)) ids.push_back(id);
    return ids;
  }
  Cards All() {
    Cards cards;
    for (uint32_t const id : AllIds()) cards[id] = Card(id);
    return cards;
  }
};

// An empty database, open for writing.
class BookTest : public ::testing::Test {
 protected:
  BookTest() { Begin(); }
  void Begin() {
    book_.Close();
    EXPECT_EQ(Rolodex::Create(path_.c_str()), 0);
    EXPECT_EQ(Open(), 0);
  }
  int32_t Open(int32_t readOnly = 0) { return book_.Open(path_.c_str(), readOnly); }
  void Reopen(int32_t readOnly = 0) {
    book_.Close();
    ASSERT_EQ(Open(readOnly), 0);
  }
  // Closed, and then with this content.
  void Put(std::string const &content) {
    book_.Close();
    WriteContent(path_, content);
  }
  std::string Content() const { return ContentOf(path_); }
  // Trials that open thousands of files lie in memory, where there is such a place.
  static std::filesystem::path Parent() {
    return std::filesystem::is_directory("/dev/shm") ? "/dev/shm"
                                                     : std::filesystem::temp_directory_path();
  }

  TempHome home_{Parent()};
  std::string const path_ = home_.path() + "/book";
  Book book_;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_ROLODEX_BOOK_H_
