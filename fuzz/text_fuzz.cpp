// Any bytes as names and texts: what converts comes back as it was, and nothing reads beyond an
// end.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/u_compare.h"
#include "zolt41/foundation/u_convert.h"
#include "zolt41/foundation/u_string.h"
#include "zolt41/platform/registry/hive_text.h"
#include "zolt41/platform/system/codepage.h"
#include "zolt41/prefs/number_text.h"

namespace {

void Require(bool held) {
  if (!held) abort();
}

// Exactly as large as the text and its NUL, so that a step beyond is seen.
std::unique_ptr<char16_t[]> WideText(uint8_t const *data, size_t size) {
  size_t const length = size / 2;
  auto text = std::make_unique<char16_t[]>(length + 1);
  if (length != 0) std::memcpy(text.get(), data, 2 * length);
  return text;
}

void CopyBetweenShapes(char const *bytes, char16_t const *wide) {
  auto const length = static_cast<size_t>(UZStrLen(wide));
  auto const narrow = std::make_unique<char[]>(length + 1);
  Require(UZ2AZStrCopy(wide, narrow.get(), 0) == static_cast<int32_t>(length));
  Require(UZ2LZStrCopy(wide, narrow.get(), '*') == static_cast<int32_t>(length + 1));
  size_t const size = std::strlen(bytes) + 1;
  auto const widened = std::make_unique<char16_t[]>(size);
  Require(AZ2UZStrCopy(bytes, widened.get()) == static_cast<int32_t>(2 * size));
  Require(LZ2UZStrCopy(bytes, widened.get(), 0) == static_cast<int32_t>(2 * size));
  auto const a = std::make_unique<char[]>(257);
  UZ2AStrCopy(wide, a.get(), 0);
  UZ2LStrCopy(wide, a.get(), 0);
  Require(a[1 + static_cast<uint8_t>(a[0])] == '\0');
}

void UseUStrings(char const *bytes, char16_t const *wide, int32_t start, int32_t count) {
  auto const one = std::make_unique<char[]>(514);
  auto const other = std::make_unique<char[]>(514);
  UZ2UStrCopy(wide, one.get());
  LZ2UStrCopy(bytes, other.get(), 0);
  int32_t const whole = UStrLen(one.get()) + UStrLen(other.get());
  Require(UStrConcat(one.get(), other.get(), other.get()) == (whole > 255 ? -74 : 0));
  Require(UStrLen(other.get()) == (whole > 255 ? 255 : whole));
  UStrExtractChars(other.get(), one.get(), start, count);
  Require(UZStrLen(UasUZStr(one.get())) == UStrLen(one.get()));
  UStrGetNthChar(one.get(), start);
  AZ2UStrCopy(bytes, one.get());
}

void Search(char16_t const *text, char16_t const *pattern, int32_t position) {
  int16_t const place = UZStrContains(text, pattern);
  auto const length = static_cast<size_t>(UZStrLen(pattern));
  Require(place < 0 || std::u16string(text + place, length) == pattern);
  Require(UZStrCompare(text, pattern, 0) == -UZStrCompare(pattern, text, 0));
  UZStrCharPos(text, *pattern);
  UZStrGetCharPtr(text, position);
  UZStr2Num(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size) {
  std::string const bytes(reinterpret_cast<char const *>(data), size);
  std::string back;
  if (!zolt::LocalFromUtf8(zolt::Utf8FromLocal(bytes), &back) || back != bytes) abort();
  if (zolt::LocalFromUtf8(bytes, &back) && zolt::Utf8FromLocal(back) != bytes) abort();
  zolt::LocalNameOf(bytes);

  std::u16string wide(size, u'\0');
  ConvertLocalToUnicode(bytes.data(), wide.data(), static_cast<int32_t>(size));
  std::string narrow(size, '\0');
  ConvertUnicodeToLocal(wide.data(), narrow.data(), static_cast<int32_t>(size), '?');
  if (size != 0 && narrow != bytes) abort();

  int32_t number = 0;
  zolt::ScanNumber(bytes.c_str(), &number);
  size_t const half = size / 2;
  AZStrContains(bytes.c_str(), bytes.c_str() + half);
  AZStrCompare(bytes.c_str(), bytes.c_str() + half);

  auto const text = WideText(data, size);
  auto const pattern = WideText(data + half, size - half);
  int32_t const start = size < 1 ? 0 : static_cast<int8_t>(data[0]);
  int32_t const count = size < 2 ? 0 : data[1];
  CopyBetweenShapes(bytes.c_str(), text.get());
  UseUStrings(bytes.c_str(), text.get(), start, count);
  Search(text.get(), pattern.get(), start);
  return 0;
}
