#ifndef ZOLT41_PREFS_TYPED_PREFS_H_
#define ZOLT41_PREFS_TYPED_PREFS_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"
#include "zolt41/prefs/pref_level.h"

class CEnumPrefs;
class CListEnumPrefs;
struct IStream;

// Preferences: typed values with a name, in sections. One object is one store; a read that it
// cannot answer goes on to its parents, and a write names the level of the store that takes it.
//
// `section` is a section's id; 0 is the store's own top. `sectionRecord` is what RegisterSection
// gave, or 0. A null name is the empty name, and a null value or default the empty text.
//
// Reads give 1 if a store held the value and 0 if none did. Writes give 1 if a store of the asked
// level took the value, and 0, writing nothing, if the chain holds none; they do not tell whether
// the store could keep it (ZOLTLastFailure does).
//
// Reads may run on several threads at once, for as long as no thread registers or unregisters a
// section or changes the stores.
class ZOLT_API TYPrefs {
 public:
  TYPrefs();  // of PrefLevelCard
  explicit TYPrefs(PrefLevel level);
  virtual ~TYPrefs();

  // What a store does; each has a body here that does nothing and gives 0 or null.

  // A walk over the section `name`, opened under `id` for as long as the walk lives; `parent` is
  // the id of the section that it lies in, or 0. The caller ends it with Release.
  virtual CEnumPrefs *GetEnum(int32_t parent, int32_t id, char const *name);
  // The indexed list `listName` in such a section, in the same way.
  virtual CListEnumPrefs *GetListEnum(int32_t parent, int32_t id, char const *name,
                                      char const *listName);

  // A text of this store alone, with its NUL; `buffer` stays as it is if there is none.
  virtual int32_t GetStr(uint32_t section, char const *name, char *buffer);
  virtual void SetStr(uint32_t section, char const *name, char const *value);

  // The bytes of a value of this store alone. With `data` null only `size` is set, to what is
  // stored; a second call then gives the bytes. `size` on entry is no limit: `data` must hold all
  // that is stored. The type is not checked.
  virtual int32_t GetFree(uint32_t section, char const *name, uint32_t type, uint8_t *data,
                          uint32_t &size);
  virtual void SetFree(uint32_t section, char const *name, uint32_t type, uint8_t const *data,
                       uint32_t size);

  // What a store does with its sections, as WinPrefs tells. Here they do nothing and give 0; to
  // save and to load is for stores that keep their values in memory.
  virtual void Remove(uint32_t section, char const *name);
  virtual void RemoveValue(uint32_t section, char const *name);
  virtual int32_t Exists(uint32_t section, char const *name);
  virtual void Save();
  virtual void Load();
  virtual void ClearSection(uint32_t section, uintptr_t sectionRecord);
  virtual int32_t SectionID(char const *name, uintptr_t sectionRecord);
  virtual int32_t IsReadable(uint32_t section);
  virtual int32_t IsWritable(uint32_t section);

  // The store's place in its chain, which decides where reads go on and writes go to; and a mark
  // that a client may set, which the library only keeps.
  PrefLevel Level() const { return level_; }
  void SetLevel(PrefLevel level) { level_ = level; }
  int32_t GetModified() const { return modified_; }
  void SetModified(int32_t modified) { modified_ = modified; }

  // The store that reads fall back to, as the level decides; null at the end of a chain. It
  // cannot be set: SetParent has no effect.
  TYPrefs *GetParent() const { return Parent(); }
  void SetParent(TYPrefs *parent);

  // Reads along the chain: this store first, then its parents; with `parentFirst` not 0 the
  // parents first and this store last. A read that finds nothing leaves the default.
  //
  // `buffer` must hold 256 bytes and the default with its NUL, which is copied whole.
  int32_t ReadStr(uint32_t section, char const *name, char *buffer, char const *defaultValue,
                  int32_t parentFirst);
  // Decimal, hexadecimal behind 0x, octal behind 0; of a number that 32 bits do not hold the low 32
  // bits of its 64 are taken, so 0xFFFFFFFF is -1. A text that is no number counts as found and
  // gives the default.
  int32_t ReadNum(uint32_t section, char const *name, int32_t *value, int32_t defaultValue,
                  int32_t parentFirst);
  // 1 for a text that begins with Y or T in either case, 0 for any other.
  int32_t ReadBool(uint32_t section, char const *name, int32_t *value, int32_t defaultValue,
                   int32_t parentFirst);
  // As GetFree; nothing is written if no store has the value.
  int32_t ReadFree(uint32_t section, char const *name, uint32_t type, uint8_t *data, uint32_t &size,
                   int32_t parentFirst);

  // Listeners are told of such writes only between the Begin and End functions of
  // notify/transaction.h; zolt::Transaction tells by itself.
  //
  // A number is stored as decimal text, a boolean as "Yes" or "No". A text of more than 255 bytes
  // is stored and reads as absent; a write into a section that is not registered is lost.
  int32_t WriteStr(uint32_t section, char const *name, char const *value, PrefLevel level);
  int32_t WriteNum(uint32_t section, char const *name, int32_t value, PrefLevel level);
  int32_t WriteBool(uint32_t section, char const *name, int32_t value, PrefLevel level);
  int32_t WriteFree(uint32_t section, char const *name, uint32_t type, uint8_t const *data,
                    uint32_t size, PrefLevel level);

  // 1 if `value` differs from what a read along the chain gives. Texts that differ only in the
  // case of ASCII letters, or in the top bit of a byte, do not.
  int32_t IsDiffStr(uint32_t section, char const *name, char const *value,
                    char const *defaultValue);
  int32_t IsDiffNum(uint32_t section, char const *name, int32_t value, int32_t defaultValue);
  int32_t IsDiffBool(uint32_t section, char const *name, int32_t value, int32_t defaultValue);

  // Write only what differs, and give 1 for what does not.
  int32_t DiffWriteStr(uint32_t section, char const *name, char const *value,
                       char const *defaultValue, PrefLevel level);
  int32_t DiffWriteNum(uint32_t section, char const *name, int32_t value, int32_t defaultValue,
                       PrefLevel level);
  int32_t DiffWriteBool(uint32_t section, char const *name, int32_t value, int32_t defaultValue,
                        PrefLevel level);

  // Gives a value, of this store or its parents, as a stream of its bytes (comserver/). `mode` is
  // of STGM_READ, STGM_WRITE, STGM_READWRITE and STGM_TRANSACTED. The result is an HRESULT: 0;
  // E_INVALIDARG if `stream` is null; E_FAIL if no store has the value or there is no memory for
  // its bytes, STG_E_INVALIDNAME for a name of more than 259 bytes, E_OUTOFMEMORY without memory
  // for the stream: then `*stream` is null. The caller releases the stream, before the store goes;
  // the library stays started for as long. A client's own store is called under a lock, and may
  // not wait there for a thread that uses components.
  int32_t GetStream(uint32_t section, char const *name, IStream **stream, uint32_t mode);

 protected:
  // See GetParent.
  TYPrefs *Parent() const;

 private:
  ZOLT_HIDDEN TYPrefs *StoreOfLevel(PrefLevel level);

  PrefLevel level_;
  int32_t modified_ = 0;
};

#endif  // ZOLT41_PREFS_TYPED_PREFS_H_
