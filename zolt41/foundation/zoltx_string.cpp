#include "zolt41/foundation/zoltx_string.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstring>
#include <limits>

#include "zolt41/foundation/a_string.h"
#include "zolt41/platform/system/codepage.h"

namespace {

constexpr int64_t kLongest = std::numeric_limits<int32_t>::max();

int32_t LengthOf(char const *text) {
  size_t const length = std::strlen(text);
  if (length > static_cast<size_t>(kLongest)) throw std::bad_alloc();
  return static_cast<int32_t>(length);
}

// A number as text.
struct Digits {
  explicit Digits(int32_t number) : length(Num2AZStr(number, text)) {}

  char text[12];
  int32_t length;
};

// Copies up to the first NUL, and no more than `most` bytes. Gives the place behind the copy.
char *CopyPart(char *to, char const *from, int32_t most) {
  size_t const length = strnlen(from, static_cast<size_t>(most));
  std::memcpy(to, from, length);
  return to + length;
}

int32_t OffsetIn(char const *text, char const *place) {
  return place == nullptr ? -1 : static_cast<int32_t>(place - text);
}

char Upper(char byte) {
  return static_cast<char>(std::toupper(static_cast<signed char>(byte)));
}

char Lower(char byte) {
  return static_cast<char>(std::tolower(static_cast<signed char>(byte)));
}

}  // namespace

ZOLTXString::Buffer ZOLTXString::Allocate(int64_t length) {
  if (length > kLongest) throw std::bad_alloc();
  auto *const text = static_cast<char *>(::operator new(static_cast<size_t>(length) + 1));
  text[length] = '\0';
  return {text, static_cast<int32_t>(length)};
}

ZOLTXString::Buffer ZOLTXString::CopyOf(char const *source, int32_t length) {
  Buffer const copy = Allocate(std::max(length, 0));
  if (copy.length > 0) std::memcpy(copy.text, source, static_cast<size_t>(copy.length));
  return copy;
}

ZOLTXString::ZOLTXString(Buffer const &buffer) : text_(buffer.text), length_(buffer.length) {}

ZOLTXString::ZOLTXString(char const *text)
    : ZOLTXString(CopyOf(text, text == nullptr ? 0 : LengthOf(text))) {}

ZOLTXString::ZOLTXString(ZOLTXString const &other)
    : ZOLTXString(CopyOf(other.text_, other.length_)) {}

ZOLTXString::ZOLTXString(int32_t number) : ZOLTXString(Digits(number).text) {}

ZOLTXString::ZOLTXString(char character) : ZOLTXString(CopyOf(&character, 1)) {}

ZOLTXString::ZOLTXString(char const *text, int32_t length) : ZOLTXString(CopyOf(text, length)) {}

void ZOLTXString::Init() {
  Buffer const empty = Allocate(0);
  text_ = empty.text;
  length_ = 0;
}

void ZOLTXString::Become(Buffer const &buffer) {
  ::operator delete(text_);
  text_ = buffer.text;
  length_ = buffer.length;
}

ZOLTXString &ZOLTXString::ReadFrom(char const *source, int32_t length) {
  if (length != length_) {
    Become(CopyOf(source, length));
  } else {
    std::memmove(text_, source, static_cast<size_t>(length));
  }
  return *this;
}

ZOLTXString &ZOLTXString::operator=(ZOLTXString const &other) {
  return this == &other ? *this : ReadFrom(other.text_, other.length_);
}

ZOLTXString &ZOLTXString::operator=(char const *text) {
  return ReadFrom(text, LengthOf(text));
}

ZOLTXString &ZOLTXString::operator=(int32_t number) {
  Digits const digits(number);
  return ReadFrom(digits.text, digits.length);
}

void ZOLTXString::Set(char const *text, int32_t length) {
  Become(CopyOf(text, length));
}

bool ZOLTXString::operator==(char const *text) const {
  return lstrcmpA(text_, text) == 0;
}

// `start` and `count` lie within the length.
ZOLTXString::Buffer ZOLTXString::Spliced(int32_t start, int32_t count, char const *source,
                                         int32_t length) const {
  int32_t const behind = length_ - start - count;
  Buffer const joined = Allocate(int64_t{start} + length + behind);
  char *end = CopyPart(joined.text, text_, start);
  end = CopyPart(end, source, length);
  end = CopyPart(end, text_ + start + count, behind);
  std::memset(end, '\0', static_cast<size_t>(joined.text + joined.length - end));
  return joined;
}

ZOLTXString::Buffer ZOLTXString::Joined(char const *source, int32_t length) const {
  return Spliced(length_, 0, source, length);
}

ZOLTXString &ZOLTXString::operator+=(ZOLTXString const &other) {
  Become(Joined(other.text_, other.length_));
  return *this;
}

ZOLTXString &ZOLTXString::operator+=(char const *text) {
  Become(Joined(text, LengthOf(text)));
  return *this;
}

ZOLTXString &ZOLTXString::operator+=(int32_t number) {
  Digits const digits(number);
  Become(Joined(digits.text, digits.length));
  return *this;
}

ZOLTXString &ZOLTXString::operator+=(char character) {
  Become(Joined(&character, 1));
  return *this;
}

ZOLTXString ZOLTXString::operator+(ZOLTXString const &other) const {
  return ZOLTXString(Joined(other.text_, other.length_));
}

ZOLTXString ZOLTXString::operator+(char const *text) const {
  return ZOLTXString(Joined(text, LengthOf(text)));
}

ZOLTXString ZOLTXString::operator+(int32_t number) const {
  Digits const digits(number);
  return ZOLTXString(Joined(digits.text, digits.length));
}

ZOLTXString ZOLTXString::operator+(char character) const {
  return ZOLTXString(Joined(&character, 1));
}

ZOLTXString &ZOLTXString::Insert(char const *text, int32_t position) {
  return Replace(text, position, 0);
}

ZOLTXString &ZOLTXString::Replace(char const *text, int32_t start, int32_t count) {
  int32_t const first = std::clamp(start, 0, length_);
  int32_t const replaced = std::clamp(count, 0, length_ - first);
  Become(Spliced(first, replaced, text, LengthOf(text)));
  return *this;
}

ZOLTXString &ZOLTXString::Replace(char from, char to) {
  std::replace(text_, text_ + length_, from, to);
  return *this;
}

int32_t ZOLTXString::OffsetOf(char character) const {
  return OffsetIn(text_, std::strchr(text_, character));
}

int32_t ZOLTXString::ROffsetOf(char character) const {
  return OffsetIn(text_, std::strrchr(text_, character));
}

ZOLTXString::Buffer ZOLTXString::Part(int32_t start, int32_t count) const {
  int32_t const first = std::clamp(start, 0, length_);
  return CopyOf(text_ + first, std::min(count, length_ - first));
}

ZOLTXString ZOLTXString::Left(int32_t count) const {
  return ZOLTXString(Part(0, count));
}

ZOLTXString ZOLTXString::Right(int32_t count) const {
  return ZOLTXString(Part(length_ - std::clamp(count, 0, length_), count));
}

ZOLTXString ZOLTXString::Mid(int32_t start, int32_t count) const {
  return ZOLTXString(Part(start, count));
}

void ZOLTXString::ToUpper() {
  std::transform(text_, text_ + length_, text_, Upper);
}

void ZOLTXString::ToLower() {
  std::transform(text_, text_ + length_, text_, Lower);
}
