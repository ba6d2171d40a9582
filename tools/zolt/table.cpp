#include "tools/zolt/table.h"

#include <algorithm>
#include <utility>

#include "tools/zolt/text.h"

namespace zolt::tool {

Table::Table(Settings const &settings, Output &out, size_t dimmed)
    : out_(out),
      raw_(settings.nul),
      colour_(InColour(settings.colour, out.terminal())),
      dimmed_(dimmed) {}

void Table::Add(std::vector<std::string> row) {
  if (raw_) return WriteRaw(row);
  std::ranges::transform(row, row.begin(), Escape);
  if (!out_.terminal()) return WriteRow(row, nullptr);
  waiting_.push_back(std::move(row));
}

void Table::WriteRaw(std::vector<std::string> const &row) {
  for (std::string const &field : row) out_.Write(field + '\0');
}

std::string Table::Painted(std::string const &field, size_t column) const {
  return colour_ && column >= dimmed_ ? "\033[2m" + field + "\033[0m" : field;
}

void Table::WriteRow(std::vector<std::string> const &row, std::vector<size_t> const *widths) {
  // Empty fields at the end are left out.
  size_t count = row.size();
  while (count > 0 && row[count - 1].empty()) count--;
  std::string line;
  for (size_t i = 0; i < count; i++) {
    line += Painted(row[i], i);
    if (i + 1 == count) break;
    line += widths == nullptr ? "\t" : std::string((*widths)[i] - Width(row[i]) + 2, ' ');
  }
  out_.Write(line + "\n");
}

void Table::Finish() {
  std::vector<size_t> widths;
  for (auto const &row : waiting_) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t i = 0; i < row.size(); i++) widths[i] = std::max(widths[i], Width(row[i]));
  }
  for (auto const &row : waiting_) WriteRow(row, &widths);
}

}  // namespace zolt::tool
