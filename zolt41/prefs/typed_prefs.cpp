#include "zolt41/prefs/typed_prefs.h"

#include <cstring>

#include "zolt41/foundation/az_compare.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/prefs/number_text.h"
#include "zolt41/prefs/stores.h"
#include "zolt41/prefs/text_argument.h"
#include "zolt41/prefs/text_limit.h"

namespace {

constexpr uint32_t kTextSize = 256;

// Asks the stores of a chain in the order of a read until `get` gives 1 for one.
template <typename Get>
int32_t ReadChain(TYPrefs *own, int32_t parentFirst, Get get) {
  // Why a store could not be asked is told even where a later one answers.
  zolt::FirstFailure failure;
  TYPrefs *const first = parentFirst == 0 ? own : own->GetParent();
  for (TYPrefs *store = first; store != nullptr; store = store->GetParent()) {
    if (get(store) != 0) return 1;
    failure.Note();
  }
  if (parentFirst == 0) return 0;
  bool const found = get(own) != 0;
  failure.Note();
  return found;
}

}  // namespace

TYPrefs::TYPrefs() : TYPrefs(PrefLevelCard) {}

TYPrefs::TYPrefs(PrefLevel level) : level_(level) {}

TYPrefs::~TYPrefs() = default;

CEnumPrefs *TYPrefs::GetEnum(int32_t, int32_t, char const *) {
  return nullptr;
}

CListEnumPrefs *TYPrefs::GetListEnum(int32_t, int32_t, char const *, char const *) {
  return nullptr;
}

int32_t TYPrefs::GetStr(uint32_t, char const *, char *) {
  return 0;
}

void TYPrefs::SetStr(uint32_t, char const *, char const *) {}

int32_t TYPrefs::GetFree(uint32_t, char const *, uint32_t, uint8_t *, uint32_t &) {
  return 0;
}

void TYPrefs::SetFree(uint32_t, char const *, uint32_t, uint8_t const *, uint32_t) {}

void TYPrefs::Remove(uint32_t, char const *) {}

void TYPrefs::RemoveValue(uint32_t, char const *) {}

int32_t TYPrefs::Exists(uint32_t, char const *) {
  return 0;
}

void TYPrefs::Save() {}

void TYPrefs::Load() {}

void TYPrefs::ClearSection(uint32_t, uintptr_t) {}

int32_t TYPrefs::SectionID(char const *, uintptr_t) {
  return 0;
}

int32_t TYPrefs::IsReadable(uint32_t) {
  return 0;
}

int32_t TYPrefs::IsWritable(uint32_t) {
  return 0;
}

void TYPrefs::SetParent(TYPrefs *) {}

TYPrefs *TYPrefs::Parent() const {
  switch (level_) {
    case PrefLevelSharedUser:
      return SharedSystemPrefs();
    case PrefLevelUser:
      return SystemPrefs();
    case PrefLevelChild:
    case PrefLevelCard:
      return UserPrefs();
    default:
      return nullptr;
  }
}

int32_t TYPrefs::ReadStr(uint32_t section, char const *name, char *buffer, char const *defaultValue,
                         int32_t parentFirst) {
  if (buffer == nullptr) return 0;
  zolt::LimitedText const limited(kTextSize - 1);
  auto const get = [&](TYPrefs *store) { return store->GetStr(section, name, buffer); };
  if (ReadChain(this, parentFirst, get) != 0) return 1;
  char const *const text = zolt::TextOrEmpty(defaultValue);
  std::memmove(buffer, text, std::strlen(text) + 1);
  return 0;
}

int32_t TYPrefs::ReadNum(uint32_t section, char const *name, int32_t *value, int32_t defaultValue,
                         int32_t parentFirst) {
  if (value == nullptr) return 0;
  *value = defaultValue;
  char text[kTextSize];
  if (ReadStr(section, name, text, "", parentFirst) == 0) return 0;
  zolt::ScanNumber(text, value);
  return 1;
}

int32_t TYPrefs::ReadBool(uint32_t section, char const *name, int32_t *value, int32_t defaultValue,
                          int32_t parentFirst) {
  if (value == nullptr) return 0;
  *value = defaultValue;
  char text[kTextSize];
  if (ReadStr(section, name, text, "", parentFirst) == 0) return 0;
  int const letter = text[0] | 0x20;
  *value = letter == 'y' || letter == 't';
  return 1;
}

int32_t TYPrefs::ReadFree(uint32_t section, char const *name, uint32_t type, uint8_t *data,
                          uint32_t &size, int32_t parentFirst) {
  auto const get = [&](TYPrefs *store) { return store->GetFree(section, name, type, data, size); };
  return ReadChain(this, parentFirst, get);
}

TYPrefs *TYPrefs::StoreOfLevel(PrefLevel level) {
  if (level == PrefLevelThis) return this;
  TYPrefs *store = this;
  while (store != nullptr && store->level_ != level) store = store->Parent();
  return store;
}

int32_t TYPrefs::WriteStr(uint32_t section, char const *name, char const *value, PrefLevel level) {
  TYPrefs *const store = StoreOfLevel(level);
  if (store == nullptr) return 0;
  store->SetStr(section, name, value);
  return 1;
}

int32_t TYPrefs::WriteNum(uint32_t section, char const *name, int32_t value, PrefLevel level) {
  char text[zolt::kNumberTextSize];
  zolt::PrintNumber(value, text);
  return WriteStr(section, name, text, level);
}

int32_t TYPrefs::WriteBool(uint32_t section, char const *name, int32_t value, PrefLevel level) {
  return WriteStr(section, name, value != 0 ? "Yes" : "No", level);
}

int32_t TYPrefs::WriteFree(uint32_t section, char const *name, uint32_t type, uint8_t const *data,
                           uint32_t size, PrefLevel level) {
  TYPrefs *const store = StoreOfLevel(level);
  if (store == nullptr) return 0;
  store->SetFree(section, name, type, data, size);
  return 1;
}

int32_t TYPrefs::IsDiffStr(uint32_t section, char const *name, char const *value,
                           char const *defaultValue) {
  // The default stays out of the buffer: it has no limit.
  char text[kTextSize];
  char const *const current =
      ReadStr(section, name, text, "", 0) != 0 ? text : zolt::TextOrEmpty(defaultValue);
  return AZStrEqual(current, zolt::TextOrEmpty(value)) == 0;
}

int32_t TYPrefs::IsDiffNum(uint32_t section, char const *name, int32_t value,
                           int32_t defaultValue) {
  int32_t current = 0;
  ReadNum(section, name, &current, defaultValue, 0);
  return current != value;
}

int32_t TYPrefs::IsDiffBool(uint32_t section, char const *name, int32_t value,
                            int32_t defaultValue) {
  int32_t current = 0;
  ReadBool(section, name, &current, defaultValue, 0);
  return current != value;
}

int32_t TYPrefs::DiffWriteStr(uint32_t section, char const *name, char const *value,
                              char const *defaultValue, PrefLevel level) {
  if (IsDiffStr(section, name, value, defaultValue) == 0) return 1;
  return WriteStr(section, name, value, level);
}

int32_t TYPrefs::DiffWriteNum(uint32_t section, char const *name, int32_t value,
                              int32_t defaultValue, PrefLevel level) {
  if (IsDiffNum(section, name, value, defaultValue) == 0) return 1;
  return WriteNum(section, name, value, level);
}

int32_t TYPrefs::DiffWriteBool(uint32_t section, char const *name, int32_t value,
                               int32_t defaultValue, PrefLevel level) {
  if (IsDiffBool(section, name, value, defaultValue) == 0) return 1;
  return WriteBool(section, name, value, level);
}
