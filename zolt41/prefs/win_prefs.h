#ifndef ZOLT41_PREFS_WIN_PREFS_H_
#define ZOLT41_PREFS_WIN_PREFS_H_

#include <cstdint>

#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/api.h"
#include "zolt41/prefs/section.h"
#include "zolt41/prefs/typed_prefs.h"

// The preference store of one level, 1 to 4, over the registry.
//
// All stores of a process share one list of sections; a section holds an open key in each of the
// four trees. An id can be registered several times: every lookup by id gives the newest. The
// sections, and the root keys below which they are opened, stay until the last store is deleted.
// Root keys come from the first path that is seen at each level.
//
// Failures are quiet: what cannot be read is absent, and what cannot be written is lost;
// ZOLTLastFailure tells why. Registering and unregistering sections, and whatever else changes the
// list, belongs to one thread at a time, with no read beside it.
class ZOLT_API WinPrefs : public TYPrefs {
 public:
  // Opens the key that `path` leads to, making what is missing. Its components are parted by
  // colons and backslashes; it ends at the first empty one, and at its 254th character. Null
  // stands for the default path of the level. Throws std::bad_alloc where there is no memory for a
  // key.
  WinPrefs(PrefLevel level, char const *path);
  ~WinPrefs() override;
  WinPrefs(WinPrefs const &) = delete;
  WinPrefs &operator=(WinPrefs const &) = delete;

  // See CEnumPrefs. Registers the section anew, so it makes its keys where they are missing.
  CEnumPrefs *GetEnum(int32_t parent, int32_t id, char const *name) override;
  // See CListEnumPrefs. Registers the section as GetEnum does.
  CListEnumPrefs *GetListEnum(int32_t parent, int32_t id, char const *name,
                              char const *listName) override;

  // A text of up to 255 bytes; a longer one, and a value of another type, is absent here.
  int32_t GetStr(uint32_t section, char const *name, char *buffer) override;
  // Writes nothing if `value` equals, byte for byte, what GetStr gives, where absent is empty.
  void SetStr(uint32_t section, char const *name, char const *value) override;
  int32_t GetFree(uint32_t section, char const *name, uint32_t type, uint8_t *data,
                  uint32_t &size) override;
  void SetFree(uint32_t section, char const *name, uint32_t type, uint8_t const *data,
               uint32_t size) override;
  // Deletes the subkey `name` with its values, unless it has subkeys itself.
  void Remove(uint32_t section, char const *name) override;
  void RemoveValue(uint32_t section, char const *name) override;
  // 1 for a value of any type in this store alone.
  int32_t Exists(uint32_t section, char const *name) override;
  // Deletes the section's values and, with all in them, its subkeys.
  void ClearSection(uint32_t section, uintptr_t sectionRecord) override;
  // The id of the record, or of the newest section of that name without regard to ASCII case; -1
  // if there is none.
  int32_t SectionID(char const *name, uintptr_t sectionRecord) override;
  // The bit of Section::access for this store's tree, or 0; always 0 for an id without a section.
  int32_t IsReadable(uint32_t section) override;
  int32_t IsWritable(uint32_t section) override;

  // Register a section, in all four trees, with the id given or else made from the names, and give
  // its record. With a parent it lies below the parent's keys; 0 if the parent is not registered.
  // In the last one `parentRecord`, if not 0, is taken instead of looking the parent up.
  uintptr_t RegisterSection(char const *name);
  uintptr_t RegisterSection(char const *name, int32_t parent);
  uintptr_t RegisterSection(int32_t id, char const *name);
  uintptr_t RegisterSection(int32_t id, int32_t parent, char const *name, uintptr_t parentRecord);

  // Takes the record given, or else the newest with `id`, out of the list and closes its keys; the
  // registry keeps what it has. Nothing happens if it is not in the list.
  void UnRegisterSection(int32_t id, uintptr_t sectionRecord);

  // The id that a section of that name has below `parent`, whose own parents must be registered:
  // a hash of the names, nearest parent first and `name` last, cut to 519 bytes.
  int32_t GetIDFromString(char const *name, int32_t parent);

  // The section's key in this store's tree, the store's own top key for id 0, or 0. It stays the
  // store's.
  HKEY SectionKey(int32_t id, uintptr_t sectionRecord);

  // The id of the newest section that holds this very handle, or whose key in some tree lies at
  // `path` below the machine's tree (`system` not 0) or the user's; 0 if there is none, or if
  // `extra` is not 0.
  int32_t KeySection(HKEY key, uint32_t extra);
  int32_t KeySection(char const *path, int32_t system, uint32_t extra);

  // The name, cut to 63 characters, of the record or of the newest section with `id`; null if
  // there is none. It stays the section's.
  char const *SectionName(int32_t id, uintptr_t sectionRecord);

  // The record of the newest section of that id, or null; good until the section is unregistered.
  Section *GetSectionFromID(int32_t id);

 private:
  ZOLT_HIDDEN void OpenTop(char const *path);
  ZOLT_HIDDEN HKEY ReportedKey(HKEY key) const;
  ZOLT_HIDDEN HKEY KeyOf(uint32_t section) const;
  ZOLT_HIDDEN HKEY KeyToWrite(uint32_t section) const;

  HKEY key_ = 0;
};

#endif  // ZOLT41_PREFS_WIN_PREFS_H_
