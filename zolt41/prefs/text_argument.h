#ifndef ZOLT41_PREFS_TEXT_ARGUMENT_H_
#define ZOLT41_PREFS_TEXT_ARGUMENT_H_

namespace zolt {

// A name or value that a caller leaves null is the empty one.
inline char const *TextOrEmpty(char const *text) {
  return text == nullptr ? "" : text;
}

}  // namespace zolt

#endif  // ZOLT41_PREFS_TEXT_ARGUMENT_H_
