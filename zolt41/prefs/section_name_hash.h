#ifndef ZOLT41_PREFS_SECTION_NAME_HASH_H_
#define ZOLT41_PREFS_SECTION_NAME_HASH_H_

#include <bit>
#include <cstdint>
#include <string_view>

// The id of a section that has only a name. The case of letters does not matter, and of a name of
// 256 bytes and more only its length modulo 256 counts, from the beginning. Null is the empty
// name, whose id is 0.
constexpr int32_t SectionNameHash(std::string_view text) {
  auto const byte = [&](uint32_t place) {
    return static_cast<uint32_t>(static_cast<unsigned char>(text[place])) & 0xDF;
  };
  uint32_t const length = text.size() % 256;

  uint32_t tail = 0;
  for (uint32_t end = length; end % 4 != 0; --end) tail = (byte(end - 1) | tail) << 8;

  uint32_t hash = 0;
  for (uint32_t i = 0; i + 4 <= length; i += 4) {
    uint32_t const word = byte(i) | byte(i + 1) << 8 | byte(i + 2) << 16 | byte(i + 3) << 24;
    hash = std::rotl(word ^ hash, 4);
  }
  return static_cast<int32_t>(hash ^ tail);
}
constexpr int32_t SectionNameHash(char const *name) {
  return SectionNameHash(std::string_view(name == nullptr ? "" : name));
}

namespace zolt {

// The id that is written as four letters, the first in the most significant byte.
consteval int32_t SectionLetters(char const (&letters)[5]) {
  uint32_t id = 0;
  for (uint32_t i = 0; i < 4; ++i) id = id << 8 | static_cast<unsigned char>(letters[i]);
  return static_cast<int32_t>(id);
}

}  // namespace zolt

#endif  // ZOLT41_PREFS_SECTION_NAME_HASH_H_
