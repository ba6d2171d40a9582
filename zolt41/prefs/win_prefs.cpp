#include "zolt41/prefs/win_prefs.h"

#include <cstdio>
#include <new>

#include "zolt41/foundation/a_string.h"
#include "zolt41/notify/change_table.h"
#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/system/codepage.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/string_table.h"
#include "zolt41/prefs/empty_key.h"
#include "zolt41/prefs/enum_prefs.h"
#include "zolt41/prefs/list_enum_prefs.h"
#include "zolt41/prefs/section_list.h"
#include "zolt41/prefs/text_argument.h"
#include "zolt41/prefs/tree_path.h"

namespace {

constexpr uint32_t kTextSize = 256;
constexpr uint32_t kOldTextSize = 1024;

constinit int32_t liveStores = 0;

HKEY KeyIn(zolt::LevelTree const &tree, Section const *section) {
  return section == nullptr ? 0 : section->*tree.key;
}

}  // namespace

WinPrefs::WinPrefs(PrefLevel level, char const *path) : TYPrefs(level) {
  if (zolt::HasTree(level)) OpenTop(path);
  ++liveStores;
}

void WinPrefs::OpenTop(char const *path) {
  zolt::LevelTree const &tree = zolt::TreeOf(Level());
  char defaultPath[260] = "";
  if (path == nullptr) {
    LoadStringA(zolt::LibraryInstance(), tree.defaultPath, defaultPath, sizeof defaultPath);
    path = defaultPath;
  }
  key_ = zolt::OpenTreePath(tree.root, path);
  if (zolt::sectionList.Root(Level()) != 0) return;
  try {
    zolt::sectionList.SetRoot(Level(), zolt::OpenTreePath(tree.root, path));
  } catch (...) {
    if (key_ != 0) RegCloseKey(key_);
    throw;
  }
}

WinPrefs::~WinPrefs() {
  if (--liveStores <= 0) zolt::sectionList.Clear();
  if (key_ != 0) RegCloseKey(key_);
}

CEnumPrefs *WinPrefs::GetEnum(int32_t parent, int32_t id, char const *name) {
  return new (std::nothrow) CEnumPrefs(id, name, parent, this);
}

CListEnumPrefs *WinPrefs::GetListEnum(int32_t parent, int32_t id, char const *name,
                                      char const *listName) {
  return new (std::nothrow) CListEnumPrefs(id, name, parent, this, listName);
}

HKEY WinPrefs::ReportedKey(HKEY key) const {
  if (key == 0) zolt::ReportHiveFailure(zolt::TreeOf(Level()).root);
  return key;
}

// For a write: into a section that nobody registered it is lost, which a reader would call absent.
HKEY WinPrefs::KeyToWrite(uint32_t section) const {
  HKEY const key = KeyOf(section);
  if (key == 0 && ZOLTLastFailure(nullptr, 0) == 0) {
    char subject[32];
    std::snprintf(subject, sizeof subject, "section 0x%08X", section);
    zolt::SetFailure(zolt::Failure::io, subject);
  }
  return key;
}

HKEY WinPrefs::KeyOf(uint32_t section) const {
  if (section == 0) return ReportedKey(key_);
  Section const *const record = zolt::sectionList.Find(static_cast<int32_t>(section));
  return ReportedKey(KeyIn(zolt::TreeOf(Level()), record));
}

HKEY WinPrefs::SectionKey(int32_t id, uintptr_t sectionRecord) {
  if (id == 0) return key_;
  return KeyIn(zolt::TreeOf(Level()), zolt::sectionList.Find(id, sectionRecord));
}

int32_t WinPrefs::GetStr(uint32_t section, char const *name, char *buffer) {
  HKEY const key = KeyOf(section);
  if (key == 0 || buffer == nullptr) return 0;
  uint32_t size = kTextSize;
  return ZOLTQueryText(key, name, buffer, &size) == ERROR_SUCCESS;
}

void WinPrefs::SetStr(uint32_t section, char const *name, char const *value) {
  HKEY const key = KeyToWrite(section);
  if (key == 0) return;
  char const *const text = zolt::TextOrEmpty(value);
  char old[kOldTextSize] = "";
  GetStr(section, name, old);
  if (lstrcmpA(old, text) == 0) return;
  RegSetValueExA(key, name, 0, REG_SZ, reinterpret_cast<uint8_t const *>(text),
                 static_cast<uint32_t>(AZStrLen(text)) + 1);
  zolt::AppendChange(name, old, text);
}

int32_t WinPrefs::GetFree(uint32_t section, char const *name, uint32_t /*type*/, uint8_t *data,
                          uint32_t &size) {
  HKEY const key = KeyOf(section);
  if (key == 0) return 0;
  uint32_t stored = 0;
  if (RegQueryValueExA(key, name, nullptr, nullptr, nullptr, &stored) != ERROR_SUCCESS) return 0;
  size = stored;
  return data == nullptr ||
         RegQueryValueExA(key, name, nullptr, nullptr, data, &stored) == ERROR_SUCCESS;
}

void WinPrefs::SetFree(uint32_t section, char const *name, uint32_t type, uint8_t const *data,
                       uint32_t size) {
  HKEY const key = KeyToWrite(section);
  if (key == 0) return;
  RegSetValueExA(key, name, 0, type, data, data == nullptr ? 0 : size);
  zolt::AppendChange(name, "", "");
}

void WinPrefs::Remove(uint32_t section, char const *name) {
  HKEY const key = KeyToWrite(section);
  if (key != 0) RegDeleteKeyA(key, zolt::TextOrEmpty(name));
}

void WinPrefs::RemoveValue(uint32_t section, char const *name) {
  HKEY const key = KeyToWrite(section);
  if (key == 0) return;
  RegDeleteValueA(key, name);
  zolt::AppendChange(name, "", "");
}

int32_t WinPrefs::Exists(uint32_t section, char const *name) {
  HKEY const key = KeyOf(section);
  if (key == 0) return 0;
  return RegQueryValueExA(key, name, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
}

void WinPrefs::ClearSection(uint32_t section, uintptr_t sectionRecord) {
  HKEY const key = ReportedKey(SectionKey(static_cast<int32_t>(section), sectionRecord));
  if (key != 0) zolt::EmptyKey(key);
}
