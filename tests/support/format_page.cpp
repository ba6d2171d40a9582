#include "tests/support/format_page.h"

#include <fstream>
#include <iterator>

namespace zolt::testing {

std::string FromHex(std::string const &digits) {
  std::string bytes;
  std::string pair;
  for (char const c : digits) {
    if (c != ' ' && c != '\n') pair += c;
    if (pair.size() < 2) continue;
    bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
    pair.clear();
  }
  return bytes;
}

std::string ExampleOf(std::string const &page, int number) {
  std::ifstream file(ZOLT_DOCS "/formats/" + page);
  std::string const text{std::istreambuf_iterator<char>(file), {}};
  std::string const fence = "\n```\n";
  size_t begin = text.find("## Example");
  for (int i = 0; i <= 2 * number; i++)
    begin = text.find(fence, begin) + fence.size() - (i % 2 == 0 ? 0 : 1);
  return text.substr(begin, text.find(fence, begin) + 1 - begin);
}

}  // namespace zolt::testing
