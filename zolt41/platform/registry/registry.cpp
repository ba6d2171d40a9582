#include "zolt41/platform/registry/registry.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>

#include "zolt41/platform/registry/classes_root.h"
#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/registry/hives.h"
#include "zolt41/platform/registry/name_walk.h"

namespace zolt {
namespace {

constexpr size_t kLongestKeyName = 255;
constexpr size_t kLongestValueName = 16383;
constexpr ptrdiff_t kDeepestKey = 512;
constexpr uint32_t kWriteBits = KEY_WRITE & ~KEY_READ;

bool Predefined(HKEY key) {
  return key == HKEY_CLASSES_ROOT || key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE;
}

std::string_view NameOf(char const *name) {
  return name == nullptr ? "" : name;
}

// Roots that are opened while nothing else is open follow the environment to another home.
void FollowEnvironment(Hives &hives) {
  if (hives.handles.OpenCount() != 0) return;
  if (hives.user.OwnTransaction() || hives.machine.OwnTransaction()) return;
  if (hives.user.HomeChanged() || hives.machine.HomeChanged()) {
    LeaveHives();
  }
}

// Looks for a key anew by its path: one that was opened before it existed, or in a file that has
// been replaced since. The first costs nothing as long as the tree of keys does not change.
void SeekKey(Hives &hives, HKEY handle, OpenKey *open) {
  Hive &hive = hives.At(open->hive);
  Stamp const stamp = hive.KeysStamp();
  HiveKey key{0, hive.Incarnation()};
  if (open->key.incarnation == key.incarnation && hives.handles.Tried(handle, stamp)) return;
  std::string const path = hives.handles.PathOf(handle);
  int32_t result = ERROR_SUCCESS;
  for (size_t at = 0; at < path.size() && result == ERROR_SUCCESS;) {
    std::string_view const name(&path[at]);
    at += name.size() + 1;
    result = hive.FindKey(key, name, &key);
  }
  if (result != ERROR_SUCCESS) key.id = kNoKey;
  open->key = key;
  // A tree that cannot be read now is asked again the next time.
  if (result != ERROR_SUCCESS && result != ERROR_FILE_NOT_FOUND) return;
  hives.handles.SetKey(handle, key);
  if (key.id == kNoKey) hives.handles.SetTried(handle, stamp);
}

// What a handle stands for. ERROR_INVALID_HANDLE if it is not open.
int32_t Resolve(Hives &hives, HKEY handle, OpenKey *open) {
  if (handle == HKEY_CLASSES_ROOT) return ERROR_INVALID_HANDLE;
  if (Predefined(handle)) {
    uint32_t const hive = handle == HKEY_CURRENT_USER ? 0 : 1;
    *open = {hive, KEY_READ | KEY_WRITE, {0, hives.At(hive).Incarnation()}};
    return ERROR_SUCCESS;
  }
  if (!hives.handles.Find(handle, open)) return ERROR_INVALID_HANDLE;
  if (open->key.id == kNoKey || open->key.incarnation != hives.At(open->hive).Incarnation()) {
    SeekKey(hives, handle, open);
  }
  return ERROR_SUCCESS;
}

// For a key that is not there, or a handle for reading: says why, as far as the tree itself is to
// blame.
int32_t RefuseWriting(Hive &hive) {
  if (hive.CheckWritable() == ERROR_SUCCESS) hive.TellFailure(Failure::denied);
  return ERROR_ACCESS_DENIED;
}

int32_t KeyIsGone(Hive &hive) {
  hive.TellFailure(Failure::io);
  return ERROR_KEY_DELETED;
}

// What needs memory and finds none says so instead of throwing.
template <typename Work>
int32_t WithinMemory(Work work) {
  try {
    return work();
  } catch (std::bad_alloc const &) {
    return ERROR_NOT_ENOUGH_MEMORY;
  }
}

enum class Purpose { reading, writing };

// Does something with an open key, once more if the hive turns out to be another file by now.
// `absent` is what a reader is given where the key does not exist.
template <typename Work>
int32_t WithKey(HKEY handle, Purpose purpose, int32_t absent, Work work) {
  Hives &hives = TheHives();
  ClearFailure();
  for (int attempt = 0; attempt < 3; attempt++) {
    OpenKey open{};
    if (int32_t const result = Resolve(hives, handle, &open); result != ERROR_SUCCESS)
      return result;
    Hive &hive = hives.At(open.hive);
    if (purpose == Purpose::writing) {
      if ((open.access & kWriteBits) == 0) return RefuseWriting(hive);
      if (open.key.id == kNoKey) return KeyIsGone(hive);
    } else if (open.key.id == kNoKey) {
      return absent;
    }
    int32_t const result = WithinMemory([&] { return work(hive, open); });
    if (result == ERROR_KEY_DELETED) return KeyIsGone(hive);
    if (result != Hive::kStaleKey) return result;
  }
  return ERROR_LOCK_VIOLATION;
}

// Gives a handle on the key that `names`, each ended by a NUL, lead to from an open key.
int32_t GiveHandle(Hives &hives, OpenKey const &open, HKEY parent, std::string const &names,
                   HKEY *key) {
  *key = hives.handles.Add(open, hives.handles.PathOf(parent) + names);
  return *key == 0 ? ERROR_NOT_ENOUGH_MEMORY : ERROR_SUCCESS;
}

int32_t CreateIn(Hive &hive, OpenKey const &parent, std::string_view name, bool write,
                 OpenKey *open, bool *made) {
  *open = parent;
  open->access = write ? KEY_READ | KEY_WRITE : KEY_READ;
  int32_t result = parent.key.id == kNoKey ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
  if (result == ERROR_SUCCESS && !name.empty()) result = hive.FindKey(parent.key, name, &open->key);
  if (result == ERROR_SUCCESS && write) result = hive.CheckWritable();
  if (result != ERROR_FILE_NOT_FOUND) return result;
  result = parent.key.id == kNoKey ? RefuseWriting(hive)
                                   : hive.CreateKey(parent.key, name, &open->key, made);
  if (result != ERROR_ACCESS_DENIED || write) return result;
  // Who may not make the key reads an empty one.
  ClearFailure();
  open->key = {kNoKey, hive.Incarnation()};
  return ERROR_SUCCESS;
}

int32_t MakeKey(HKEY parentHandle, char const *givenName, uint32_t access, HKEY *key, bool *made) {
  Hives &hives = TheHives();
  std::string_view const name = NameOf(givenName);
  *made = false;
  ClearFailure();
  if (key == nullptr || name.size() > kLongestKeyName) return ERROR_INVALID_PARAMETER;
  *key = 0;
  std::string const above = hives.handles.PathOf(parentHandle);
  if (std::ranges::count(above, '\0') >= kDeepestKey) return ERROR_INVALID_PARAMETER;
  if (Predefined(parentHandle)) FollowEnvironment(hives);
  int32_t result = Hive::kStaleKey;
  OpenKey open{};
  for (int attempt = 0; attempt < 3 && result == Hive::kStaleKey; attempt++) {
    OpenKey parent{};
    if (result = Resolve(hives, parentHandle, &parent); result != ERROR_SUCCESS) return result;
    result = CreateIn(hives.At(parent.hive), parent, name, (access & kWriteBits) != 0, &open, made);
  }
  if (result != ERROR_SUCCESS) return result == Hive::kStaleKey ? ERROR_LOCK_VIOLATION : result;
  std::string names(name);
  if (!name.empty()) names.push_back('\0');
  return GiveHandle(hives, open, parentHandle, names, key);
}

int32_t Create(HKEY parent, char const *name, uint32_t access, HKEY *key, bool *made) {
  return WithinMemory([&] { return MakeKey(parent, name, access, key, made); });
}

// Finds a key below another one by one name; `names` becomes the way. The empty name leads nowhere
// else.
int32_t FindOne(Hive &hive, HiveKey parent, std::string_view name, HiveKey *key,
                std::string *names) {
  *key = parent;
  names->clear();
  if (name.empty()) return ERROR_SUCCESS;
  int32_t const result = hive.FindKey(parent, name, key);
  if (result == ERROR_SUCCESS) names->append(name).push_back('\0');
  return result;
}

// The same, or else by a path of names.
int32_t FindPath(Hive &hive, HiveKey parent, std::string_view path, HiveKey *key,
                 std::string *names) {
  int32_t result = FindOne(hive, parent, path, key, names);
  if (result != ERROR_FILE_NOT_FOUND || path.find('\\') == std::string_view::npos) return result;
  while (!path.empty()) {
    std::string_view const name = path.substr(0, path.find('\\'));
    if (result = hive.FindKey(parent, name, key); result != ERROR_SUCCESS) return result;
    names->append(name).push_back('\0');
    parent = *key;
    path.remove_prefix(std::min(name.size() + 1, path.size()));
  }
  return result;
}

// How a name is taken: as one component, or else as a path.
enum class Split { none, path };
// What an open handle is to be good for.
enum class Wish { reading, writing, what_can_be };

Wish WishOf(uint32_t access) {
  return (access & kWriteBits) != 0 ? Wish::writing : Wish::reading;
}

int32_t OpenIn(Hive &hive, OpenKey const &parent, std::string_view name, Split split, Wish wish,
               OpenKey *open, std::string *names) {
  *open = parent;
  open->access = wish == Wish::reading ? KEY_READ : KEY_READ | KEY_WRITE;
  int32_t const way = split == Split::path ? FindPath(hive, parent.key, name, &open->key, names)
                                           : FindOne(hive, parent.key, name, &open->key, names);
  if (way != ERROR_SUCCESS || wish == Wish::reading) return way;
  int32_t const writable = hive.CheckWritable();
  if (writable == ERROR_SUCCESS || wish == Wish::writing) return writable;
  open->access = KEY_READ;
  return ERROR_SUCCESS;
}

int32_t FindKey(HKEY parent, char const *name, Split split, Wish wish, HKEY *key) {
  ClearFailure();
  if (key == nullptr) return ERROR_INVALID_PARAMETER;
  *key = 0;
  if (Predefined(parent)) FollowEnvironment(TheHives());
  OpenKey found{};
  std::string names;
  int32_t const result =
      WithKey(parent, Purpose::reading, ERROR_FILE_NOT_FOUND, [&](Hive &hive, OpenKey const &open) {
        return OpenIn(hive, open, NameOf(name), split, wish, &found, &names);
      });
  if (result != ERROR_SUCCESS) return result;
  ClearFailure();
  return GiveHandle(TheHives(), found, parent, names, key);
}

int32_t Open(HKEY parent, char const *name, Split split, Wish wish, HKEY *key) {
  return WithinMemory([&] { return FindKey(parent, name, split, wish, key); });
}

struct Counted {
  uint32_t count = 0;
  uint32_t longest = 0;
};

int32_t Count(HKEY key, NameLists::Kind kind, Counted *out) {
  return WithKey(key, Purpose::reading, ERROR_SUCCESS, [&](Hive &hive, OpenKey const &open) {
    return hive.CountNames(open.key, kind, &out->count, &out->longest);
  });
}

Hive *HiveOf(HKEY root) {
  return !Predefined(root) || root == HKEY_CLASSES_ROOT
             ? nullptr
             : &TheHives().At(root == HKEY_CURRENT_USER ? 0 : 1);
}

}  // namespace

int32_t NameWalk::NamesAt(HKEY key, uint32_t index) {
  return WithKey(key, Purpose::reading, ERROR_NO_MORE_ITEMS, [&](Hive &hive, OpenKey const &open) {
    hive_ = &hive;
    return hive.NamesAt(open.key, kind_, index, &held_);
  });
}

int32_t OpenOneKey(HKEY parent, char const *name, uint32_t access, HKEY *key) {
  return Open(parent, name, Split::none, WishOf(access), key);
}

void ReportHiveFailure(HKEY root) {
  ClearFailure();
  if (Hive *hive = HiveOf(root); hive != nullptr) hive->ReportFailure();
}

HiveStatus InspectHive(HKEY root) {
  ClearFailure();
  Hive *const hive = HiveOf(root);
  return hive == nullptr ? HiveStatus{} : hive->Inspect();
}

bool SameKey(HKEY a, HKEY b) {
  Hives &hives = TheHives();
  OpenKey first{};
  OpenKey second{};
  return Resolve(hives, a, &first) == ERROR_SUCCESS &&
         Resolve(hives, b, &second) == ERROR_SUCCESS && first.hive == second.hive &&
         first.key.id == second.key.id && first.key.id != kNoKey;
}

int64_t KeyNumber(HKEY key) {
  OpenKey open{};
  return Resolve(TheHives(), key, &open) == ERROR_SUCCESS ? open.key.id : kNoKey;
}

HiveTransaction::HiveTransaction(HKEY root) : root_(root) {}

HiveTransaction::~HiveTransaction() {
  if (open_) HiveOf(root_)->Rollback(serial_);
}

int32_t HiveTransaction::Begin() {
  Hive *hive = HiveOf(root_);
  if (hive == nullptr || open_) return ERROR_INVALID_HANDLE;
  ClearFailure();
  FollowEnvironment(TheHives());
  int32_t const result = WithinMemory([&] { return hive->Begin(&serial_); });
  open_ = result == ERROR_SUCCESS;
  return result;
}

int32_t HiveTransaction::Commit() {
  if (!open_) return ERROR_INVALID_HANDLE;
  open_ = false;
  ClearFailure();
  return HiveOf(root_)->Commit(serial_);
}

}  // namespace zolt

using zolt::Hive;
using zolt::OpenKey;
using zolt::Purpose;
using zolt::TheHives;
using zolt::ValueCache;

int32_t RegCreateKeyExA(HKEY parent, char const *name, uint32_t, char *, uint32_t, uint32_t access,
                        void *, HKEY *key, uint32_t *disposition) {
  if (parent == HKEY_CLASSES_ROOT) {
    return zolt::InUserClasses([&](HKEY classes) {
      return RegCreateKeyExA(classes, name, 0, nullptr, 0, access, nullptr, key, disposition);
    });
  }
  bool made = false;
  int32_t const result = zolt::Create(parent, name, access, key, &made);
  if (result == ERROR_SUCCESS && disposition != nullptr) *disposition = made ? 1 : 2;
  return result;
}

int32_t RegCreateKeyA(HKEY parent, char const *name, HKEY *key) {
  if (parent == HKEY_CLASSES_ROOT) {
    return zolt::InUserClasses([&](HKEY classes) { return RegCreateKeyA(classes, name, key); });
  }
  bool made = false;
  int32_t const result = zolt::Create(parent, name, KEY_READ | KEY_WRITE, key, &made);
  if (result != ERROR_ACCESS_DENIED) return result;
  return zolt::Create(parent, name, KEY_READ, key, &made);
}

int32_t RegOpenKeyA(HKEY parent, char const *name, HKEY *key) {
  if (parent == HKEY_CLASSES_ROOT) return zolt::OpenClass(name, KEY_READ, key);
  return zolt::Open(parent, name, zolt::Split::path, zolt::Wish::what_can_be, key);
}

int32_t RegOpenKeyExA(HKEY parent, char const *name, uint32_t, uint32_t access, HKEY *key) {
  if (parent == HKEY_CLASSES_ROOT) return zolt::OpenClass(name, access, key);
  return zolt::Open(parent, name, zolt::Split::path, zolt::WishOf(access), key);
}

int32_t RegCloseKey(HKEY key) {
  if (zolt::Predefined(key)) return ERROR_SUCCESS;
  return TheHives().handles.Remove(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

int32_t RegQueryValueExA(HKEY key, char const *name, uint32_t *, uint32_t *type, uint8_t *data,
                         uint32_t *size) {
  zolt::ClearFailure();
  if (data != nullptr && size == nullptr) return ERROR_INVALID_PARAMETER;
  uint32_t foundType = 0;
  uint32_t foundSize = 0;
  int32_t const result = zolt::WithKey(
      key, Purpose::reading, ERROR_FILE_NOT_FOUND, [&](Hive &hive, OpenKey const &open) {
        foundType = ValueCache::kAnyType;
        foundSize = size == nullptr ? 0 : *size;
        return hive.ReadValue(open.key, zolt::NameOf(name), &foundType, data, &foundSize);
      });
  if (result == ERROR_SUCCESS || result == ERROR_MORE_DATA) {
    if (type != nullptr) *type = foundType;
    if (size != nullptr) *size = foundSize;
  }
  return result;
}

int32_t ZOLTQueryText(HKEY key, char const *name, char *data, uint32_t *size) {
  if (data == nullptr || size == nullptr) {
    zolt::ClearFailure();
    return ERROR_INVALID_PARAMETER;
  }
  return zolt::WithKey(key, Purpose::reading, ERROR_FILE_NOT_FOUND,
                       [&](Hive &hive, OpenKey const &open) {
                         uint32_t type = ValueCache::kText;
                         return hive.ReadValue(open.key, zolt::NameOf(name), &type, data, size);
                       });
}

int32_t RegSetValueExA(HKEY key, char const *name, uint32_t, uint32_t type, uint8_t const *data,
                       uint32_t size) {
  std::string_view const text = zolt::NameOf(name);
  zolt::ClearFailure();
  if (text.size() > zolt::kLongestValueName || (data == nullptr && size != 0)) {
    zolt::SetFailure(zolt::Failure::io, text);
    return ERROR_INVALID_PARAMETER;
  }
  return zolt::WithKey(key, Purpose::writing, 0, [&](Hive &hive, OpenKey const &open) {
    return hive.WriteValue(open.key, text, type, data, size);
  });
}

int32_t RegDeleteValueA(HKEY key, char const *name) {
  return zolt::WithKey(key, Purpose::writing, 0, [&](Hive &hive, OpenKey const &open) {
    return hive.DeleteValue(open.key, zolt::NameOf(name));
  });
}

int32_t RegDeleteKeyA(HKEY key, char const *name) {
  if (key == HKEY_CLASSES_ROOT) {
    HKEY classes = 0;
    int32_t result = zolt::OpenClass("", KEY_WRITE, &classes);
    if (result != ERROR_SUCCESS) return result;
    result = RegDeleteKeyA(classes, name);
    RegCloseKey(classes);
    return result;
  }
  zolt::ClearFailure();
  if (name == nullptr || *name == '\0') return ERROR_INVALID_PARAMETER;
  return zolt::WithKey(key, Purpose::writing, 0, [&](Hive &hive, OpenKey const &open) {
    return hive.DeleteKey(open.key, name);
  });
}

int32_t RegEnumValueA(HKEY key, uint32_t index, char *name, uint32_t *nameLength, uint32_t *,
                      uint32_t *type, uint8_t *data, uint32_t *size) {
  int32_t const result =
      zolt::NameWalk(zolt::NameLists::Kind::values).At(key, index, name, nameLength);
  if (result != ERROR_SUCCESS || (type == nullptr && data == nullptr && size == nullptr)) {
    return result;
  }
  return RegQueryValueExA(key, name, nullptr, type, data, size);
}

int32_t RegEnumKeyExA(HKEY key, uint32_t index, char *name, uint32_t *nameLength, uint32_t *,
                      char *, uint32_t *, void *) {
  return zolt::NameWalk(zolt::NameLists::Kind::keys).At(key, index, name, nameLength);
}

int32_t RegQueryInfoKeyA(HKEY key, char *, uint32_t *, uint32_t *, uint32_t *subkeys,
                         uint32_t *longestSubkey, uint32_t *, uint32_t *values,
                         uint32_t *longestValue, uint32_t *, uint32_t *, void *) {
  zolt::Counted keys;
  zolt::Counted others;
  int32_t result = zolt::Count(key, zolt::NameLists::Kind::keys, &keys);
  if (result == ERROR_SUCCESS) result = zolt::Count(key, zolt::NameLists::Kind::values, &others);
  if (result != ERROR_SUCCESS) return result;
  if (subkeys != nullptr) *subkeys = keys.count;
  if (longestSubkey != nullptr) *longestSubkey = keys.longest;
  if (values != nullptr) *values = others.count;
  if (longestValue != nullptr) *longestValue = others.longest;
  return ERROR_SUCCESS;
}
