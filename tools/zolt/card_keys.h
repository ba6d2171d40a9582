#ifndef ZOLT41_TOOLS_ZOLT_CARD_KEYS_H_
#define ZOLT41_TOOLS_ZOLT_CARD_KEYS_H_

#include <cstddef>
#include <string>
#include <string_view>

#include "zolt41/zolt41.h"

namespace zolt::tool {

inline constexpr size_t kKeySize = 32;
// The property in which a book keeps the key of a card, all of its bytes.
inline constexpr char kKeyProperty[] = "L-ZOLT-KEY";

// 32 bytes of any kind; if all are 0 they are none.
inline bool IsKey(std::string_view bytes) {
  return bytes.size() == kKeySize && bytes.find_first_not_of('\0') != bytes.npos;
}

// The card's key, or "".
inline std::string KeyOf(CallCard const &card) {
  std::string key(card.GetKey(), kKeySize);
  return IsKey(key) ? key : "";
}

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_KEYS_H_
