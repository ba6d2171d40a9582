#ifndef ZOLT41_INTERCHANGE_CARD_TEXT_CHECK_H_
#define ZOLT41_INTERCHANGE_CARD_TEXT_CHECK_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

namespace zolt {

// What is not as it should be in a card text.
struct CardTextFinding {
  uint32_t line;     // from 1
  char const *what;  // in English, without an end
  bool lost;         // something that stands there is not read
};

// Looks over the `size` bytes of a card text at `data` and calls `tell` for what ImportCard would
// pass over, drop or refuse, in the order of the lines. Gives 1, also for a text that is damaged;
// 0 if the bytes are no card text at all: they hold a NUL, or no line "[Card Infos]" where a reader
// finds it; -1 without memory. With 0 and -1 nothing is told. Sections are known by the system
// store; without one that is not looked at. What it costs grows with the size.
ZOLT_API int32_t CheckCardText(void const *data, int32_t size,
                               void (*tell)(void *context, CardTextFinding const &finding),
                               void *context);

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_CARD_TEXT_CHECK_H_
