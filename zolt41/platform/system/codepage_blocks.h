#ifndef ZOLT41_PLATFORM_SYSTEM_CODEPAGE_BLOCKS_H_
#define ZOLT41_PLATFORM_SYSTEM_CODEPAGE_BLOCKS_H_

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

// Conversions of one unit of text to one of another width. ASCII goes through as it is, sixteen
// units at once; what lies beyond it is converted one by one, by a function that the caller gives.

namespace zolt {

inline constexpr size_t kTextBlock = 16;

// Sixteen units of text, read at once.
template <typename Unit>
class TextBlock;

#ifdef __SSE2__

inline __m128i LoadVector(void const *bytes) {
  return _mm_loadu_si128(static_cast<__m128i const *>(bytes));
}

inline void StoreVector(__m128i vector, void *bytes) {
  _mm_storeu_si128(static_cast<__m128i *>(bytes), vector);
}

template <>
class TextBlock<char> {
 public:
  explicit TextBlock(char const *text) : bytes_(LoadVector(text)) {}

  // One bit for each unit, the lowest for the first: set if the unit is 0x80 or above.
  uint32_t BeyondAscii() const { return static_cast<uint32_t>(_mm_movemask_epi8(bytes_)); }

  // Whether neither block has such a unit.
  bool IsAsciiWith(TextBlock other) const {
    return _mm_movemask_epi8(_mm_or_si128(bytes_, other.bytes_)) == 0;
  }

  // The units in the other width. What comes of those beyond ASCII is of no use.
  void PutAscii(char16_t *destination) const {
    __m128i const zero = _mm_setzero_si128();
    StoreVector(_mm_unpacklo_epi8(bytes_, zero), destination);
    StoreVector(_mm_unpackhi_epi8(bytes_, zero), destination + kTextBlock / 2);
  }

  void CopyTo(char *units) const { StoreVector(bytes_, units); }

 private:
  __m128i bytes_;
};

template <>
class TextBlock<char16_t> {
 public:
  explicit TextBlock(char16_t const *text)
      : low_(LoadVector(text)), high_(LoadVector(text + kTextBlock / 2)) {}

  uint32_t BeyondAscii() const {
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(Risen(low_), Risen(high_))));
  }

  bool IsAsciiWith(TextBlock other) const {
    __m128i const all = _mm_or_si128(Merged(), other.Merged());
    return (_mm_movemask_epi8(Risen(all)) & 0xAAAA) == 0;
  }

  void PutAscii(char *destination) const {
    StoreVector(_mm_packus_epi16(low_, high_), destination);
  }

  void CopyTo(char16_t *units) const {
    StoreVector(low_, units);
    StoreVector(high_, units + kTextBlock / 2);
  }

 private:
  // With the top bit set in every unit that was 0x80 or above: it rises to 0x8000 or above, or
  // stays at the largest number.
  static __m128i Risen(__m128i units) { return _mm_adds_epu16(units, _mm_set1_epi16(0x7F80)); }
  __m128i Merged() const { return _mm_or_si128(low_, high_); }

  __m128i low_;
  __m128i high_;
};

#else

template <typename Unit>
class TextBlock {
 public:
  explicit TextBlock(Unit const *text) { std::copy_n(text, kTextBlock, units_); }

  uint32_t BeyondAscii() const {
    uint32_t beyond = 0;
    for (size_t i = 0; i < kTextBlock; i++) beyond |= uint32_t{(units_[i] & ~0x7F) != 0} << i;
    return beyond;
  }

  bool IsAsciiWith(TextBlock const &other) const {
    return (BeyondAscii() | other.BeyondAscii()) == 0;
  }

  template <typename To>
  void PutAscii(To *destination) const {
    for (size_t i = 0; i < kTextBlock; i++) destination[i] = static_cast<To>(units_[i]);
  }

  void CopyTo(Unit *units) const { std::copy_n(units_, kTextBlock, units); }

 private:
  Unit units_[kTextBlock];
};

#endif

// Converts the units that `which` has bits for.
template <typename From, typename To, typename Convert>
void ConvertSome(From const *units, uint32_t which, To *destination, Convert const &convert) {
  for (; which != 0; which &= which - 1) {
    auto const i = static_cast<size_t>(std::countr_zero(which));
    destination[i] = convert(units[i]);
  }
}

// The destination may lie over the text from which the block was read. Inline, so that a block of
// ASCII never leaves the registers.
template <typename From, typename To, typename Convert>
inline void ConvertBlock(TextBlock<From> block, To *destination, Convert const &convert) {
  block.PutAscii(destination);
  uint32_t const beyond = block.BeyondAscii();
  if (beyond == 0) return;
  From units[kTextBlock];
  block.CopyTo(units);
  ConvertSome(units, beyond, destination, convert);
}

template <typename From, typename To, typename Convert>
inline void ConvertTwoBlocks(From const *source, To *destination, Convert const &convert) {
  TextBlock<From> const first(source);
  TextBlock<From> const second(source + kTextBlock);
  if (first.IsAsciiWith(second)) {
    first.PutAscii(destination);
    second.PutAscii(destination + kTextBlock);
  } else {
    ConvertBlock(first, destination, convert);
    ConvertBlock(second, destination + kTextBlock, convert);
  }
}

template <typename From, typename To, typename Convert>
void ConvertUnit(From const &source, To *destination, Convert const &convert) {
  *destination = (source & ~0x7F) == 0 ? static_cast<To>(source) : convert(source);
}

// From the start to the end. The last block, which may share units with the one before it, is read
// before anything is written.
template <typename From, typename To, typename Convert>
void ConvertForwards(From const *source, size_t count, To *destination, Convert const &convert) {
  if (count < kTextBlock) {
    for (size_t i = 0; i < count; i++) ConvertUnit(source[i], destination + i, convert);
    return;
  }
  size_t const lastAt = count - kTextBlock;
  TextBlock<From> const last(source + lastAt);
  size_t at = 0;
  for (; at + 2 * kTextBlock <= lastAt; at += 2 * kTextBlock) {
    ConvertTwoBlocks(source + at, destination + at, convert);
  }
  for (; at < lastAt; at += kTextBlock) {
    ConvertBlock(TextBlock<From>(source + at), destination + at, convert);
  }
  ConvertBlock(last, destination + lastAt, convert);
}

// How many bytes behind the start of `text`, which has `size` bytes, `place` lies; `size` if it
// lies elsewhere.
inline size_t PlaceWithin(void const *text, size_t size, void const *place) {
  size_t const distance = reinterpret_cast<uintptr_t>(place) - reinterpret_cast<uintptr_t>(text);
  return std::min(distance, size);
}

// `count` bytes to as many characters. The two texts may overlap in any way.
template <typename Convert>
void WidenText(char const *source, size_t count, char16_t *destination, Convert const &convert) {
  if (PlaceWithin(source, count, destination) < count ||
      PlaceWithin(destination, 2 * count, source) < 2 * count) {
    // From the upper half of the destination nothing is overwritten before it is read.
    char *const moved = reinterpret_cast<char *>(destination) + count;
    std::memmove(moved, source, count);
    source = moved;
  }
  ConvertForwards(source, count, destination, convert);
}

// `count` characters to as many bytes. The two texts may overlap in any way.
template <typename Convert>
void NarrowText(char16_t const *source, size_t count, char *destination, Convert const &convert) {
  // Up to the character that lies as many characters behind the start as the destination lies
  // bytes behind it, only going backwards overwrites nothing that is still to be read; from there
  // on, only going forwards.
  size_t const place = PlaceWithin(source, 2 * count, destination);
  size_t const head = place == 2 * count ? 0 : std::min(place, count);
  ConvertForwards(source + head, count - head, destination + head, convert);
  for (size_t i = head; i-- > 0;) ConvertUnit(source[i], destination + i, convert);
}

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_CODEPAGE_BLOCKS_H_
