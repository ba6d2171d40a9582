#include "zolt41/prefs/enum_prefs.h"

#include <cstring>
#include <new>

#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/registry/name_walk.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/prefs/level_tree.h"
#include "zolt41/prefs/pref_sections.h"
#include "zolt41/prefs/section_list.h"
#include "zolt41/prefs/text_argument.h"
#include "zolt41/prefs/win_prefs.h"

namespace {

constexpr uint32_t kNoValue = 10000;

// Ids for walks without one. Names and letters give no such numbers, or hardly ever.
constexpr int32_t kFirstOwnId = 0x01000001;
constinit int32_t lastOwnId = kFirstOwnId - 1;

int32_t OwnId() {
  do {
    ++lastOwnId;
  } while (zolt::sectionList.Find(lastOwnId) != nullptr);
  return lastOwnId;
}

}  // namespace

CEnumPrefs::CEnumPrefs(int32_t id, char const *name, int32_t parent, WinPrefs *prefs)
    : id_(id),
      prefs_(prefs),
      values_(new (std::nothrow) zolt::NameWalk(zolt::NameLists::Kind::values)),
      subkeys_(new (std::nothrow) zolt::NameWalk(zolt::NameLists::Kind::keys)) {
  if (parent != 0) {
    RegisterPrefSection(id, parent, name);
  } else if (id != 0) {
    RegisterPrefSection(id, name);
  }
  key_ = prefs->SectionKey(id, 0);
}

CEnumPrefs::~CEnumPrefs() {
  if (id_ != 0) UnRegisterPrefSection(id_, 0);
}

void CEnumPrefs::Release() {
  // Read back from memory, since a compiler may hold that `this` is never null.
  CEnumPrefs *volatile self = this;
  delete self;
}

void CEnumPrefs::Reset() {
  index_ = 0;
  valueCount_ = 0;
  name_[0] = '\0';
}

bool CEnumPrefs::Opened() const {
  if (key_ == 0) zolt::ReportHiveFailure(zolt::TreeOf(prefs_->Level()).root);
  return key_ != 0;
}

int32_t CEnumPrefs::Next() {
  if (!Opened() || values_ == nullptr || subkeys_ == nullptr) return -1;
  uint32_t length = sizeof name_;
  if (values_->At(key_, index_, name_, &length) == ERROR_SUCCESS) {
    ++valueCount_;
  } else if (subkeys_->At(key_, index_ - valueCount_, name_, &length) != ERROR_SUCCESS) {
    name_[0] = '\0';
    return -1;
  }
  return static_cast<int32_t>(++index_);
}

char const *CEnumPrefs::ValueName(uint32_t index) {
  std::string const *name = nullptr;
  if (!Opened() || values_ == nullptr) return nullptr;
  return values_->At(key_, index, &name) == ERROR_SUCCESS ? name->c_str() : nullptr;
}

uint32_t CEnumPrefs::TypeOf(char const *value) const {
  uint32_t type = 0;
  if (!Opened()) return kNoValue;
  int32_t const result = RegQueryValueExA(key_, value, nullptr, &type, nullptr, nullptr);
  return result == ERROR_SUCCESS ? type : kNoValue;
}

uint32_t CEnumPrefs::GetType() const {
  return TypeOf(name_);
}

int32_t CEnumPrefs::ReadEnum(int32_t id, CEnumPrefs **sub) {
  if (sub == nullptr) return 0;
  *sub = prefs_->GetEnum(id_, id, name_);
  return *sub != nullptr;
}

int32_t CEnumPrefs::ReadEnum(CEnumPrefs **sub) {
  return ReadEnum(OwnId(), sub);
}

int32_t CEnumPrefs::CreateKey(char const *name) {
  HKEY made = 0;
  if (!Opened()) return 0;
  char const *const text = zolt::TextOrEmpty(name);
  // A tree that may not be written gives no new key, but one that is there is found.
  if (RegCreateKeyExA(key_, text, 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr, &made, nullptr) !=
      ERROR_SUCCESS) {
    zolt::FirstFailure failure;
    failure.Note();
    if (RegOpenKeyA(key_, text, &made) != ERROR_SUCCESS) return 0;
  }
  RegCloseKey(made);
  return 1;
}

int32_t CEnumPrefs::ReadStr(char *buffer, char const *defaultValue) {
  return ReadStr(name_, buffer, defaultValue);
}

int32_t CEnumPrefs::ReadStr(char const *name, char *buffer, char const *defaultValue) {
  return prefs_->ReadStr(static_cast<uint32_t>(id_), name, buffer, defaultValue, 0);
}

int32_t CEnumPrefs::ReadNum(int32_t *value, int32_t defaultValue) {
  return ReadNum(name_, value, defaultValue);
}

int32_t CEnumPrefs::ReadNum(char const *name, int32_t *value, int32_t defaultValue) {
  return prefs_->ReadNum(static_cast<uint32_t>(id_), name, value, defaultValue, 0);
}

int32_t CEnumPrefs::ReadBool(int32_t *value, int32_t defaultValue) {
  return ReadBool(name_, value, defaultValue);
}

int32_t CEnumPrefs::ReadBool(char const *name, int32_t *value, int32_t defaultValue) {
  return prefs_->ReadBool(static_cast<uint32_t>(id_), name, value, defaultValue, 0);
}

int32_t CEnumPrefs::ReadFree(uint32_t type, uint8_t *data, uint32_t size) {
  return ReadFree(name_, type, data, size);
}

int32_t CEnumPrefs::ReadFree(char const *name, uint32_t type, uint8_t *data, uint32_t size) {
  return prefs_->ReadFree(static_cast<uint32_t>(id_), name, type, data, size, 0);
}

int32_t CEnumPrefs::WriteStr(char const *value) {
  return WriteStr(name_, value);
}

int32_t CEnumPrefs::WriteStr(char const *name, char const *value) {
  return prefs_->WriteStr(static_cast<uint32_t>(id_), name, value, PrefLevelThis);
}

int32_t CEnumPrefs::WriteNum(int32_t value) {
  return WriteNum(name_, value);
}

int32_t CEnumPrefs::WriteNum(char const *name, int32_t value) {
  return prefs_->WriteNum(static_cast<uint32_t>(id_), name, value, PrefLevelThis);
}

int32_t CEnumPrefs::WriteBool(int32_t value) {
  return WriteBool(name_, value);
}

int32_t CEnumPrefs::WriteBool(char const *name, int32_t value) {
  return prefs_->WriteBool(static_cast<uint32_t>(id_), name, value, PrefLevelThis);
}

int32_t CEnumPrefs::WriteFree(uint32_t type, uint8_t const *data, uint32_t size) {
  return WriteFree(name_, type, data, size);
}

int32_t CEnumPrefs::WriteFree(char const *name, uint32_t type, uint8_t const *data, uint32_t size) {
  return prefs_->WriteFree(static_cast<uint32_t>(id_), name, type, data, size, PrefLevelThis);
}

void CEnumPrefs::RemoveValue() {
  RemoveValue(name_);
}

void CEnumPrefs::RemoveValue(char const *name) {
  prefs_->RemoveValue(static_cast<uint32_t>(id_), name);
}
