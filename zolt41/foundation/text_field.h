#ifndef ZOLT41_FOUNDATION_TEXT_FIELD_H_
#define ZOLT41_FOUNDATION_TEXT_FIELD_H_

#include <cstddef>
#include <cstring>
#include <string_view>

namespace zolt {

// A text in a field of fixed size, ended with a NUL.

// Cuts what does not fit.
template <size_t size>
void FillField(std::string_view text, char (&field)[size]) {
  field[text.copy(field, size - 1)] = '\0';
}

// Ends with the field also where the NUL is missing.
template <size_t size>
std::string_view TextIn(char const (&field)[size]) {
  return {field, strnlen(field, size - 1)};
}

}  // namespace zolt

#endif  // ZOLT41_FOUNDATION_TEXT_FIELD_H_
