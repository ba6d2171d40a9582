#include "zolt41/platform/com/com_alloc.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

namespace {

// Keeps the characters aligned for any number; the length is its last four bytes.
constexpr size_t kPrefix = 8;
// Behind the bytes: a whole NUL, also where they end within a character.
constexpr size_t kEnd = sizeof(OLECHAR) + 1;
constexpr UINT kMostBytes = std::numeric_limits<UINT>::max() - kPrefix - kEnd;

char *PrefixOf(BSTR text) {
  return reinterpret_cast<char *>(text) - kPrefix;
}

void SetLength(BSTR text, UINT bytes) {
  char *const data = reinterpret_cast<char *>(text);
  std::memcpy(data - sizeof bytes, &bytes, sizeof bytes);
  std::memset(data + bytes, 0, kEnd);
}

int32_t Replace(BSTR *text, BSTR fresh, bool wanted) {
  if (fresh == nullptr && wanted) return 0;
  SysFreeString(*text);
  *text = fresh;
  return 1;
}

}  // namespace

void *CoTaskMemAlloc(uint64_t size) {
  return std::malloc(size);
}

void *CoTaskMemRealloc(void *block, uint64_t size) {
  if (block == nullptr) return CoTaskMemAlloc(size);
  if (size != 0) return std::realloc(block, size);
  std::free(block);
  return nullptr;
}

void CoTaskMemFree(void *block) {
  std::free(block);
}

BSTR SysAllocStringByteLen(char const *bytes, UINT length) {
  if (length > kMostBytes) return nullptr;
  auto *const block = static_cast<char *>(std::malloc(kPrefix + length + kEnd));
  if (block == nullptr) return nullptr;
  auto *const text = reinterpret_cast<BSTR>(block + kPrefix);
  if (bytes != nullptr && length != 0) std::memcpy(block + kPrefix, bytes, length);
  SetLength(text, length);
  return text;
}

BSTR SysAllocStringLen(OLECHAR const *text, UINT length) {
  if (length > kMostBytes / sizeof(OLECHAR)) return nullptr;
  UINT const bytes = length * static_cast<UINT>(sizeof(OLECHAR));
  return SysAllocStringByteLen(reinterpret_cast<char const *>(text), bytes);
}

BSTR SysAllocString(OLECHAR const *text) {
  if (text == nullptr) return nullptr;
  std::u16string_view const whole = text;
  if (whole.size() > kMostBytes) return nullptr;
  return SysAllocStringLen(text, static_cast<UINT>(whole.size()));
}

int32_t SysReAllocString(BSTR *text, OLECHAR const *source) {
  if (text == nullptr) return 0;
  return Replace(text, SysAllocString(source), source != nullptr);
}

int32_t SysReAllocStringLen(BSTR *text, OLECHAR const *source, UINT length) {
  if (text == nullptr) return 0;
  return Replace(text, SysAllocStringLen(source, length), true);
}

void SysFreeString(BSTR text) {
  if (text != nullptr) std::free(PrefixOf(text));
}

UINT SysStringByteLen(BSTR text) {
  UINT bytes = 0;
  if (text != nullptr) {
    std::memcpy(&bytes, reinterpret_cast<char *>(text) - sizeof bytes, sizeof bytes);
  }
  return bytes;
}

UINT SysStringLen(BSTR text) {
  return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR));
}
