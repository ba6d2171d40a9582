#ifndef ZOLT41_PLATFORM_REGISTRY_REGISTRY_H_
#define ZOLT41_PLATFORM_REGISTRY_REGISTRY_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// The registry: two trees of keys, the user's and the machine's, each key with named values of a
// type and a size. Every process of one user sees the same trees; each single call is whole
// against all of them. docs/registry.md tells where the trees are kept and what survives what.
//
// Names of keys and values are bytes in the local code page, ended by a NUL. They compare without
// ASCII case and keep the spelling that they were first written with. A backslash or a colon in a
// name is an ordinary character. A key name has at most 255 bytes, a value name at most 16,383, and
// a tree is at most 512 keys deep; the empty value name (or null) is the key's unnamed value.
//
// All functions give 0 (ERROR_SUCCESS) or one of the error numbers below, and leave the reason of
// a failure for ZOLTLastFailure. They may be called from any thread at any time. Values of up to
// 512 bytes, with names of up to 259, that were read before are read again without a system call or
// an allocation until somebody changes them; not so in a home that may not be written.
//
// After fork, parent and child may both go on using the registry and all handles that were open. A
// HiveTransaction of the forking thread is lost in both; fork waits for the end of another
// thread's. After vfork, or a clone that shares memory, the child may only call exec or _exit.

using HKEY = uintptr_t;

// The classes of components: "Software\Classes" in the user's tree, and behind that in the
// machine's. A root for making, opening and deleting keys only. What is made or deleted, or opened
// with a right to write, is the user's; opened for reading, a key is the user's if that exists,
// else the machine's.
inline constexpr HKEY HKEY_CLASSES_ROOT = 0x80000000;
inline constexpr HKEY HKEY_CURRENT_USER = 0x80000001;   // the user's tree
inline constexpr HKEY HKEY_LOCAL_MACHINE = 0x80000002;  // the machine's tree

// Access rights of a handle.
inline constexpr uint32_t KEY_READ = 0x20019;
inline constexpr uint32_t KEY_WRITE = 0x20006;
inline constexpr uint32_t KEY_SET_VALUE = 0x2;  // as KEY_WRITE
inline constexpr uint32_t KEY_ALL_ACCESS = 0xF003F;

// Types of values. Others are kept as given.
inline constexpr uint32_t REG_NONE = 0;
inline constexpr uint32_t REG_SZ = 1;
inline constexpr uint32_t REG_BINARY = 3;
inline constexpr uint32_t REG_DWORD = 4;

inline constexpr int32_t ERROR_SUCCESS = 0;
inline constexpr int32_t ERROR_FILE_NOT_FOUND = 2;  // no such key or value
inline constexpr int32_t ERROR_ACCESS_DENIED = 5;
inline constexpr int32_t ERROR_INVALID_HANDLE = 6;  // not open, or closed
inline constexpr int32_t ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr int32_t ERROR_LOCK_VIOLATION = 33;  // another process kept its lock
inline constexpr int32_t ERROR_INVALID_PARAMETER = 87;
inline constexpr int32_t ERROR_DISK_FULL = 112;
inline constexpr int32_t ERROR_MORE_DATA = 234;  // the buffer is too small
inline constexpr int32_t ERROR_NO_MORE_ITEMS = 259;
inline constexpr int32_t ERROR_REGISTRY_CORRUPT = 1015;
inline constexpr int32_t ERROR_REGISTRY_IO_FAILED = 1016;
inline constexpr int32_t ERROR_KEY_DELETED = 1018;        // the key of this handle was deleted
inline constexpr int32_t ERROR_REVISION_MISMATCH = 1306;  // the hive has a newer layout
inline constexpr int32_t ERROR_UNSUPPORTED_TYPE = 1630;

// Opens the subkey `name` of `parent`, making it if it is missing, for reading and writing as far
// as the tree can be written, else for reading. `name` is one component and is never split; the
// empty name opens `parent` once more. `*key` is owned by the caller, who closes it.
//
// Where the key does not exist and cannot be made because the caller may not write the tree, the
// call gives a handle for reading on an empty key; it shows the key's content within a second after
// another process has made it.
//
// A handle names a place in the tree: when the hive is replaced by another file, it stands for the
// key of the same path there.
ZOLT_API int32_t RegCreateKeyA(HKEY parent, char const *name, HKEY *key);

// The same with the access asked for: KEY_WRITE on a tree that cannot be written gives
// ERROR_ACCESS_DENIED. `reserved`, `keyClass`, `options` and `security` have no effect;
// `*disposition`, if not null, becomes 1 for a key that was made and 2 for one that was there.
ZOLT_API int32_t RegCreateKeyExA(HKEY parent, char const *name, uint32_t reserved, char *keyClass,
                                 uint32_t options, uint32_t access, void *security, HKEY *key,
                                 uint32_t *disposition);

// Opens a key that exists. `name` is taken as one component; if there is no such key and it holds
// backslashes, as a path of components. Null or the empty name opens `parent` once more.
ZOLT_API int32_t RegOpenKeyA(HKEY parent, char const *name, HKEY *key);

// The same with the access asked for: a right to write a tree that cannot be written gives
// ERROR_ACCESS_DENIED, and without one the handle is for reading. `options` has no effect.
ZOLT_API int32_t RegOpenKeyExA(HKEY parent, char const *name, uint32_t options, uint32_t access,
                               HKEY *key);

// Closes a handle. Its number is not given out again for a long time, so a use after this gives
// ERROR_INVALID_HANDLE. The predefined handles can be closed without effect.
ZOLT_API int32_t RegCloseKey(HKEY key);

// Gives type and size of a value, and its bytes if `data` is not null: then `*size` says how many
// bytes `data` holds, and ERROR_MORE_DATA is given if that is too few; `*size` becomes the size of
// the value. `type` may be null; `size` only if `data` is null too. `reserved` has no effect.
ZOLT_API int32_t RegQueryValueExA(HKEY key, char const *name, uint32_t *reserved, uint32_t *type,
                                  uint8_t *data, uint32_t *size);

// Reads a text (type REG_SZ) in one step: type, size and bytes belong together whatever others
// write. `*size` says how many bytes `data` holds, at least 1, and becomes the size of the text
// with its NUL, which is added where the stored bytes have none. ERROR_UNSUPPORTED_TYPE for a value
// of another type, ERROR_MORE_DATA for one that does not fit with its NUL; `data` is then as
// it was.
ZOLT_API int32_t ZOLTQueryText(HKEY key, char const *name, char *data, uint32_t *size);

// Makes or replaces a value. `data` may be null if `size` is 0. A success is kept whatever
// happens to the process afterwards. `reserved` has no effect.
ZOLT_API int32_t RegSetValueExA(HKEY key, char const *name, uint32_t reserved, uint32_t type,
                                uint8_t const *data, uint32_t size);

ZOLT_API int32_t RegDeleteValueA(HKEY key, char const *name);

// Deletes a subkey with its values. One that has subkeys itself is refused with
// ERROR_ACCESS_DENIED, and an empty name with ERROR_INVALID_PARAMETER. Handles that are still open
// on it read nothing and give ERROR_KEY_DELETED when a value is set, also when a key of that name
// is made again; ZOLTLastFailure then says 6.
ZOLT_API int32_t RegDeleteKeyA(HKEY key, char const *name);

// Gives the name of the value or subkey at position `index`, in the order of first writing.
// `*nameLength` says how many bytes `name` holds and becomes the length without the NUL;
// ERROR_MORE_DATA if the name does not fit with its NUL, ERROR_NO_MORE_ITEMS past the end.
// Positions shift when an entry before them goes. `reserved` has no effect. `type`, `data` and
// `size` are filled as by RegQueryValueExA where they are not null; `keyClass`, `classLength` and
// `lastWrite` have no effect.
ZOLT_API int32_t RegEnumValueA(HKEY key, uint32_t index, char *name, uint32_t *nameLength,
                               uint32_t *reserved, uint32_t *type, uint8_t *data, uint32_t *size);
ZOLT_API int32_t RegEnumKeyExA(HKEY key, uint32_t index, char *name, uint32_t *nameLength,
                               uint32_t *reserved, char *keyClass, uint32_t *classLength,
                               void *lastWrite);

// Counts the subkeys and values of a key and gives the length of the longest name of either,
// without a NUL; with characters in it that the code page lacks it may be told too long. Where
// others write meanwhile the numbers need not belong together. Each place may be null; those that
// are not named here have no effect.
ZOLT_API int32_t RegQueryInfoKeyA(HKEY key, char *keyClass, uint32_t *classLength,
                                  uint32_t *reserved, uint32_t *subkeys, uint32_t *longestSubkey,
                                  uint32_t *longestClass, uint32_t *values, uint32_t *longestValue,
                                  uint32_t *largestData, uint32_t *security, void *lastWrite);

namespace zolt {

// Several changes of one tree as one: all of them are kept or none, and no other process sees a
// part of them or changes anything between. Between Begin and Commit the calling thread's calls
// on this tree belong to the transaction, reads included; other threads and processes that write
// to the tree wait. Begin and Commit give the numbers above. Nothing is kept of a transaction that
// is destroyed without Commit, or whose Commit fails. Belongs to the thread that began it; a thread
// has at most one on each tree.
class ZOLT_API HiveTransaction {
 public:
  explicit HiveTransaction(HKEY root);
  ~HiveTransaction();
  HiveTransaction(HiveTransaction const &) = delete;
  HiveTransaction &operator=(HiveTransaction const &) = delete;

  // ERROR_LOCK_VIOLATION if others do not let go in time.
  [[nodiscard]] int32_t Begin();
  // What was changed since Begin is kept, or with any other result nothing of it.
  [[nodiscard]] int32_t Commit();

 private:
  HKEY root_;
  uint64_t serial_ = 0;
  bool open_ = false;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_REGISTRY_H_
