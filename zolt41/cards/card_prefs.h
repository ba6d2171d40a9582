#ifndef ZOLT41_CARDS_CARD_PREFS_H_
#define ZOLT41_CARDS_CARD_PREFS_H_

#include <cstdint>
#include <vector>

#include "zolt41/platform/system/api.h"
#include "zolt41/prefs/typed_prefs.h"

// A preference store that lives in memory and travels inside a card, as one block of bytes
// (docs/formats/preference_blob.md). It holds texts only, by section id and name, and is not
// enumerated. Names have at most 31 characters: a longer one is looked up whole and stored cut, so
// that what was written under it is not found again.
//
// Reads through TYPrefs, such as ReadStr, see texts of up to 255 bytes, as in any store; GetStr
// gives longer ones, too. A null name or value is the empty text. The owner moves the bytes: Save
// and Load do nothing. Without memory a write is lost, and so is one of a text of more than
// 1,073,741,822 bytes: the store is as it was. A store belongs to one thread at a time and is not
// copied.
class ZOLT_API TYUserPrefs : public TYPrefs {
 public:
  // Empty, or with the content of `data`; see SetData. Throws std::bad_alloc without memory.
  TYUserPrefs(PrefLevel level, char const *data, uint32_t size);
  ~TYUserPrefs() override;
  TYUserPrefs(TYUserPrefs const &) = delete;
  TYUserPrefs &operator=(TYUserPrefs const &) = delete;

  // Replaces the content with that of `size` bytes at `data`, which are copied; null gives an empty
  // store, and so do bytes that cannot hold the table that they name. A value that lies outside the
  // bytes reads as absent, and so does one that with those before it has more bytes than there are,
  // as of values that share their bytes; a table that is not sorted is sorted. Does not count as a
  // change. Without memory the content stays.
  void SetData(char const *data, uint32_t size);
  // The content as a new memory block of exactly its size, which the caller disposes of with
  // _DisposeMem; null without memory.
  char *GetData();

  // The text of this store alone, as local text with its NUL, for which `buffer` has room; of
  // characters that the code page lacks '?'. 1, or 0 with `buffer` as it was, also without memory
  // for a text of more than 255 characters.
  int32_t GetStr(uint32_t section, char const *name, char *buffer) override;
  void SetStr(uint32_t section, char const *name, char const *value) override;
  // Removes the value.
  void Remove(uint32_t section, char const *name) override;
  int32_t Exists(uint32_t section, char const *name) override;
  void Save() override;
  void Load() override;
  // Removes everything.
  virtual void Clear();

  // How many values there are in all sections.
  int32_t Count() const;
  // The name at `index`, and its section, in the order of the store: sections from the greatest
  // unsigned number down, in each of them names as AZStrCompare has them. Null beyond the count.
  // The name stays the store's, until its next change.
  char const *GetIndexedName(int32_t index, uint32_t *section) const;

 protected:
  // 1 and the place of the value in the table, or 0 and where it would be.
  int32_t FindPos(uint32_t section, char const *name, uint32_t *position) const;
  // Makes a place in the table; false without memory.
  bool AddPropSlot(uint32_t section, char const *name, uint32_t position);
  // The bytes of the value, or null if it is absent or empty. `size` may be null.
  char *GetPropData(uint32_t section, char const *name, uint32_t *size);
  void SetPropData(uint32_t section, char const *name, char const *data, uint32_t size);
  void DisposeData();

 private:
  friend class CallCard;

  ZOLT_HIDDEN char *SlotAt(uint32_t index) const;
  // Below 0 if the value would stand before the one at a position, above 0 if behind it.
  ZOLT_HIDDEN int32_t OrderAt(int32_t position, uint32_t section, char const *name) const;
  ZOLT_HIDDEN char *OutsideAt(char const *slot) const;
  ZOLT_HIDDEN char *ValueAt(char const *slot, uint32_t *size) const;
  ZOLT_HIDDEN bool TakeTable(char const *data, uint32_t size);
  ZOLT_HIDDEN void CheckTable(uint32_t poolSize);
  ZOLT_HIDDEN bool SortTable();
  // As SetData. False, with all as it was, without memory.
  ZOLT_HIDDEN bool TakeData(char const *data, uint32_t size);
  ZOLT_HIDDEN void DisposeOutside();
  ZOLT_HIDDEN char *NewOutside(char const *data, uint32_t size);
  ZOLT_HIDDEN void LeadOutside(char *slot, char *block);
  ZOLT_HIDDEN void DropOutside(char const *slot);

  char *slots_ = nullptr;  // a memory block with head and table
  char *pool_ = nullptr;   // a memory block with the values that were loaded, or null
  // Values that outgrew the pool, each a memory block, or null where a place is free.
  std::vector<char *> outside_;
  std::vector<uint32_t> freeOutside_;
};

#endif  // ZOLT41_CARDS_CARD_PREFS_H_
