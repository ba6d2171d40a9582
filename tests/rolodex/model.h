#ifndef ZOLT41_TESTS_ROLODEX_MODEL_H_
#define ZOLT41_TESTS_ROLODEX_MODEL_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/rolodex/book.h"

namespace zolt::testing {

// A database as its description has it, step by step over a list of heads and the bytes of a file,
// without any regard to speed or safety.
class Model {
 public:
  Model();

  uint32_t Create(CardContent const &card);
  bool Save(uint32_t id, std::string const &body);
  bool Delete(uint32_t id);
  bool SetNames(uint32_t id, std::array<std::optional<std::string>, 3> const &names);
  bool SetCategories(uint32_t id, Categories const &set);
  bool Apply(Categories const &add, Categories const &remove, Categories const &filter);
  // With the equal operator on the first name.
  uint32_t SelectLabel(std::vector<uint32_t> const &ids, std::string const &label,
                       uint32_t category);
  bool Compact(int32_t force);
  void SetCategory(uint32_t number, std::string const &bytes);
  // As after a clean close and an opening.
  void Reopen();

  // The file after a close.
  std::string Closed() const;
  Cards All() const;
  std::string Body(uint32_t id) const;
  std::vector<uint32_t> Ids() const;
  bool dirty() const { return dirty_; }

 private:
  struct Head {
    uint32_t position, id, size;
    std::array<uint32_t, 4> set;
    Names names;
    std::string Bytes() const;
  };

  size_t Find(uint32_t id) const;
  void Write(size_t position, std::string const &bytes);
  void WriteHead(Head const &head) { Write(head.position, head.Bytes()); }
  void Add(uint32_t id, std::string const &body, std::array<uint32_t, 4> const &set,
           Names const &names);

  std::string file_;  // up to the end mark
  std::vector<Head> heads_;
  std::vector<Head> clean_;  // the heads as the file has them, while it is clean
  uint32_t end_;
  uint32_t lastId_ = 0;
  bool dirty_ = false;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_ROLODEX_MODEL_H_
