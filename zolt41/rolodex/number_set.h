#ifndef ZOLT41_ROLODEX_NUMBER_SET_H_
#define ZOLT41_ROLODEX_NUMBER_SET_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zolt {

// A sorted set of numbers, each of which has a rank: how many are below it. They lie in leaves of
// limited size, so that a change moves little, and a search is two binary ones.
class NumberSet {
 public:
  // One number of two, the first of which orders it.
  static constexpr uint64_t Of(uint32_t upper, uint32_t lower) {
    return uint64_t{upper} << 32 | lower;
  }
  static constexpr uint32_t Upper(uint64_t number) { return static_cast<uint32_t>(number >> 32); }
  static constexpr uint32_t Lower(uint64_t number) { return static_cast<uint32_t>(number); }

  // Takes numbers that are sorted and all different.
  void Assign(std::vector<uint64_t> const &sorted);
  // The number must not be there, or must be.
  void Insert(uint64_t number);
  void Erase(uint64_t number);

  size_t size() const { return size_; }
  // The first that is not below `number`, and the last that is; null if there is none. Good until
  // the next change.
  uint64_t const *NotBelow(uint64_t number) const;
  uint64_t const *Below(uint64_t number) const;
  // The number of that rank, which must be below the size.
  uint64_t At(size_t rank) const;
  size_t RankOf(uint64_t number) const;

  template <typename Visit>
  void ForEach(Visit const &visit) const {
    for (auto const &leaf : leaves_)
      for (uint64_t const number : leaf) visit(number);
  }

 private:
  size_t LeafOf(uint64_t number) const;
  void Split(size_t leaf);
  void Count() const;

  std::vector<std::vector<uint64_t>> leaves_;  // none is empty
  std::vector<uint64_t> firsts_;               // the first number of each leaf
  size_t size_ = 0;
  mutable std::vector<size_t> before_;  // how many numbers lie before a leaf, once it was asked
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_NUMBER_SET_H_
