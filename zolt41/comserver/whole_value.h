#ifndef ZOLT41_COMSERVER_WHOLE_VALUE_H_
#define ZOLT41_COMSERVER_WHOLE_VALUE_H_

#include <cstdint>

#include "zolt41/prefs/typed_prefs.h"

namespace zolt {

// Reads a value of any type along the chain of `store` into a new memory block, which the caller
// disposes of, and gives its size; null if no store has it. Throws std::bad_alloc without memory: a
// parent's value must not stand for one that is there. Unlike two calls of ReadFree it is not
// overrun by a process that makes the value larger between them.
char *ReadWholeValue(TYPrefs *store, uint32_t section, char const *name, uint32_t *size);

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_WHOLE_VALUE_H_
