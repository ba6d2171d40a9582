#ifndef ZOLT41_TESTS_SUPPORT_MEM_BYTES_H_
#define ZOLT41_TESTS_SUPPORT_MEM_BYTES_H_

#include <string>

#include "zolt41/foundation/mem_block.h"

namespace zolt::testing {

// The bytes of a block, which is given back.
inline std::string Taken(char *block) {
  std::string bytes(block, GetMemSize(block));
  _DisposeMem(block);
  return bytes;
}

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_MEM_BYTES_H_
