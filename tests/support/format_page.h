#ifndef ZOLT41_TESTS_SUPPORT_FORMAT_PAGE_H_
#define ZOLT41_TESTS_SUPPORT_FORMAT_PAGE_H_

#include <string>

namespace zolt::testing {

// Bytes written as pairs of hexadecimal digits; blanks and line ends may part them.
std::string FromHex(std::string const &digits);

// The block of that number, from 0, below "## Example" of a page in docs/formats.
std::string ExampleOf(std::string const &page, int number = 0);

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_FORMAT_PAGE_H_
