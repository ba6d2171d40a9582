#include "zolt41/rolodex/label_condition.h"

#include <bit>

#include "zolt41/platform/system/ascii_case.h"
#include "zolt41/rolodex/rolodex_format.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zolt {
namespace {

#if defined(__SSE2__)

__m128i Folded(__m128i bytes) {
  __m128i const above = _mm_cmpgt_epi8(bytes, _mm_set1_epi8('A' - 1));
  __m128i const below = _mm_cmplt_epi8(bytes, _mm_set1_epi8('Z' + 1));
  __m128i const bit = _mm_and_si128(_mm_and_si128(above, below), _mm_set1_epi8(0x20));
  return _mm_or_si128(bytes, bit);
}

// The bytes of a name's field, folded; bit i of a mask stands for byte i.
class Field {
 public:
  explicit Field(char const *field)
      : low_(Folded(_mm_loadu_si128(reinterpret_cast<__m128i const *>(field)))),
        high_(Folded(_mm_loadu_si128(reinterpret_cast<__m128i const *>(field) + 1))) {}

  uint32_t PlacesOf(char c) const {
    __m128i const wanted = _mm_set1_epi8(c);
    auto const low = static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(low_, wanted)));
    auto const high = static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(high_, wanted)));
    return low | high << 16;
  }

 private:
  __m128i low_;
  __m128i high_;
};

#else

class Field {
 public:
  explicit Field(char const *field) : field_(field) {}

  uint32_t PlacesOf(char c) const {
    uint32_t places = 0;
    for (uint32_t i = 0; i < kCardNameSize; i++)
      places |= (FoldAscii(field_[i]) == c ? uint32_t{1} : 0) << i;
    return places;
  }

 private:
  char const *field_;
};

#endif

}  // namespace

LabelCondition::LabelCondition(CSOper oper, char const *value) : oper_(oper), value_(value) {
  for (char &c : value_) c = FoldAscii(c);
}

bool LabelCondition::StandsAt(char const *place) const {
  for (size_t i = 0; i < value_.size(); i++)
    if (FoldAscii(place[i]) != value_[i]) return false;
  return true;
}

bool LabelCondition::Matches(CardEntry const &entry) const {
  char const *const label = entry.field(0);
  Field const field(label);
  // The last byte of a field ends the name, also where it is no NUL.
  uint32_t const length = static_cast<uint32_t>(
      std::countr_zero(field.PlacesOf('\0') | uint32_t{1} << (kCardNameSize - 1)));
  auto const size = static_cast<uint32_t>(value_.size());
  if (value_.size() > length) return false;
  uint32_t const last = length - size;
  // Where the operator lets the value stand.
  uint32_t places = 0;
  if (oper_ == CSContains) places = (uint32_t{2} << last) - 1;
  if (oper_ == CSBeginsWith || (oper_ == CSEquals && last == 0)) places = 1;
  if (oper_ == CSEndsWith) places = uint32_t{1} << last;
  if (size == 0) return places != 0;
  places &= field.PlacesOf(value_.front()) & field.PlacesOf(value_.back()) >> (size - 1);
  for (; places != 0; places &= places - 1)
    if (StandsAt(label + std::countr_zero(places))) return true;
  return false;
}

}  // namespace zolt
