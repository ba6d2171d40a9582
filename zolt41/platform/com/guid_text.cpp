// Ids as text.
#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "zolt41/platform/com/com_alloc.h"

namespace {

// Where the two digits of each byte stand, the bytes of the first three numbers highest first.
constexpr std::array<uint8_t, 16> kPlaces = {1,  3,  5,  7,  10, 12, 15, 17,
                                             20, 22, 25, 27, 29, 31, 33, 35};
constexpr std::u16string_view kFrame = u"{00000000-0000-0000-0000-000000000000}";
constexpr size_t kFramePlaces[] = {0, 9, 14, 19, 24, 37};
constexpr std::u16string_view kDigits = u"0123456789ABCDEF";

using Bytes = std::array<uint8_t, 16>;

Bytes BytesOf(REFGUID id) {
  Bytes bytes = {};
  for (size_t i = 0; i < 4; i++) bytes[i] = static_cast<uint8_t>(id.Data1 >> (24 - 8 * i));
  for (size_t i = 0; i < 2; i++) {
    bytes[4 + i] = static_cast<uint8_t>(id.Data2 >> (8 - 8 * i));
    bytes[6 + i] = static_cast<uint8_t>(id.Data3 >> (8 - 8 * i));
  }
  std::copy(std::begin(id.Data4), std::end(id.Data4), bytes.begin() + 8);
  return bytes;
}

GUID GuidOf(Bytes const &bytes) {
  auto const pair = [&](size_t at) {
    return static_cast<uint16_t>(bytes[at] << 8 | bytes[at + 1]);
  };
  GUID id = {static_cast<uint32_t>(pair(0)) << 16 | pair(2), pair(4), pair(6), {}};
  std::copy(bytes.begin() + 8, bytes.end(), std::begin(id.Data4));
  return id;
}

// 16 or more for what is no digit.
size_t DigitAt(LPCOLESTR text, size_t place) {
  char16_t const letter = text[place];
  bool const small = letter >= u'a' && letter <= u'f';
  return kDigits.find(small ? static_cast<char16_t>(letter - 0x20) : letter);
}

// The text up to its NUL, or to one character more than an id has.
std::u16string_view Bounded(LPCOLESTR text) {
  size_t length = 0;
  while (length <= kFrame.size() && text[length] != 0) length++;
  return {text, length};
}

bool ReadGuid(LPCOLESTR text, GUID *id) {
  if (Bounded(text).size() != kFrame.size()) return false;
  for (size_t const place : kFramePlaces) {
    if (text[place] != kFrame[place]) return false;
  }
  Bytes bytes = {};
  for (size_t i = 0; i < bytes.size(); i++) {
    size_t const high = DigitAt(text, kPlaces[i]);
    size_t const low = DigitAt(text, kPlaces[i] + size_t{1});
    if (high > 15 || low > 15) return false;
    bytes[i] = static_cast<uint8_t>(high << 4 | low);
  }
  *id = GuidOf(bytes);
  return true;
}

}  // namespace

int32_t StringFromGUID2(REFGUID id, LPOLESTR text, int32_t size) {
  auto const needed = static_cast<int32_t>(kFrame.size()) + 1;
  if (text == nullptr || size < needed) return 0;
  kFrame.copy(text, kFrame.size());
  text[kFrame.size()] = 0;
  Bytes const bytes = BytesOf(id);
  for (size_t i = 0; i < bytes.size(); i++) {
    text[kPlaces[i]] = kDigits[bytes[i] >> 4];
    text[kPlaces[i] + 1] = kDigits[bytes[i] & 15];
  }
  return needed;
}

HRESULT StringFromCLSID(REFCLSID id, LPOLESTR *text) {
  if (text == nullptr) return E_POINTER;
  *text = static_cast<LPOLESTR>(CoTaskMemAlloc((kFrame.size() + 1) * sizeof(OLECHAR)));
  if (*text == nullptr) return E_OUTOFMEMORY;
  StringFromGUID2(id, *text, static_cast<int32_t>(kFrame.size()) + 1);
  return S_OK;
}

HRESULT CLSIDFromString(LPCOLESTR text, CLSID *id) {
  if (id == nullptr) return E_POINTER;
  *id = GUID_NULL;
  return text == nullptr || ReadGuid(text, id) ? S_OK : CO_E_CLASSSTRING;
}
