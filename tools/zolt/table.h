#ifndef ZOLT41_TOOLS_ZOLT_TABLE_H_
#define ZOLT41_TOOLS_ZOLT_TABLE_H_

#include <string>
#include <vector>

#include "tools/zolt/output.h"
#include "tools/zolt/settings.h"

namespace zolt::tool {

// Rows of fields: lined up on a terminal, else with a tab between them, or raw and each ended by a
// NUL, as the settings say.
class Table {
 public:
  // Columns from `dimmed` on are shown dimly where there is colour.
  Table(Settings const &settings, Output &out, size_t dimmed);

  // The fields are UTF-8, not escaped; every row of a table has as many.
  void Add(std::vector<std::string> row);
  void Finish();

 private:
  std::string Painted(std::string const &field, size_t column) const;
  void WriteRaw(std::vector<std::string> const &row);
  void WriteRow(std::vector<std::string> const &row, std::vector<size_t> const *widths);

  Output &out_;
  bool raw_;
  bool colour_;
  size_t dimmed_;
  std::vector<std::vector<std::string>> waiting_;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_TABLE_H_
