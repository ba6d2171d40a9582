#ifndef ZOLT41_PREFS_LIST_ENUM_DATA_H_
#define ZOLT41_PREFS_LIST_ENUM_DATA_H_

#include <cstdint>

#include "zolt41/foundation/zoltx_list.h"
#include "zolt41/platform/system/api.h"

// What a list holds, and how an item lies in memory.
enum ListEnumType : int32_t {
  ListEnumString = 0,  // a text with its NUL, made with new char[]
  ListEnumNumber = 1,  // made with new int32_t
  ListEnumBool = 2,    // 0 or another number, made with new int32_t
};

// An ordered list in memory, of one type. It owns its items from the moment they are in it, and
// frees them as its type says; so the type may only change while the list is empty. Items of a type
// that is none of these stay the client's. It belongs to one thread at a time.
class ZOLT_API ListEnumData {
 public:
  ListEnumData(ListEnumData const &) = delete;
  ListEnumData &operator=(ListEnumData const &) = delete;

  // How many items there are, and of which type.
  int32_t GetCount() const { return static_cast<int32_t>(list_.Count()); }
  ListEnumType GetType() const { return type_; }
  void SetType(ListEnumType type) { type_ = type; }
  // The list itself, to which a client adds items of its own making; none may be null.
  ZOLTXList *GetList() { return &list_; }
  ZOLTXList const *GetList() const { return &list_; }

 protected:
  // An empty list.
  explicit ListEnumData(ListEnumType type) : type_(type) {}
  virtual ~ListEnumData();

 private:
  ListEnumType type_;
  ZOLTXList list_{256};
};

// A list of texts. With another type it takes the items of that one.
class ZOLT_API StringListEnumData : public ListEnumData {
 public:
  StringListEnumData() : ListEnumData(ListEnumString) {}
  ~StringListEnumData() override;

  // Add a copy of `text` at the end, or before the item at `index`; from the count on that is the
  // end. Give 1, or 0 for a null `text`, a negative `index`, or without memory.
  int32_t AddString(char const *text);
  int32_t InsertString(int32_t index, char const *text);

  // The length in bytes of the text at `index`, without its NUL; 0 if there is none. It is copied
  // only if `buffer` is not null and `size` is at least the length plus 1.
  int32_t ReadString(int32_t index, char *buffer, int32_t size) const;
};

#endif  // ZOLT41_PREFS_LIST_ENUM_DATA_H_
