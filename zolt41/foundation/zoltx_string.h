#ifndef ZOLT41_FOUNDATION_ZOLTX_STRING_H_
#define ZOLT41_FOUNDATION_ZOLTX_STRING_H_

#include <cstdint>
#include <cstring>
#include <new>

#include "zolt41/platform/system/api.h"

// A byte string that owns its text: for text whose size is not known in advance.
//
// The buffer has exactly the length plus one bytes, is owned by one string alone, and ends with a
// NUL. So a copy is a full one, and a change of the length takes a new buffer; text of the present
// length is put into the present one. Lengths, positions and counts are in bytes, and what is out
// of range is limited as told below. An argument may be text of the string's own. Only where it is
// told may a pointer be null.
//
// The text ends at its first NUL. Bytes behind one are counted by the length: a string built from
// a pointer and a length can hold some, and one built from the character NUL has length 1. Where
// texts are joined, each part is taken up to its first NUL; the length is still the sum of the
// lengths, and NULs fill the rest.
//
// Where there is no memory, and for a length above 2^31 - 1, std::bad_alloc is thrown and the
// string is as it was. Different strings may be used on different threads.
class ZOLT_API ZOLTXString {
 public:
  ZOLTXString() { Init(); }
  // Null gives an empty string.
  ZOLTXString(char const *text);
  ZOLTXString(ZOLTXString const &other);
  // The number in decimal.
  ZOLTXString(int32_t number);
  ZOLTXString(char character);
  // See Set.
  ZOLTXString(char const *text, int32_t length);
  ~ZOLTXString() { ::operator delete(text_); }

  // Makes an empty string of raw storage: what the fields held is not looked at, so a live string
  // would lose its buffer.
  void Init();

  // Take a copy of a text up to its NUL, for which null is the empty one.
  ZOLTXString &operator=(ZOLTXString const &other);
  ZOLTXString &operator=(char const *text);
  // The number in decimal. A char is taken as its number, too.
  ZOLTXString &operator=(int32_t number);
  // Takes exactly `length` bytes, NULs among them, into a new buffer. A negative `length` counts as
  // 0, for which `text` may be null.
  void Set(char const *text, int32_t length);

  // The text, never null, good until the next change of the length or the end of the string.
  operator char const *() const { return text_; }
  char const *GetBuffer() const { return text_; }
  int32_t GetLength() const { return length_; }
  bool IsEmpty() const { return length_ < 1; }

  // Compare the texts byte by byte; the lengths do not matter.
  bool operator==(ZOLTXString const &other) const { return std::strcmp(text_, other.text_) == 0; }
  bool operator==(char const *text) const;
  bool operator!=(ZOLTXString const &other) const { return !(*this == other); }
  bool operator!=(char const *text) const { return !(*this == text); }

  // Put the text of a string, a text, a number in decimal, or one byte behind this one's, or behind
  // that of a copy.
  ZOLTXString &operator+=(ZOLTXString const &other);
  ZOLTXString &operator+=(char const *text);
  ZOLTXString &operator+=(int32_t number);
  ZOLTXString &operator+=(char character);
  ZOLTXString operator+(ZOLTXString const &other) const;
  ZOLTXString operator+(char const *text) const;
  ZOLTXString operator+(int32_t number) const;
  ZOLTXString operator+(char character) const;

  // Puts `text` before `position`, which is limited to 0 up to the length.
  ZOLTXString &Insert(char const *text, int32_t position);
  // Puts `text` in the place of `count` bytes from `start` on. `start` is limited to 0 up to the
  // length, then `count` to 0 up to what lies behind `start`.
  ZOLTXString &Replace(char const *text, int32_t start, int32_t count);
  // Makes every byte `from` among all of the length `to`.
  ZOLTXString &Replace(char from, char to);

  // The position of the first or last such byte in the text, or -1. A NUL is found at its end.
  int32_t OffsetOf(char character) const;
  int32_t ROffsetOf(char character) const;
  int32_t ReverseFind(char character) const { return ROffsetOf(character); }

  // The first or last `count` bytes, limited to 0 up to the length.
  ZOLTXString Left(int32_t count) const;
  ZOLTXString Right(int32_t count) const;
  // `count` bytes from `start` on, or all. Negative arguments count as 0, a `count` goes no further
  // than the string, and from beyond the length nothing is taken.
  ZOLTXString Mid(int32_t start, int32_t count) const;
  ZOLTXString Mid(int32_t start) const { return Mid(start, INT32_MAX); }

  // Pass each byte of the length, as a signed number, through the C library's toupper or tolower,
  // so the locale decides about those from 0x80 on.
  void ToUpper();
  void ToLower();

  // Breaks the text into lines of at most `width` bytes, where blanks allow that, by making a blank
  // of each break a carriage return. Lines end at the carriage returns that are there, too. A word
  // that is longer stays whole. A negative `width` changes nothing.
  void Wordwrap(int32_t width);

  // The number of bytes, 1 to 3, of the UTF-8 shaped character to which the byte at `index` (0 to
  // the length) belongs, as far as that byte and the one before it tell. A byte 0x80 to 0xBF at the
  // very front has no lead byte and stands alone, as it does behind an ASCII character: 1.
  int32_t GlyphWidth(int32_t index) const;

 private:
  struct Buffer {
    char *text;
    int32_t length;
  };

  ZOLT_HIDDEN explicit ZOLTXString(Buffer const &buffer);
  ZOLT_HIDDEN static Buffer Allocate(int64_t length);
  ZOLT_HIDDEN static Buffer CopyOf(char const *source, int32_t length);
  ZOLT_HIDDEN void Become(Buffer const &buffer);
  ZOLT_HIDDEN ZOLTXString &ReadFrom(char const *source, int32_t length);
  ZOLT_HIDDEN Buffer Spliced(int32_t start, int32_t count, char const *source,
                             int32_t length) const;
  ZOLT_HIDDEN Buffer Part(int32_t start, int32_t count) const;
  ZOLT_HIDDEN Buffer Joined(char const *source, int32_t length) const;

  char *text_;
  int32_t length_;
};

#endif  // ZOLT41_FOUNDATION_ZOLTX_STRING_H_
