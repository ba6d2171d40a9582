#ifndef ZOLT41_TESTS_ROLODEX_MODEL_H_
#define ZOLT41_TESTS_ROLODEX_MODEL_H_

#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/rolodex/book.h"

namespace zolt::testing {

using SomeNames = std::array<std::optional<std::string>, 3>;

// A database as its description has it, step by step over a list of heads and the bytes of a file,
// without any regard to speed or safety.
class Model {
 public:
  Model();

  void Enter(uint32_t id, CardContent const &card);
  uint32_t Create(CardContent const &card);
  bool Save(uint32_t id, std::string const &body);
  bool Delete(uint32_t id);
  void SetNames(uint32_t id, SomeNames const &names);
  void SetCategories(uint32_t id, Categories const &list);
  bool Apply(Categories const &add, Categories const &remove, Categories const &filter);
  // With the equal operator on the first name.
  uint32_t SelectLabel(Ids const &ids, std::string const &label, uint32_t category);
  uint32_t FindCard(SomeNames const &names, uint32_t *cursor) const;
  bool Compact(int32_t force);
  void SetCategory(uint32_t number, std::string const &bytes);
  // As after a clean close and an opening.
  void Reopen();

  // The file after a close.
  std::string Closed() const;
  Cards All() const;
  CardContent Card(uint32_t id) const;
  int32_t CardIndex(uint32_t id) const;
  // In file order.
  Ids AllIds() const;

 private:
  using Set = std::bitset<128>;
  struct Head {
    uint32_t position, id, size;
    Set set;
    Names names;
    std::string Bytes() const;
  };

  static Set SetOf(Categories const &list);
  Head *Find(uint32_t id);
  void Write(size_t position, std::string const &bytes);
  void WriteHead(Head const &head);
  void Add(Head head, std::string const &body);

  std::string file_;  // up to the end mark
  std::vector<Head> heads_;
  std::vector<Head> clean_;  // the heads as the file has them, while it is clean
  uint32_t end_ = kArea;
  uint32_t lastId_ = 0;
  bool dirty_ = false;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_ROLODEX_MODEL_H_
