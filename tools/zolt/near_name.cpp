#include "tools/zolt/near_name.h"

#include <algorithm>
#include <vector>

#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

constexpr size_t kLongestName = 300;
constexpr size_t kFarthest = 3;

}  // namespace

size_t Distance(std::string_view a, std::string_view b, size_t limit) {
  size_t const gap = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
  if (gap > limit || b.size() > kLongestName) return limit + 1;
  // Three rows of the table of distances between the beginnings of both words.
  std::vector<size_t> before(b.size() + 1);
  std::vector<size_t> above(b.size() + 1);
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); j++) row[j] = j;
  for (size_t i = 1; i <= a.size(); i++) {
    before.swap(above);
    above.swap(row);
    row[0] = i;
    for (size_t j = 1; j <= b.size(); j++) {
      size_t const change = a[i - 1] == b[j - 1] ? 0 : 1;
      row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + change});
      bool const swapped = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (swapped) row[j] = std::min(row[j], before[j - 2] + 1);
    }
  }
  return row[b.size()];
}

size_t NearName(std::string_view word, std::span<std::string const> names) {
  size_t best = names.size();
  size_t limit = std::min(kFarthest, std::max<size_t>(1, word.size() / 3));
  std::string const folded = Folded(word);
  for (size_t i = 0; i < names.size(); i++) {
    size_t const distance = Distance(folded, Folded(names[i]), limit);
    // A word that must change in every letter is another word.
    if (distance > limit || distance >= std::max(word.size(), names[i].size())) continue;
    best = i;
    if (distance == 0) break;
    limit = distance - 1;
  }
  return best;
}

std::string DidYouMean(std::string_view word, std::span<std::string const> names) {
  size_t const place = NearName(word, names);
  return place == names.size() ? "" : "did you mean " + names[place] + "?";
}

}  // namespace zolt::tool
