#ifndef ZOLT41_TESTS_SUPPORT_FILES_H_
#define ZOLT41_TESTS_SUPPORT_FILES_H_

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/support/temp_home.h"

namespace zolt::testing {

inline std::string ContentOf(std::string const &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void WriteContent(std::string const &path, std::string const &content) {
  std::ofstream(path, std::ios::binary) << content;
}

// Whether a part is in a text, which is shown if not.
inline ::testing::AssertionResult Has(std::string const &text, std::string const &part) {
  bool const has = text.find(part) != std::string::npos;
  return ::testing::AssertionResult(has) << "\"" << part << "\" in: " << text;
}

// A home of its own, in which the test's files lie, too.
class FileTest : public ::testing::Test {
 protected:
  std::string Path(std::string const &name) const { return home_.path() + "/" + name; }

  TempHome home_;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_FILES_H_
