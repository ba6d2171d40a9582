#ifndef ZOLT41_PREFS_TEXT_LIMIT_H_
#define ZOLT41_PREFS_TEXT_LIMIT_H_

#include <cstdint>

namespace zolt {

// How many bytes of text, without the NUL, the buffer has room for into which the thread reads just
// now through a TYPrefs function; a store whose texts may be longer treats those as absent. The
// largest number where a store is asked directly.
int32_t TextLimit();

class LimitedText {
 public:
  explicit LimitedText(int32_t limit);
  ~LimitedText();
  LimitedText(LimitedText const &) = delete;
  LimitedText &operator=(LimitedText const &) = delete;

 private:
  int32_t before_;
};

}  // namespace zolt

#endif  // ZOLT41_PREFS_TEXT_LIMIT_H_
