#include <algorithm>
#include <cstddef>
#include <cstring>

#include "zolt41/foundation/zoltx_string.h"

namespace {

constexpr char kBlank = ' ';
constexpr char kCarriageReturn = '\r';

char *Find(char *begin, char const *end, char sign) {
  return static_cast<char *>(std::memchr(begin, sign, static_cast<size_t>(end - begin)));
}

// Where to break a line that does not fit: the last blank up to `limit`, the limit included, or the
// first behind it. Null if there is none.
char *BlankToBreakAt(char *line, char *limit, char const *end) {
  auto const width = static_cast<size_t>(limit - line);
  void *const before = memrchr(line, kBlank, width + 1);
  return before != nullptr ? static_cast<char *>(before) : Find(limit, end, kBlank);
}

// The byte that ends the line, made a carriage return; null if the rest is the last line.
char *EndLine(char *line, char const *end, int32_t width) {
  ptrdiff_t const room = std::min<ptrdiff_t>(width, end - line);
  char *const old = Find(line, line + room, kCarriageReturn);
  if (old != nullptr || line + room == end) return old;
  char *const blank = BlankToBreakAt(line, line + room, end);
  if (blank != nullptr) *blank = kCarriageReturn;
  return blank;
}

bool GoesOn(unsigned char byte) {
  return byte >= 0x80 && byte < 0xC0;
}

int32_t WidthByLead(unsigned char lead) {
  if (lead < 0x80) return 1;
  return lead >= 0xC0 && lead < 0xE0 ? 2 : 3;
}

}  // namespace

void ZOLTXString::Wordwrap(int32_t width) {
  if (width < 0) return;
  char const *const end = text_ + std::strlen(text_);
  for (char *line = text_; line != nullptr && line < end;) {
    char *const last = EndLine(line, end, width);
    line = last == nullptr ? nullptr : last + 1;
  }
}

int32_t ZOLTXString::GlyphWidth(int32_t index) const {
  auto const byte = static_cast<unsigned char>(text_[index]);
  if (!GoesOn(byte)) return WidthByLead(byte);
  return index == 0 ? 1 : WidthByLead(static_cast<unsigned char>(text_[index - 1]));
}
