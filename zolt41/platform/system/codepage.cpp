#include "zolt41/platform/system/codepage.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <string>

#include "zolt41/platform/system/codepage_blocks.h"
#include "zolt41/platform/system/codepage_table.h"

namespace {

using zolt::CodePage;

CodePage const *PageOf(uint32_t number) {
  if (number == CP_ACP) return &zolt::LocalPage();
  if (number == CP_OEMCP) return &zolt::OemPage();
  return zolt::FindCodePage(number);
}

// `count` as it is, or for -1 the length up to and with the NUL. 0 stands for a wrong count.
template <typename Char>
size_t SourceCount(Char const *source, int32_t count) {
  if (source == nullptr || count < -1) return 0;
  if (count >= 0) return static_cast<size_t>(count);
  size_t const whole = std::char_traits<Char>::length(source) + 1;
  return whole > size_t{std::numeric_limits<int32_t>::max()} ? 0 : whole;
}

void Recode(CodePage const &from, CodePage const &to, char const *source, char *destination,
            uint32_t count) {
  auto const convert = [&](char byte) { return to.ByteOf(from.CharacterOf(byte), '?'); };
  std::transform(source, source + count, destination, convert);
}

// Null sorts before every text. True if one is null, with the order in `*order`.
bool OrderOfNull(char const *a, char const *b, int32_t *order) {
  *order = (a != nullptr) - (b != nullptr);
  return a == nullptr || b == nullptr;
}

}  // namespace

int32_t MultiByteToWideChar(uint32_t codePage, uint32_t, char const *source, int32_t count,
                            char16_t *destination, int32_t size) {
  CodePage const *const page = PageOf(codePage);
  size_t const length = SourceCount(source, count);
  auto const result = static_cast<int32_t>(length);
  if (page == nullptr || length == 0) return 0;
  if (size == 0) return result;
  if (destination == nullptr || size < result) return 0;
  auto const convert = [page](char byte) { return page->CharacterOf(byte); };
  zolt::WidenText(source, length, destination, convert);
  return result;
}

int32_t WideCharToMultiByte(uint32_t codePage, uint32_t, char16_t const *source, int32_t count,
                            char *destination, int32_t size, char const *defaultChar,
                            int32_t *usedDefault) {
  CodePage const *const page = PageOf(codePage);
  size_t const length = SourceCount(source, count);
  auto const result = static_cast<int32_t>(length);
  if (page == nullptr || length == 0) return 0;
  if (size != 0 && (destination == nullptr || size < result)) return 0;
  if (usedDefault != nullptr) {
    auto const has = [page](char16_t character) { return page->Has(character); };
    *usedDefault = !std::all_of(source, source + length, has);
  }
  if (size == 0) return result;
  char const missing = defaultChar != nullptr ? *defaultChar : '?';
  auto const convert = [=](char16_t character) { return page->ByteOf(character, missing); };
  zolt::NarrowText(source, length, destination, convert);
  return result;
}

int32_t OemToCharBuffA(char const *source, char *destination, uint32_t count) {
  if (source == nullptr || destination == nullptr) return 0;
  Recode(zolt::OemPage(), zolt::LocalPage(), source, destination, count);
  return 1;
}

int32_t CharToOemBuffA(char const *source, char *destination, uint32_t count) {
  if (source == nullptr || destination == nullptr) return 0;
  Recode(zolt::LocalPage(), zolt::OemPage(), source, destination, count);
  return 1;
}

int32_t lstrcmpA(char const *a, char const *b) {
  int32_t order = 0;
  if (OrderOfNull(a, b, &order)) return order;
  return std::strcmp(a, b);
}

int32_t lstrcmpiA(char const *a, char const *b) {
  int32_t order = 0;
  if (OrderOfNull(a, b, &order)) return order;
  CodePage const &page = zolt::LocalPage();
  while (*a != '\0' && page.Fold(*a) == page.Fold(*b)) {
    a++;
    b++;
  }
  return page.Fold(*a) - page.Fold(*b);
}
