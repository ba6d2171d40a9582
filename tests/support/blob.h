#ifndef ZOLT41_TESTS_SUPPORT_BLOB_H_
#define ZOLT41_TESTS_SUPPORT_BLOB_H_

#include <string>

#include "zolt41/cards/card_prefs.h"
#include "zolt41/foundation/mem_block.h"

namespace zolt::testing {

// The preferences of a card as they are stored.
inline std::string BlobOf(TYUserPrefs *store) {
  char *const block = store->GetData();
  std::string bytes(block, GetMemSize(block));
  _DisposeMem(block);
  return bytes;
}

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_BLOB_H_
