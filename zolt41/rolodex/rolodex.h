#ifndef ZOLT41_ROLODEX_ROLODEX_H_
#define ZOLT41_ROLODEX_ROLODEX_H_

#include <cstdint>
#include <memory>
#include <string_view>

#include "zolt41/cards/property_storage.h"
#include "zolt41/platform/system/api.h"

namespace zolt {
struct RolodexState;
struct FreedRecord;
class CardEntry;
class RolodexIndex;
}  // namespace zolt

// One of the 128 records that a database has for its categories. What they mean is up to the
// programs that use it; `number` is kept in the file's byte order, and all else as bytes.
struct CategoryInfo {
  char text[64];
  uint32_t number;
  char more[12];
};

// The three names of a card, of each of which 31 characters are kept; null is an empty one.
struct CardNames {
  char const *name1;
  char const *name2;
  char const *name3;
};

// A database of cards in one file (docs/formats/rolodex.md). A card has an id, given once and never
// changed; three short names and a set of categories, which are read without its body; and a body,
// the list of a PCardStorage.
//
// Whatever ends the program, even in the middle of a change, each card is in the file as it was
// before the change or as it is after it; Open finds it so (docs/rolodex_recovery.md).
//
// A list of categories is a byte that tells how many there are, and that many bytes, each the
// number of a category; numbers from 128 on are ignored. A first byte of 255 stands for all 128. A
// buffer that receives a list has 129 bytes. Names are compared as AZStrEqual does.
//
// All buffers are the caller's. Functions on cards answer on a closed database as if the card were
// not there. One that fails changes nothing, and ZOLTLastFailure has the reason; only
// ApplyCategory, CreateCards and Compact may have done a part, of whole cards. Too little memory
// counts as "full". Ids and sizes are limited: a file has less than 2^31 bytes. An open database
// takes about 150 bytes of memory for each card once it looks for one, and of a file of up to 4 MiB
// it may keep a copy. An object belongs to one thread at a time.
class ZOLT_API Rolodex {
 public:
  Rolodex();
  // Closes.
  ~Rolodex();
  Rolodex(Rolodex const &) = delete;
  Rolodex &operator=(Rolodex const &) = delete;

  // Makes an empty database, also of a file that exists, and leaves it closed. 0, or a negative
  // code of AFS_LZOpenFile or AFS_Write.
  static int32_t Create(char const *path);

  // Opens a database; for writing, nobody else may have it open. One that was not closed is put in
  // order first, and one of a big-endian machine is converted; a read-only opening does neither and
  // fails. One that is too full for an index opens, but is not closed clean until it has been
  // compacted. 0; -1 if it is no such file, of another version, in need of what cannot be done, or
  // this object is open, which it stays; or a code of AFS_LZOpenFile or AFS_Read.
  int32_t Open(char const *path, int32_t readOnly);
  // Opens for writing, and for as long as it is open, every change is on the disk when its function
  // returns.
  int32_t OpenDurable(char const *path);
  void Close();
  int32_t IsReadOnly() const { return readOnly_; }

  // Adds a card and gives its id, or 0. Null categories are none.
  uint32_t CreateCard(PCardStorage *card, char const *name1, char const *name2, char const *name3,
                      unsigned char const *categories);
  // Adds `count` cards in one go, as CreateCard would one by one, and gives how many were added:
  // fewer only after a failure, and then the first ones. Their ids go to `ids`. Each of `names`,
  // `categories` and `ids` may be null.
  uint32_t CreateCards(uint32_t count, PCardStorage *const *cards, CardNames const *names,
                       unsigned char const *const *categories, uint32_t *ids);
  // Replaces the body; the card counts as not modified. 1 or 0.
  int32_t SaveCard(uint32_t id, PCardStorage *card);
  // Replaces the list of `card` by the body; it counts as not modified. 1 or 0.
  int32_t LoadCard(uint32_t id, PCardStorage *card);
  int32_t DeleteCard(uint32_t id);

  // A null name stays as it is.
  void SetCardName(uint32_t id, char const *name1, char const *name2, char const *name3);
  // Each buffer has 32 bytes, or is null. 1 or 0.
  int32_t GetCardName(uint32_t id, char *name1, char *name2, char *name3);
  void SetCardCategories(uint32_t id, unsigned char const *categories);
  // An empty list if there is no such card.
  void GetCardCategories(uint32_t id, unsigned char *categories);

  // The id of the next card with these names, or 0; null matches any name. `*cursor` is 0 for the
  // first call and is set behind what was found; null begins at the front.
  uint32_t FindCard(char const *name1, char const *name2, char const *name3, uint32_t *cursor);
  // Resizes the memory block `*cards` to the ids of the cards, in file order, that have all of the
  // categories `required` and none of `exclude` or one at least of `keep`; each may be null. Gives
  // how many they are; 0, with the block as it was, without memory.
  uint32_t SelectByCategory(unsigned char const *required, unsigned char const *keep,
                            unsigned char const *exclude, char **cards);
  // Marks with `category`, of the cards whose ids are in the memory block `cards`, those that have
  // a string property that compares so with `value`, and clears it of all others; the property
  // "_Label" is the first name. Gives how many were marked; of an id that is there twice, both
  // count. Marks are in memory: a file that is not changed does not keep them.
  uint32_t Select(char const *cards, char const *property, CSOper oper, char const *value,
                  uint32_t category);

  // Closes the gaps that deleted cards left, if `force` is odd or they are worth it. 1 if so.
  int32_t Compact(int32_t force);
  // Takes the categories `remove` from all cards that have all of `filter`, and then gives them
  // those of `add`; each may be null. 1 if a card changed; 0 also after a failure, and then the
  // cards in front of one, in file order, may have been changed.
  int32_t ApplyCategory(unsigned char const *add, unsigned char const *remove,
                        unsigned char const *filter);
  // The record of a category, which stays the object's, or null; also on a closed database.
  CategoryInfo *GetCategoryInfo(uint32_t index);
  // Takes a copy and writes the records of all categories to the file at once, so also what was
  // changed in those that GetCategoryInfo gave.
  void SetCategoryInfo(uint32_t index, CategoryInfo const *info);

 protected:
  // Writes index and trailer, if the file lacks them.
  void Flush();
  // Takes them away, before a change.
  void Modify();
  // Converts a big-endian file.
  void Swap();
  // Makes a new index of the records.
  void Rebuild();

  // Adds a card with an id, which must not be there; ids that are given later are above it. 0 or
  // -1.
  int32_t AddCard(PCardStorage *card, uint32_t id, char const *name1, char const *name2,
                  char const *name3, unsigned char const *categories);
  // The number of a card's entry, in file order, or -1.
  int32_t CardIndex(uint32_t id);
  // Writes the entry of that number at its place.
  void WriteCardHeader(uint32_t index);

 private:
  ZOLT_HIDDEN int32_t OpenFile(char const *path, int32_t readOnly, bool durable);
  ZOLT_HIDDEN int32_t OpenContent();
  ZOLT_HIDDEN int32_t ReadCategories();
  ZOLT_HIDDEN bool LoadIndex();
  ZOLT_HIDDEN bool BeginChange();
  ZOLT_HIDDEN bool GiveUpIndex();
  ZOLT_HIDDEN bool SwapFile();
  ZOLT_HIDDEN bool RebuildIndex();
  ZOLT_HIDDEN bool IndexRecords();
  ZOLT_HIDDEN bool FreeDoubles();

  ZOLT_HIDDEN zolt::CardEntry const *EntryOf(uint32_t id);
  ZOLT_HIDDEN zolt::CardEntry const *GuessEntry(uint32_t id);
  ZOLT_HIDDEN bool AddRecord(zolt::CardEntry *entry, std::string_view body);
  ZOLT_HIDDEN bool Replace(uint32_t slot, std::string_view body);
  ZOLT_HIDDEN bool FreeRecord(uint32_t slot, zolt::FreedRecord const &freed);
  ZOLT_HIDDEN bool ChangeHead(uint32_t slot, zolt::CardEntry const &entry, uint32_t offset,
                              uint32_t count);
  ZOLT_HIDDEN bool PaysToCompact(int32_t force);
  ZOLT_HIDDEN bool CompactIntoNewFile();
  ZOLT_HIDDEN bool CompactInPlace();

  CategoryInfo categories_[128];
  std::unique_ptr<zolt::RolodexState> state_;  // none while closed
  int32_t dirty_ = 0;
  int32_t readOnly_ = 0;
};

#endif  // ZOLT41_ROLODEX_ROLODEX_H_
