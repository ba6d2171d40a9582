#include "zolt41/rolodex/label_condition.h"

#include <bit>
#include <cstring>

#include "zolt41/platform/system/ascii_case.h"
#include "zolt41/rolodex/rolodex_format.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace zolt {
namespace {

#if defined(__SSE2__)

// A byte to look for, and where in a label it stands: bit i stands for byte i.
class WantedByte {
 public:
  explicit WantedByte(char byte) : bytes_(_mm_set1_epi8(byte)) {}

  uint32_t PlacesIn(FoldedLabel const &label) const {
    auto const *const half = reinterpret_cast<__m128i const *>(label.bytes);
    return PlacesIn(_mm_load_si128(half)) | PlacesIn(_mm_load_si128(half + 1)) << 16;
  }

 private:
  uint32_t PlacesIn(__m128i bytes) const {
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, bytes_)));
  }

  __m128i bytes_;
};

#else

class WantedByte {
 public:
  explicit WantedByte(char byte) : byte_(byte) {}

  uint32_t PlacesIn(FoldedLabel const &label) const {
    uint32_t places = 0;
    for (uint32_t i = 0; i < kCardNameSize; i++)
      places |= (label.bytes[i] == byte_ ? uint32_t{1} : 0) << i;
    return places;
  }

 private:
  char byte_;
};

#endif

}  // namespace

LabelCondition::LabelCondition(CSOper oper, char const *value)
    : value_(value),
      fromTheBeginning_(oper == CSBeginsWith || oper == CSEquals),
      toTheEnd_(oper == CSEndsWith || oper == CSEquals) {
  never_ =
      (oper != CSContains && !fromTheBeginning_ && !toTheEnd_) || value_.size() >= kCardNameSize;
  for (char &c : value_) c = FoldAscii(c);
}

// A value holds no NUL, so it never stands over the end of a label.
bool LabelCondition::StandsIn(FoldedLabel const &label, uint32_t places) const {
  if (fromTheBeginning_) places &= 1;
  for (; places != 0; places &= places - 1) {
    char const *const place = label.bytes + std::countr_zero(places);
    if (std::memcmp(place, value_.data(), value_.size()) == 0 && EndsRight(place[value_.size()]))
      return true;
  }
  return false;
}

uint32_t LabelCondition::FirstMatch(FoldedLabel const *labels, uint32_t count) const {
  if (never_) return count;
  uint32_t at = 0;
  if (value_.empty()) {
    while (at < count && fromTheBeginning_ && !EndsRight(labels[at].bytes[0])) at++;
    return at;
  }
  WantedByte const first(value_.front());
  WantedByte const last(value_.back());
  size_t const distance = value_.size() - 1;
  for (; at < count; at++) {
    uint32_t const places = first.PlacesIn(labels[at]) & last.PlacesIn(labels[at]) >> distance;
    if (places != 0 && StandsIn(labels[at], places)) break;
  }
  return at;
}

}  // namespace zolt
