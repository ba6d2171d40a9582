#ifndef ZOLT41_INTERCHANGE_CARD_TEXT_READER_H_
#define ZOLT41_INTERCHANGE_CARD_TEXT_READER_H_

#include <cstdint>
#include <string>

#include "zolt41/interchange/basic_read.h"

// The parts of a card text, read one after the other. As this form has it, bytes compare as signed
// numbers, so that one from 0x80 on ends a text as a control character does, unless a function says
// otherwise.

namespace zolt {

// Reads through the next LF. False at a byte below it, unsigned.
bool SkipLine(FBasicRead *reader);

// Reads bytes up to the first one that is not above `last`, which is taken too. What is beyond
// `limit` bytes is dropped.
std::string ReadUpTo(FBasicRead *reader, int last, size_t limit);

// Reads bytes up to the first one that is not above a CR, which is taken too, or 1,023 of them.
std::string ReadPreference(FBasicRead *reader);

// Reads a word of up to 63 bytes and the delimiter behind it. False if the word is longer or holds
// a byte below a blank.
bool ReadToken(FBasicRead *reader, char delimiter, std::string *token);

// Reads on to the next line that begins with a bracket and the name in it. False if there is none.
bool ReadSectionName(FBasicRead *reader, std::string *name);

struct PropertyHead {
  std::string name;
  uint32_t type;
  uint32_t flags;
};

// Reads the rest of a line, and of the next one what stands before a property's value.
bool ReadPropertyHead(FBasicRead *reader, PropertyHead *head);

enum class CardValue {
  text,       // local text, as far as the first NUL
  bytes,      // as they are to be stored
  unfit,      // what stands there in hex is none; the line makes no property
  forbidden,  // such a type must be in hex
};

CardValue ReadPropertyValue(FBasicRead *reader, uint32_t type, std::string *value);

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_CARD_TEXT_READER_H_
