#ifndef ZOLT41_ROLODEX_CARD_RECORD_H_
#define ZOLT41_ROLODEX_CARD_RECORD_H_

#include <cstdint>
#include <string_view>

#include "zolt41/cards/property_storage.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_state.h"

namespace zolt {

// How a record comes into an open database: its body, its head, its place.

// The list of a card, as a memory block of its own.
class CardBody {
 public:
  explicit CardBody(PCardStorage *card);
  ~CardBody();
  CardBody(CardBody const &) = delete;
  CardBody &operator=(CardBody const &) = delete;

  // False if there is no memory for it, or it is too large for any file.
  bool good() const { return good_; }
  std::string_view bytes() const;
  // The size of a record with it.
  uint32_t record() const;

 private:
  char *block_;
  bool good_;
};

// Whether a body is a list from its first property to its last. One that is too short for any is an
// empty list.
bool IsWholeList(std::string_view body);

// A head without a position.
CardEntry NewEntry(uint32_t id, uint32_t size, CardNames const &names,
                   unsigned char const *categories);

// Whether the file stays below its limit with `growth` more bytes of records and another entry.
bool HasRoom(RolodexState const &state, uint64_t growth);

// What is written at the place of a new record: head and body, and behind them the head of what is
// left of the free record there, or the end mark. Good until the next call; empty without memory.
std::string_view RecordBytes(RolodexState *state, Place const &place, CardEntry const &freeRecord,
                             CardEntry const &entry, std::string_view body);

// Writes a record to its place, and sets the position in its head; the index does not know of it
// before EnterRecord.
bool WriteRecord(RolodexState *state, Place const &place, CardEntry *entry, std::string_view body);
void EnterRecord(RolodexState *state, Place const &place, CardEntry const &entry);
// Takes a written record back that was not entered; where that cannot be done the file breaks.
void TakeBackRecord(RolodexState *state, Place const &place, CardEntry const &entry);

// Gives back the memory that a large body took.
void DropLargeBuffers(RolodexState *state);

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_CARD_RECORD_H_
