#include "zolt41/platform/registry/registry.h"

#include <cstring>
#include <string>
#include <string_view>

#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/registry/hives.h"

namespace zolt {
namespace {

constexpr size_t kLongestKeyName = 255;
constexpr size_t kLongestValueName = 16383;
constexpr uint32_t kWriteBits = KEY_WRITE & ~KEY_READ;

bool Predefined(HKEY key) {
  return key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE;
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

// A key that was opened before it existed: looks whether it exists by now. Costs nothing as long as
// the tree of keys has not changed.
void SeekKey(Hives &hives, HKEY handle, OpenKey *open) {
  Hive &hive = hives.At(open->hive);
  Stamp const stamp = hive.KeysStamp();
  if (hives.handles.Tried(handle, stamp)) return;
  int64_t key = 0;
  std::string path;
  if (!hives.handles.Place(handle, &key, &path)) return;
  for (size_t at = 0; at < path.size();) {
    std::string const name(&path[at]);
    at += name.size() + 1;
    if (hive.FindKey(key, name, &key) != ERROR_SUCCESS) {
      hives.handles.SetTried(handle, stamp);
      return;
    }
  }
  hives.handles.SetKey(handle, key);
  open->key = key;
}

// What a handle stands for. ERROR_INVALID_HANDLE if it is not open.
int32_t Resolve(Hives &hives, HKEY handle, OpenKey *open) {
  ClearFailure();
  if (Predefined(handle)) {
    *open = {handle == HKEY_CURRENT_USER ? 0u : 1u, KEY_READ | KEY_WRITE, 0};
    return ERROR_SUCCESS;
  }
  if (!hives.handles.Find(handle, open)) return ERROR_INVALID_HANDLE;
  if (open->key == kNoKey) SeekKey(hives, handle, open);
  return ERROR_SUCCESS;
}

int32_t GiveHandle(Hives &hives, OpenKey const &open, int64_t ancestor, std::string path,
                   HKEY *key) {
  *key = hives.handles.Add(open, ancestor, std::move(path));
  return *key == 0 ? ERROR_NOT_ENOUGH_MEMORY : ERROR_SUCCESS;
}

// The handle on a key that is not there, for reading.
int32_t GiveEmpty(Hives &hives, OpenKey const &parent, HKEY parentHandle, std::string_view name,
                  HKEY *key) {
  int64_t ancestor = parent.key;
  std::string path;
  if (parent.key == kNoKey && !hives.handles.Place(parentHandle, &ancestor, &path)) {
    return ERROR_INVALID_HANDLE;
  }
  path.append(name);
  path.push_back('\0');
  ClearFailure();
  return GiveHandle(hives, {parent.hive, KEY_READ, kNoKey}, ancestor, std::move(path), key);
}

int32_t Create(HKEY parentHandle, char const *givenName, uint32_t access, HKEY *key, bool *made) {
  Hives &hives = TheHives();
  std::string_view const name = NameOf(givenName);
  *made = false;
  if (key == nullptr || name.size() > kLongestKeyName) return ERROR_INVALID_PARAMETER;
  *key = 0;
  if (Predefined(parentHandle)) FollowEnvironment(hives);
  OpenKey parent{};
  if (int32_t const result = Resolve(hives, parentHandle, &parent); result != 0) return result;
  Hive &hive = hives.At(parent.hive);
  bool const write = (access & kWriteBits) != 0;
  OpenKey open{parent.hive, write ? KEY_READ | KEY_WRITE : KEY_READ, parent.key};
  int32_t result = parent.key == kNoKey ? ERROR_FILE_NOT_FOUND : ERROR_SUCCESS;
  if (result == ERROR_SUCCESS && !name.empty()) result = hive.FindKey(parent.key, name, &open.key);
  if (result == ERROR_SUCCESS && write) result = hive.CheckWritable();
  if (result == ERROR_FILE_NOT_FOUND) {
    result = ERROR_ACCESS_DENIED;
    if (parent.key != kNoKey) {
      *made = true;
      result = hive.CreateKey(parent.key, name, &open.key, made);
    } else {
      hive.CheckWritable();
    }
    bool const refused = result == ERROR_ACCESS_DENIED;
    if (refused && !write) return GiveEmpty(hives, parent, parentHandle, name, key);
  }
  return result == ERROR_SUCCESS ? GiveHandle(hives, open, 0, "", key) : result;
}

int32_t FindPath(Hive &hive, int64_t parent, std::string_view path, int64_t *key) {
  int32_t result = hive.FindKey(parent, path, key);
  if (result != ERROR_FILE_NOT_FOUND || path.find('\\') == std::string_view::npos) return result;
  while (!path.empty()) {
    size_t const end = std::min(path.find('\\'), path.size());
    result = hive.FindKey(parent, path.substr(0, end), key);
    if (result != ERROR_SUCCESS) return result;
    parent = *key;
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return result;
}

// For the functions that change something in an open key.
int32_t ResolveForWriting(Hives &hives, HKEY handle, OpenKey *open) {
  if (int32_t const result = Resolve(hives, handle, open); result != ERROR_SUCCESS) return result;
  if ((open->access & kWriteBits) != 0 && open->key != kNoKey) return ERROR_SUCCESS;
  hives.At(open->hive).CheckWritable();
  return ERROR_ACCESS_DENIED;
}

int32_t CopyName(std::string const &found, char *name, uint32_t *length) {
  if (name == nullptr || length == nullptr) return ERROR_INVALID_PARAMETER;
  if (found.size() + 1 > *length) return ERROR_MORE_DATA;
  std::memcpy(name, found.c_str(), found.size() + 1);
  *length = static_cast<uint32_t>(found.size());
  return ERROR_SUCCESS;
}

int32_t NameAt(HKEY key, NameLists::Kind kind, uint32_t index, std::string *name, OpenKey *open) {
  Hives &hives = TheHives();
  if (int32_t const result = Resolve(hives, key, open); result != ERROR_SUCCESS) return result;
  if (open->key == kNoKey) return ERROR_NO_MORE_ITEMS;
  return hives.At(open->hive).NameAt(open->key, kind, index, name);
}

Hive *HiveOf(HKEY root) {
  return !Predefined(root) ? nullptr : &TheHives().At(root == HKEY_CURRENT_USER ? 0 : 1);
}

}  // namespace

void ReportHiveFailure(HKEY root) {
  ClearFailure();
  if (Hive *hive = HiveOf(root); hive != nullptr) hive->ReportFailure();
}

bool SameKey(HKEY a, HKEY b) {
  Hives &hives = TheHives();
  OpenKey first{};
  OpenKey second{};
  return Resolve(hives, a, &first) == 0 && Resolve(hives, b, &second) == 0 &&
         first.hive == second.hive && first.key == second.key && first.key != kNoKey;
}

HiveTransaction::HiveTransaction(HKEY root) : root_(root) {}

HiveTransaction::~HiveTransaction() {
  if (open_) HiveOf(root_)->Rollback();
}

int32_t HiveTransaction::Begin() {
  Hive *hive = HiveOf(root_);
  if (hive == nullptr || open_) return ERROR_INVALID_HANDLE;
  ClearFailure();
  FollowEnvironment(TheHives());
  int32_t const result = hive->Begin();
  open_ = result == ERROR_SUCCESS;
  return result;
}

int32_t HiveTransaction::Commit() {
  if (!open_) return ERROR_INVALID_HANDLE;
  open_ = false;
  ClearFailure();
  return HiveOf(root_)->Commit();
}

}  // namespace zolt

using zolt::Hives;
using zolt::OpenKey;
using zolt::TheHives;
using zolt::ValueCache;

int32_t RegCreateKeyExA(HKEY parent, char const *name, uint32_t, char *, uint32_t, uint32_t access,
                        void *, HKEY *key, uint32_t *disposition) {
  bool made = false;
  int32_t const result = zolt::Create(parent, name, access, key, &made);
  if (result == ERROR_SUCCESS && disposition != nullptr) *disposition = made ? 1 : 2;
  return result;
}

int32_t RegCreateKeyA(HKEY parent, char const *name, HKEY *key) {
  bool made = false;
  int32_t const result = zolt::Create(parent, name, KEY_READ | KEY_WRITE, key, &made);
  if (result != ERROR_ACCESS_DENIED) return result;
  return zolt::Create(parent, name, KEY_READ, key, &made);
}

int32_t RegOpenKeyA(HKEY parent, char const *name, HKEY *key) {
  Hives &hives = TheHives();
  if (key == nullptr) return ERROR_INVALID_PARAMETER;
  *key = 0;
  if (zolt::Predefined(parent)) zolt::FollowEnvironment(hives);
  OpenKey open{};
  if (int32_t const result = zolt::Resolve(hives, parent, &open); result != 0) return result;
  if (open.key == zolt::kNoKey) return ERROR_FILE_NOT_FOUND;
  zolt::Hive &hive = hives.At(open.hive);
  std::string_view const path = zolt::NameOf(name);
  if (!path.empty()) {
    if (int32_t const result = zolt::FindPath(hive, open.key, path, &open.key); result != 0) {
      return result;
    }
  }
  open.access = hive.CheckWritable() == ERROR_SUCCESS ? KEY_READ | KEY_WRITE : KEY_READ;
  zolt::ClearFailure();
  return zolt::GiveHandle(hives, open, 0, "", key);
}

int32_t RegCloseKey(HKEY key) {
  if (zolt::Predefined(key)) return ERROR_SUCCESS;
  return TheHives().handles.Remove(key) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
}

int32_t RegQueryValueExA(HKEY key, char const *name, uint32_t *, uint32_t *type, uint8_t *data,
                         uint32_t *size) {
  Hives &hives = TheHives();
  OpenKey open{};
  if (data != nullptr && size == nullptr) return ERROR_INVALID_PARAMETER;
  if (int32_t const result = zolt::Resolve(hives, key, &open); result != 0) return result;
  if (open.key == zolt::kNoKey) return ERROR_FILE_NOT_FOUND;
  uint32_t foundType = ValueCache::kAnyType;
  uint32_t foundSize = size == nullptr ? 0 : *size;
  int32_t const result =
      hives.At(open.hive).ReadValue(open.key, zolt::NameOf(name), &foundType, data, &foundSize);
  if (result == ERROR_SUCCESS || result == ERROR_MORE_DATA) {
    if (type != nullptr) *type = foundType;
    if (size != nullptr) *size = foundSize;
  }
  return result;
}

int32_t ZOLTQueryText(HKEY key, char const *name, char *data, uint32_t *size) {
  Hives &hives = TheHives();
  OpenKey open{};
  if (data == nullptr || size == nullptr) return ERROR_INVALID_PARAMETER;
  if (int32_t const result = zolt::Resolve(hives, key, &open); result != 0) return result;
  if (open.key == zolt::kNoKey) return ERROR_FILE_NOT_FOUND;
  uint32_t type = ValueCache::kText;
  return hives.At(open.hive).ReadValue(open.key, zolt::NameOf(name), &type, data, size);
}

int32_t RegSetValueExA(HKEY key, char const *name, uint32_t, uint32_t type, uint8_t const *data,
                       uint32_t size) {
  Hives &hives = TheHives();
  OpenKey open{};
  std::string_view const text = zolt::NameOf(name);
  if (text.size() > zolt::kLongestValueName || (data == nullptr && size != 0)) {
    return ERROR_INVALID_PARAMETER;
  }
  if (int32_t const result = zolt::ResolveForWriting(hives, key, &open); result != 0) return result;
  return hives.At(open.hive).WriteValue(open.key, text, type, data, size);
}

int32_t RegDeleteValueA(HKEY key, char const *name) {
  Hives &hives = TheHives();
  OpenKey open{};
  if (int32_t const result = zolt::ResolveForWriting(hives, key, &open); result != 0) return result;
  return hives.At(open.hive).DeleteValue(open.key, zolt::NameOf(name));
}

int32_t RegDeleteKeyA(HKEY key, char const *name) {
  Hives &hives = TheHives();
  OpenKey open{};
  if (name == nullptr || *name == '\0') return ERROR_INVALID_PARAMETER;
  if (int32_t const result = zolt::ResolveForWriting(hives, key, &open); result != 0) return result;
  return hives.At(open.hive).DeleteKey(open.key, name);
}

int32_t RegEnumValueA(HKEY key, uint32_t index, char *name, uint32_t *nameLength, uint32_t *,
                      uint32_t *type, uint8_t *data, uint32_t *size) {
  std::string found;
  OpenKey open{};
  int32_t result = zolt::NameAt(key, zolt::NameLists::Kind::values, index, &found, &open);
  if (result == ERROR_SUCCESS) result = zolt::CopyName(found, name, nameLength);
  if (result != ERROR_SUCCESS || (type == nullptr && data == nullptr && size == nullptr))
    return result;
  return RegQueryValueExA(key, found.c_str(), nullptr, type, data, size);
}

int32_t RegEnumKeyExA(HKEY key, uint32_t index, char *name, uint32_t *nameLength, uint32_t *,
                      char *, uint32_t *, void *) {
  std::string found;
  OpenKey open{};
  int32_t const result = zolt::NameAt(key, zolt::NameLists::Kind::keys, index, &found, &open);
  return result == ERROR_SUCCESS ? zolt::CopyName(found, name, nameLength) : result;
}
