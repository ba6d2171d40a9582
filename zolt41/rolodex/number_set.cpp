#include "zolt41/rolodex/number_set.h"

#include <algorithm>

namespace zolt {
namespace {

constexpr size_t kFullLeaf = 512;
constexpr size_t kNewLeaf = 384;  // leaves room for what comes in between

}  // namespace

void NumberSet::Assign(std::vector<uint64_t> const &sorted) {
  leaves_.clear();
  firsts_.clear();
  before_.clear();
  size_ = sorted.size();
  for (size_t from = 0; from < sorted.size(); from += kNewLeaf) {
    size_t const to = std::min(from + kNewLeaf, sorted.size());
    auto const begin = sorted.begin();
    leaves_.emplace_back(begin + static_cast<ptrdiff_t>(from), begin + static_cast<ptrdiff_t>(to));
    firsts_.push_back(sorted[from]);
  }
}

// The leaf that the number is in, or would be.
size_t NumberSet::LeafOf(uint64_t number) const {
  auto const next = std::upper_bound(firsts_.begin(), firsts_.end(), number);
  return next == firsts_.begin() ? 0 : static_cast<size_t>(next - firsts_.begin()) - 1;
}

void NumberSet::Split(size_t leaf) {
  auto &full = leaves_[leaf];
  // Numbers that come in ascending order leave full leaves behind.
  size_t const kept = leaf + 1 == leaves_.size() ? kNewLeaf : kFullLeaf / 2;
  auto const middle = full.begin() + static_cast<ptrdiff_t>(kept);
  std::vector<uint64_t> upper(middle, full.end());
  full.erase(middle, full.end());
  auto const place = static_cast<ptrdiff_t>(leaf) + 1;
  firsts_.insert(firsts_.begin() + place, upper.front());
  leaves_.insert(leaves_.begin() + place, std::move(upper));
}

void NumberSet::Insert(uint64_t number) {
  before_.clear();
  size_++;
  if (leaves_.empty()) {
    leaves_.push_back({number});
    firsts_.push_back(number);
    return;
  }
  size_t const leaf = LeafOf(number);
  auto &numbers = leaves_[leaf];
  numbers.insert(std::lower_bound(numbers.begin(), numbers.end(), number), number);
  firsts_[leaf] = numbers.front();
  if (numbers.size() == kFullLeaf) Split(leaf);
}

void NumberSet::Erase(uint64_t number) {
  before_.clear();
  size_--;
  size_t const leaf = LeafOf(number);
  auto &numbers = leaves_[leaf];
  numbers.erase(std::lower_bound(numbers.begin(), numbers.end(), number));
  if (!numbers.empty()) {
    firsts_[leaf] = numbers.front();
    return;
  }
  leaves_.erase(leaves_.begin() + static_cast<ptrdiff_t>(leaf));
  firsts_.erase(firsts_.begin() + static_cast<ptrdiff_t>(leaf));
}

uint64_t const *NumberSet::NotBelow(uint64_t number) const {
  if (leaves_.empty()) return nullptr;
  size_t const leaf = LeafOf(number);
  auto const &numbers = leaves_[leaf];
  auto const found = std::lower_bound(numbers.begin(), numbers.end(), number);
  if (found != numbers.end()) return &*found;
  return leaf + 1 < leaves_.size() ? &leaves_[leaf + 1].front() : nullptr;
}

uint64_t const *NumberSet::Below(uint64_t number) const {
  if (leaves_.empty()) return nullptr;
  size_t const leaf = LeafOf(number);
  auto const &numbers = leaves_[leaf];
  auto const found = std::lower_bound(numbers.begin(), numbers.end(), number);
  if (found != numbers.begin()) return &*(found - 1);
  return leaf > 0 ? &leaves_[leaf - 1].back() : nullptr;
}

void NumberSet::Count() const {
  if (!before_.empty()) return;
  before_.reserve(leaves_.size());
  size_t count = 0;
  for (auto const &leaf : leaves_) {
    before_.push_back(count);
    count += leaf.size();
  }
}

uint64_t NumberSet::At(size_t rank) const {
  Count();
  auto const next = std::upper_bound(before_.begin(), before_.end(), rank);
  auto const leaf = static_cast<size_t>(next - before_.begin()) - 1;
  return leaves_[leaf][rank - before_[leaf]];
}

size_t NumberSet::RankOf(uint64_t number) const {
  if (leaves_.empty()) return 0;
  Count();
  size_t const leaf = LeafOf(number);
  auto const &numbers = leaves_[leaf];
  auto const found = std::lower_bound(numbers.begin(), numbers.end(), number);
  return before_[leaf] + static_cast<size_t>(found - numbers.begin());
}

}  // namespace zolt
