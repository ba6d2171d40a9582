#ifndef ZOLT41_PREFS_ENUM_PREFS_H_
#define ZOLT41_PREFS_ENUM_PREFS_H_

#include <cstdint>
#include <memory>

#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/api.h"

class WinPrefs;
namespace zolt {
class NameWalk;
}

// A walk over one section in one store: its values in the order of first writing, then its
// subkeys. It stands before the first entry, on an entry, or behind the last.
//
// It opens its section anew, under the id given, and closes it at its end. So it can open a
// section that is not registered, and it makes the section's keys in all four trees where they
// are missing. It belongs to one thread, must not outlive its store, and may only be made and
// ended where no other thread uses sections.
//
// The walk takes no snapshot: removing an entry shifts those behind it, and one may be skipped.
// Names of up to 259 characters are seen; a longer one may end the walk before those behind it.
class ZOLT_API CEnumPrefs {
 public:
  // `name` and `parent` are the section's name and the id of the section that it lies in, or 0.
  // With `id` and `parent` 0 it walks the store's own top key. If the parent is not registered the
  // walk is empty, or that of a section already registered under `id`.
  CEnumPrefs(int32_t id, char const *name, int32_t parent, WinPrefs *prefs);
  virtual ~CEnumPrefs();
  CEnumPrefs(CEnumPrefs const &) = delete;
  CEnumPrefs &operator=(CEnumPrefs const &) = delete;

  // Deletes the walk; a null pointer is let pass.
  void Release();

  // Goes back before the first entry.
  void Reset();

  // Goes on to the next entry and gives its number, from 1. At the end -1, and the name is empty; a
  // further call tries again and finds what was added meanwhile.
  int32_t Next();

  // The name of the entry; good until the next call of Next or Reset.
  char const *GetName() const { return name_; }

  // The type of the value that bears the entry's name, 10000 if there is none, as for a subkey.
  uint32_t GetType() const;

  // Gives a walk over the entry as a section in this one, under `id` or one of its own. 1, or 0
  // and null. The caller ends it with Release.
  int32_t ReadEnum(int32_t id, CEnumPrefs **sub);
  int32_t ReadEnum(CEnumPrefs **sub);

  // Makes a subkey of the section in this store; one that exists is left as it is. 1, or 0.
  int32_t CreateKey(char const *name);

  // Values of the section, by name or, without one, the entry that the walk stands on. Reads go
  // along the store's chain, writes to the store itself; see TYPrefs.
  int32_t ReadStr(char *buffer, char const *defaultValue);
  int32_t ReadStr(char const *name, char *buffer, char const *defaultValue);
  int32_t ReadNum(int32_t *value, int32_t defaultValue);
  int32_t ReadNum(char const *name, int32_t *value, int32_t defaultValue);
  int32_t ReadBool(int32_t *value, int32_t defaultValue);
  int32_t ReadBool(char const *name, int32_t *value, int32_t defaultValue);
  // `data` must hold all that is stored; `size` is no limit, and the stored size is not told.
  int32_t ReadFree(uint32_t type, uint8_t *data, uint32_t size);
  int32_t ReadFree(char const *name, uint32_t type, uint8_t *data, uint32_t size);
  int32_t WriteStr(char const *value);
  int32_t WriteStr(char const *name, char const *value);
  int32_t WriteNum(int32_t value);
  int32_t WriteNum(char const *name, int32_t value);
  int32_t WriteBool(int32_t value);
  int32_t WriteBool(char const *name, int32_t value);
  int32_t WriteFree(uint32_t type, uint8_t const *data, uint32_t size);
  int32_t WriteFree(char const *name, uint32_t type, uint8_t const *data, uint32_t size);
  void RemoveValue();
  void RemoveValue(char const *name);

 private:
  friend class CListEnumPrefs;

  ZOLT_HIDDEN bool Opened() const;
  // The name of the value at `index`, however long it is, good until the next call; null at the
  // end.
  ZOLT_HIDDEN char const *ValueName(uint32_t index);
  ZOLT_HIDDEN uint32_t TypeOf(char const *value) const;

  int32_t id_;
  HKEY key_;
  uint32_t index_ = 0;
  uint32_t valueCount_ = 0;
  char name_[260] = "";
  WinPrefs *prefs_;
  std::unique_ptr<zolt::NameWalk> values_;
  std::unique_ptr<zolt::NameWalk> subkeys_;
};

#endif  // ZOLT41_PREFS_ENUM_PREFS_H_
