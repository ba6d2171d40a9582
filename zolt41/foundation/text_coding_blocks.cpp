#include "zolt41/foundation/text_coding_blocks.h"

#ifdef __x86_64__

#include <cpuid.h>
#include <immintrin.h>

#include <cstdint>

// For these functions only, since the rest runs on any processor of this kind.
#define ZOLT_AVX2 __attribute__((target("avx2")))

namespace zolt {
namespace {

constexpr size_t kVector = 32;
constexpr size_t kHalf = 16;

ZOLT_AVX2 inline __m256i Load(char const *from) {
  return _mm256_loadu_si256(reinterpret_cast<__m256i const *>(from));
}

ZOLT_AVX2 inline __m128i LoadHalf(char const *from) {
  return _mm_loadu_si128(reinterpret_cast<__m128i const *>(from));
}

ZOLT_AVX2 inline void Store(__m256i vector, char *to) {
  _mm256_storeu_si256(reinterpret_cast<__m256i *>(to), vector);
}

ZOLT_AVX2 inline void StoreHalf(__m128i vector, char *to) {
  _mm_storeu_si128(reinterpret_cast<__m128i *>(to), vector);
}

// The same table of 16 for both halves.
ZOLT_AVX2 inline __m256i Table(char const (&bytes)[kHalf]) {
  return _mm256_broadcastsi128_si256(LoadHalf(bytes));
}

ZOLT_AVX2 inline __m256i Each(int byte) {
  return _mm256_set1_epi8(static_cast<char>(byte));
}

// Twelve bytes at the start of each half to sixteen numbers of six bits.
ZOLT_AVX2 inline __m256i SplitInSixes(__m256i bytes) {
  constexpr char kGroups[kHalf] = {1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10};
  __m256i const groups = _mm256_shuffle_epi8(bytes, Table(kGroups));
  __m256i const odd = _mm256_and_si256(groups, _mm256_set1_epi32(0x0FC0FC00));
  __m256i const even = _mm256_and_si256(groups, _mm256_set1_epi32(0x003F03F0));
  return _mm256_or_si256(_mm256_mulhi_epu16(odd, _mm256_set1_epi32(0x04000040)),
                         _mm256_mullo_epi16(even, _mm256_set1_epi32(0x01000010)));
}

ZOLT_AVX2 inline __m256i Base64Digits(__m256i sixes) {
  // What is to be added: for 26 to 51, for each of 52 to 61, for 62, for 63, and for 0 to 25.
  constexpr char kAdded[kHalf] = {71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 65, 0, 0};
  __m256i const beyond = _mm256_subs_epu8(sixes, Each(51));
  __m256i const capital = _mm256_and_si256(_mm256_cmpgt_epi8(Each(26), sixes), Each(13));
  __m256i const row = _mm256_or_si256(beyond, capital);
  return _mm256_add_epi8(sixes, _mm256_shuffle_epi8(Table(kAdded), row));
}

ZOLT_AVX2 size_t EncodeBase64Blocks(char const *bytes, size_t size, char *text) {
  size_t done = 0;
  // Of the 28 bytes that are read, 24 are done.
  for (; size - done >= 28; done += 24, text += kVector) {
    __m128i const first = LoadHalf(bytes + done);
    __m128i const second = LoadHalf(bytes + done + 12);
    __m256i const both = _mm256_inserti128_si256(_mm256_castsi128_si256(first), second, 1);
    Store(Base64Digits(SplitInSixes(both)), text);
  }
  return done;
}

// Turns digits into numbers of six bits; false if one is none.
ZOLT_AVX2 inline bool ValuesOfBase64(__m256i *digits) {
  // A digit is one if its bit by the high half of it is not among those by the low half.
  constexpr char kByHigh[kHalf] = {0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08,
                                   0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10};
  constexpr char kByLow[kHalf] = {0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                  0x11, 0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A};
  constexpr char kAdded[kHalf] = {0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0};
  // The '/' has this form too, and a shuffle heeds no bit but the highest and the low four.
  __m256i const slash = Each('/');
  __m256i const high = _mm256_and_si256(_mm256_srli_epi32(*digits, 4), slash);
  __m256i const low = _mm256_and_si256(*digits, slash);
  __m256i const byHigh = _mm256_shuffle_epi8(Table(kByHigh), high);
  __m256i const byLow = _mm256_shuffle_epi8(Table(kByLow), low);
  if (_mm256_testz_si256(byHigh, byLow) == 0) return false;
  __m256i const row = _mm256_add_epi8(_mm256_cmpeq_epi8(*digits, slash), high);
  *digits = _mm256_add_epi8(*digits, _mm256_shuffle_epi8(Table(kAdded), row));
  return true;
}

ZOLT_AVX2 inline void StoreJoinedSixes(__m256i sixes, char *bytes) {
  constexpr char kGroups[kHalf] = {2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1};
  __m256i const twelves = _mm256_maddubs_epi16(sixes, _mm256_set1_epi32(0x01400140));
  __m256i const wholes = _mm256_madd_epi16(twelves, _mm256_set1_epi32(0x00011000));
  __m256i const groups = _mm256_shuffle_epi8(wholes, Table(kGroups));
  __m256i const joined =
      _mm256_permutevar8x32_epi32(groups, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
  StoreHalf(_mm256_castsi256_si128(joined), bytes);
  _mm_storel_epi64(reinterpret_cast<__m128i *>(bytes + kHalf), _mm256_extracti128_si256(joined, 1));
}

ZOLT_AVX2 size_t DecodeBase64Blocks(char const *text, size_t size, char *bytes) {
  size_t done = 0;
  for (; size - done >= kVector; done += kVector, bytes += 24) {
    __m256i digits = Load(text + done);
    if (!ValuesOfBase64(&digits)) break;
    StoreJoinedSixes(digits, bytes);
  }
  return done;
}

ZOLT_AVX2 size_t EncodeHexBlocks(char const *bytes, size_t size, char *text) {
  constexpr char kDigits[kHalf] = {'0', '1', '2', '3', '4', '5', '6', '7',
                                   '8', '9', 'A', 'B', 'C', 'D', 'E', 'F'};
  __m256i const digits = Table(kDigits);
  __m256i const lowInHigh = _mm256_set1_epi16(0x0F00);
  size_t done = 0;
  for (; size - done >= kHalf; done += kHalf, text += kVector) {
    __m256i const wide = _mm256_cvtepu8_epi16(LoadHalf(bytes + done));
    __m256i const low = _mm256_and_si256(_mm256_slli_epi16(wide, 8), lowInHigh);
    __m256i const halves = _mm256_or_si256(_mm256_srli_epi16(wide, 4), low);
    Store(_mm256_shuffle_epi8(digits, halves), text);
  }
  return done;
}

// What is not above `largest` as an unsigned number.
ZOLT_AVX2 inline __m256i UpTo(int largest, __m256i bytes) {
  return _mm256_cmpeq_epi8(_mm256_min_epu8(bytes, Each(largest)), bytes);
}

ZOLT_AVX2 size_t DecodeHexBlocks(char const *text, size_t size, char *bytes) {
  size_t done = 0;
  for (; size - done >= kVector; done += kVector, bytes += kHalf) {
    __m256i const digits = Load(text + done);
    __m256i const decimal = _mm256_sub_epi8(digits, Each('0'));
    __m256i const letter = _mm256_sub_epi8(digits, Each('A'));
    __m256i const isDecimal = UpTo(9, decimal);
    if (_mm256_movemask_epi8(_mm256_or_si256(isDecimal, UpTo(5, letter))) != -1) break;
    __m256i const values =
        _mm256_blendv_epi8(_mm256_add_epi8(letter, Each(10)), decimal, isDecimal);
    __m256i const joined = _mm256_maddubs_epi16(values, _mm256_set1_epi16(0x0110));
    __m256i const packed = _mm256_packus_epi16(joined, joined);
    StoreHalf(_mm256_castsi256_si128(_mm256_permute4x64_epi64(packed, 0x08)), bytes);
  }
  return done;
}

// The compiler's own way to ask does so at the start of each program, much of which that takes in a
// virtual machine.
__attribute__((target("xsave"))) bool HasAvx2() {
  constexpr uint64_t kWideRegisters = 6;  // kept by the system
  uint32_t a = 0;
  uint32_t b = 0;
  uint32_t c = 0;
  uint32_t d = 0;
  constexpr uint32_t kKept = bit_OSXSAVE | bit_AVX;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & kKept) != kKept) return false;
  if ((_xgetbv(0) & kWideRegisters) != kWideRegisters) return false;
  return __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & bit_AVX2) != 0;
}

}  // namespace

CodingBlocks const *VectorBlocks() {
  static constexpr CodingBlocks kBlocks = {EncodeBase64Blocks, DecodeBase64Blocks, EncodeHexBlocks,
                                           DecodeHexBlocks};
  static bool const able = HasAvx2();
  return able ? &kBlocks : nullptr;
}

}  // namespace zolt

#else

namespace zolt {

CodingBlocks const *VectorBlocks() {
  return nullptr;
}

}  // namespace zolt

#endif
