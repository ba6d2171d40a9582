#include "zolt41/rolodex/label_column.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "zolt41/platform/system/ascii_case.h"

namespace zolt {

FoldedLabel::FoldedLabel(CardEntry const &entry) : bytes{} {
  std::ranges::transform(entry.name(0), bytes, FoldAscii);
}

void LabelColumn::Build(CardEntries const &entries) {
  LargeVector<FoldedLabel> labels(entries.begin(), entries.end());
  ids_.resize(entries.size());
  std::ranges::transform(entries, ids_.begin(), &CardEntry::id);
  labels_ = std::move(labels);
}

uint32_t LabelColumn::RunOf(char const *ids, uint32_t slot, uint32_t most) const {
  if (slot >= size()) return 0;
  constexpr uint32_t kStep = 16;
  most = std::min(most, size() - slot);
  uint32_t run = 0;
  for (uint32_t const step : {kStep, 1U}) {
    while (run + step <= most && std::memcmp(ids + run * sizeof(uint32_t), &ids_[slot + run],
                                             step * sizeof(uint32_t)) == 0)
      run += step;
  }
  return run;
}

void LabelColumn::Note(uint32_t slot, CardEntry const &entry) {
  if (slot >= size()) return;
  labels_[slot] = FoldedLabel(entry);
  ids_[slot] = entry.id();
}

}  // namespace zolt
