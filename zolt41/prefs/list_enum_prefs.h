#ifndef ZOLT41_PREFS_LIST_ENUM_PREFS_H_
#define ZOLT41_PREFS_LIST_ENUM_PREFS_H_

#include <cstdint>

#include "zolt41/foundation/zoltx_string.h"
#include "zolt41/platform/system/api.h"
#include "zolt41/prefs/list_enum_data.h"

class WinPrefs;

// An indexed list in one section of one store: text values whose names are the list's name and,
// right behind it, the index in decimal: L0, L1, L2 and so on. The length is the number of values
// that follow each other from index 0; it is stored nowhere.
//
// It keeps nothing of the list: every operation goes to the store. It opens its section anew, under
// the id given, and closes it at its end. So it belongs to one thread, must not outlive its store,
// and may only be made, trimmed, written as a whole and ended where no other thread uses sections.
// Another writer can come between the steps of an operation on the whole list; who cannot have that
// writes through zolt::Transaction.
//
// The name of the list is plain text. Together with the index it takes at most 255 bytes: an item
// whose name would be longer does not exist, and is not written.
class ZOLT_API CListEnumPrefs {
 public:
  // As for CEnumPrefs. A null `listName` is the empty name: the values are named 0, 1, 2.
  CListEnumPrefs(int32_t id, char const *name, int32_t parent, WinPrefs *prefs,
                 char const *listName);
  virtual ~CListEnumPrefs();
  CListEnumPrefs(CListEnumPrefs const &) = delete;
  CListEnumPrefs &operator=(CListEnumPrefs const &) = delete;

  // Deletes the object; a null pointer is let pass.
  void Release();

  // The length, in this store alone; values of any type count.
  int32_t GetNumberOfValues();

  // Removes, in a transaction of its own (BeginPrefsRemove), the texts of the list from index
  // `limit` on, those behind a gap included. A name belongs to the list if it begins with the
  // list's name, in the same case, and a number, before which white space and a sign may stand;
  // what follows the number does not matter. White space in the list's name stands for any or none.
  void LimitNumberOfValues(int32_t limit);

  // One item. Reads go along the store's chain, writes to the store itself; see TYPrefs.
  int32_t ReadStr(int32_t index, char *buffer, char const *defaultValue);
  int32_t ReadNum(int32_t index, int32_t *value, int32_t defaultValue);
  int32_t ReadBool(int32_t index, int32_t *value, int32_t defaultValue);
  int32_t WriteStr(int32_t index, char const *value);
  int32_t WriteNum(int32_t index, int32_t value);
  int32_t WriteBool(int32_t index, int32_t value);

  // Adds the items of the stored list behind those of `data`, as `data`'s type says. The length is
  // this store's, each item is read along the chain; one that cannot be read is "", 0 or false.
  // Gives 1.
  int32_t ReadList(ListEnumData *data);
  // The same with the type set to texts.
  int32_t ReadList(StringListEnumData *data);

  // Makes the stored list equal to `data`: removes what is too much, then writes over what is
  // there, in a transaction for BeginPrefsModify that runs even if it is empty, then adds the rest
  // in one for BeginPrefsCreate. Each transaction takes at least 50 ms. An empty text is written
  // only over another one, as SetStr does, so one among the rest ends the stored list. Gives 1,
  // also where the store cannot be written (ZOLTLastFailure tells).
  int32_t WriteList(ListEnumData *data);
  int32_t WriteList(StringListEnumData *data);

  // 1 if the stored list differs from `data` in length or in an item, 0 if not. Texts are compared
  // to the byte; in the second form an empty text on either side is a difference.
  int32_t IsDiffList(ListEnumData *data);
  int32_t IsDiffList(StringListEnumData *data);

 private:
  struct ItemName;

  ZOLT_HIDDEN void ReadItem(int32_t index, ListEnumData *data);
  ZOLT_HIDDEN void WriteItems(ListEnumData const &data, int32_t begin, int32_t end);

  ZOLTXString listName_;
  int32_t id_;
  int32_t parent_;
  WinPrefs *prefs_;
  char name_[260];
};

#endif  // ZOLT41_PREFS_LIST_ENUM_PREFS_H_
