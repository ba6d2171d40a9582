#ifndef ZOLT41_CARDS_PROPERTY_STORAGE_H_
#define ZOLT41_CARDS_PROPERTY_STORAGE_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// How Selected compares.
enum CSOper : int32_t {
  CSContains = 0,    // the value occurs anywhere in the property
  CSEquals = 1,      // the property equals the value
  CSBeginsWith = 2,  // the property begins with the value
  CSEndsWith = 3,    // the property ends with the value
};

// The content of a card: a list of properties, each with a name, a type, flags and a value, in one
// memory block in the form in which it is stored (docs/formats/property_list.md). Several
// properties may have one name; flags tell them apart. An index, and every pointer that GetPropA
// gives, is good until the next change of the list.
//
// Where memory for a change cannot be had, or the change is impossible (a name of more than 65,531
// bytes, a negative length, a null value with a length, a list of more than 2,147,483,647 bytes),
// nothing changes. Without memory a constructor throws std::bad_alloc. Arguments may lie in the
// list itself. Names are ASCII; a null name is the empty one. An object belongs to one thread at a
// time, is not copied, and must not be deleted through a pointer to this class if it is of another.
class ZOLT_API PCardStorage {
 public:
  PCardStorage();
  ~PCardStorage();
  PCardStorage(PCardStorage const &) = delete;
  PCardStorage &operator=(PCardStorage const &) = delete;

  // 1 once the list differs from what was last loaded or saved.
  virtual int32_t Modified();
  // Looks the list over and finds its records. One that is damaged, in its count, a length or a
  // name, is emptied whole. Bytes behind the last record stay until the first change.
  virtual void Recalculate();

  // The list as a new memory block, which the caller disposes of with _DisposeMem; or null without
  // memory. GetHeader leaves out the properties whose names begin with "L-".
  char *Get();
  char *GetHeader();
  // Takes a copy of a list of `size` bytes and calls Recalculate; then it counts as not modified.
  // Null, and a `size` below 4, give an empty list.
  void Set(char const *data, int32_t size);
  uint32_t PropCount() const;
  void SetModified(int32_t modified) { modified_ = modified; }

  // Adds a property at the end and gives its index, or 0xFFFFFFFF.
  uint32_t AddProp(char const *name, uint32_t type, uint32_t flags, char const *value,
                   int32_t length);
  // The bytes of a property's value, or null if there is no such index; each of the others may be
  // null. They stay the list's.
  char *GetPropA(uint32_t index, uint32_t *length, uint32_t *type, uint32_t *flags, char **name);
  // Puts another property in the place of one. 1, or 0.
  int32_t SetPropA(uint32_t index, char const *name, uint32_t type, uint32_t flags,
                   char const *value, int32_t length);
  // 1, or 0 if there is no such index.
  int32_t DeleteProp(uint32_t index);

  // From `startIndex` on, the index of the property of that name which has all of `requiredFlags`
  // and most of `preferredFlags`, the first of equals; 0xFFFFFFFF if there is none. Names are
  // compared as AZStrEqual does. `type` may be null.
  uint32_t FindProp(char const *name, uint32_t requiredFlags, uint32_t preferredFlags,
                    uint32_t startIndex, uint32_t *type);
  // The value found so, as local text with its NUL; else, or if it is no string, the default. Of
  // byte text, and of the default, `bufferSize` bytes are copied at most, and a NUL behind them: a
  // buffer holds `bufferSize` + 1 bytes. 16-bit text that does not fit into `bufferSize` with its
  // NUL gives the default. Characters that the code page lacks become '?'.
  void GetStrProp(char const *name, uint32_t requiredFlags, uint32_t preferredFlags,
                  char const *defaultValue, char *buffer, int32_t bufferSize);
  // Removes every property of that name with `requiredFlags`, and adds local text as a 16-bit one
  // with both sets of flags, unless it is empty.
  void SetStrProp(char const *name, uint32_t requiredFlags, uint32_t preferredFlags,
                  char const *value);
  // 1 if a string property of that name compares so with `value`, without regard to the case of
  // ASCII letters; in 16-bit text a character above 0x80 counts as '?'. Else 0.
  int32_t Selected(char const *name, CSOper oper, char const *value);

  // There is no vCard in this form: -1 and null. See ExportVCard.
  int32_t ImportFromVCard(char const *text);
  char *ExportToVCard();

  // False where there was no memory for what Recalculate builds out of the list.
  bool InStep() const { return inStep_; }

 private:
  friend class CallCard;
  friend class Rolodex;
  struct Record;

  ZOLT_HIDDEN Record RecordAt(uint32_t index) const;
  ZOLT_HIDDEN uint32_t OffsetOf(uint32_t index) const;
  ZOLT_HIDDEN void SetOffset(uint32_t index, uint32_t offset);
  ZOLT_HIDDEN uint32_t EndOf(uint32_t index) const;
  ZOLT_HIDDEN bool FindRecords();
  ZOLT_HIDDEN void Empty();
  // As Set. False, with all as it was, without memory.
  ZOLT_HIDDEN bool TakeCopy(char const *data, int32_t size);
  ZOLT_HIDDEN bool Exchange(char **list, char **offsets);
  ZOLT_HIDDEN bool Resize(uint32_t index, uint64_t newSize);

  char *offsets_;  // a memory block of a number of 32 bits for each property
  char *list_;     // a memory block with the list
  int32_t modified_ = 0;
  bool inStep_ = true;
};

#endif  // ZOLT41_CARDS_PROPERTY_STORAGE_H_
