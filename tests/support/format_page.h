#ifndef ZOLT41_TESTS_SUPPORT_FORMAT_PAGE_H_
#define ZOLT41_TESTS_SUPPORT_FORMAT_PAGE_H_

#include "tests/support/files.h"

namespace zolt::testing {

// Bytes written as pairs of hexadecimal digits; blanks and line ends may part them.
inline std::string FromHex(std::string const &digits) {
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

// The block of that number, from 0, below "## Example" of a page in docs/formats.
inline std::string ExampleOf(std::string const &page, int number = 0) {
  std::string const text = ContentOf(ZOLT_DOCS "/formats/" + page);
  std::string const fence = "\n```\n";
  size_t begin = text.find("## Example");
  for (int i = 0; i <= 2 * number; i++)
    begin = text.find(fence, begin) + fence.size() - (i % 2 == 0 ? 0 : 1);
  return text.substr(begin, text.find(fence, begin) + 1 - begin);
}

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_FORMAT_PAGE_H_
