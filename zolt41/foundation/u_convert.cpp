#include "zolt41/foundation/u_convert.h"

#include <cstddef>
#include <cstring>

#include "zolt41/platform/system/codepage.h"

namespace {

// Texts are converted by blocks in arrays of their own: those alias nothing, so the compiler does a
// block in a few instructions, and a text can be converted in place.
constexpr size_t kBlock = 16;

void WidenAscii(char const *source, char16_t *destination, size_t count) {
  char bytes[kBlock];
  char16_t wide[kBlock];
  std::memcpy(bytes, source, count);
  for (size_t i = 0; i < count; i++) {
    auto const byte = static_cast<unsigned char>(bytes[i]);
    wide[i] = byte < 0x80 ? byte : u'?';
  }
  std::memcpy(destination, wide, count * sizeof(char16_t));
}

void NarrowToAscii(char16_t const *source, char *destination, size_t count, char substitute) {
  char16_t wide[kBlock];
  char bytes[kBlock];
  std::memcpy(wide, source, count * sizeof(char16_t));
  for (size_t i = 0; i < count; i++) {
    bytes[i] = wide[i] <= 0x80 ? static_cast<char>(wide[i]) : substitute;
  }
  std::memcpy(destination, bytes, count);
}

}  // namespace

int32_t ConvertLocalToUnicode(char const *source, char16_t *destination, int32_t count) {
  if (source == nullptr || destination == nullptr) return 0;
  int32_t const size = MultiByteToWideChar(CP_ACP, 0, source, count, nullptr, 0);
  if (size == 0) return 0;
  int64_t const written = MultiByteToWideChar(CP_ACP, 0, source, count, destination, size);
  return static_cast<int32_t>(2 * written);
}

int32_t ConvertUnicodeToLocal(char16_t const *source, char *destination, int32_t count,
                              char defaultChar) {
  if (source == nullptr || destination == nullptr) return 0;
  char const *const missing = defaultChar != 0 ? &defaultChar : nullptr;
  int32_t const size = WideCharToMultiByte(CP_ACP, 0, source, count, nullptr, 0, missing, nullptr);
  if (size == 0) return 0;
  return WideCharToMultiByte(CP_ACP, 0, source, count, destination, size, missing, nullptr);
}

int32_t ConvertAsciiToUnicode(char const *source, char16_t *destination, int32_t count) {
  if (source == nullptr || destination == nullptr) return 0;
  if (count < 1) return static_cast<int32_t>(2 * int64_t{count});
  // From the end to the start, so that widening in place spoils nothing that is still to be read.
  auto left = static_cast<size_t>(count);
  for (; left >= kBlock; left -= kBlock) {
    WidenAscii(source + left - kBlock, destination + left - kBlock, kBlock);
  }
  WidenAscii(source, destination, left);
  return 0;
}

int32_t ConvertUnicodeToAscii(char16_t const *source, char *destination, int32_t count,
                              char substitute) {
  if (source == nullptr || destination == nullptr) return 0;
  if (count < 1) return count;
  auto const whole = static_cast<size_t>(count);
  size_t at = 0;
  for (; at + kBlock <= whole; at += kBlock) {
    NarrowToAscii(source + at, destination + at, kBlock, substitute);
  }
  NarrowToAscii(source + at, destination + at, whole - at, substitute);
  return 0;
}
