#include "zolt41/comserver/element_name.h"

#include <algorithm>

#include "zolt41/platform/com/com_alloc.h"

namespace zolt {
namespace {

char16_t Widen(char byte) {
  return static_cast<unsigned char>(byte);
}

template <typename Character, typename Convert>
LPOLESTR ToClient(std::basic_string_view<Character> name, Convert convert) {
  auto *const text = static_cast<LPOLESTR>(CoTaskMemAlloc((name.size() + 1) * sizeof(OLECHAR)));
  if (text == nullptr) return nullptr;
  *std::transform(name.begin(), name.end(), text, convert) = 0;
  return text;
}

}  // namespace

bool NarrowName(OLECHAR const *wide, std::string *narrow) {
  std::u16string_view const name = wide;
  if (std::ranges::any_of(name, [](char16_t letter) { return letter > 0xFF; })) return false;
  narrow->resize(name.size());
  std::ranges::transform(name, narrow->begin(), [](char16_t l) { return static_cast<char>(l); });
  return true;
}

std::u16string WideName(std::string_view narrow) {
  std::u16string wide(narrow.size(), 0);
  std::ranges::transform(narrow, wide.begin(), Widen);
  return wide;
}

LPOLESTR NameForClient(std::string_view narrow) {
  return ToClient(narrow, Widen);
}

LPOLESTR NameForClient(std::u16string_view wide) {
  return ToClient(wide, [](char16_t letter) { return letter; });
}

}  // namespace zolt
