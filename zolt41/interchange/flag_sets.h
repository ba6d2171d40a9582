#ifndef ZOLT41_INTERCHANGE_FLAG_SETS_H_
#define ZOLT41_INTERCHANGE_FLAG_SETS_H_

#include <cstdint>
#include <vector>

namespace zolt {

// Sets of the flags that a card text can name, each with a number, to be asked which of them lies
// within another set. What a call costs has a bound that no number of sets raises.
class FlagSets {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  bool empty() const { return few_.empty(); }
  void Clear() { few_.clear(); }
  void Add(uint32_t flags, uint32_t number);
  // The lowest number of those that have no flag but some of these; kNone if there is none.
  uint32_t LowestWithin(uint32_t flags) const;

 private:
  struct Numbered {
    uint32_t flags;
    uint32_t number;
  };

  bool isTable() const { return few_.size() > kFew; }
  void AddToTable(Numbered set);

  // Up to so many are looked through one by one.
  static constexpr uint32_t kFew = 1024;

  // The first ones; one more than kFew if the table has them all.
  std::vector<Numbered> few_;
  // For each set of the higher flags a row, and in it for each set of the lower ones the lowest
  // number of those that have just these lower flags, and no higher ones but some of the row's.
  std::vector<uint32_t> table_;
};

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_FLAG_SETS_H_
