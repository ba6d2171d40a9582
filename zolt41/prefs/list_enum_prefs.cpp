#include "zolt41/prefs/list_enum_prefs.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <string_view>

#include "zolt41/foundation/a_string.h"
#include "zolt41/foundation/zoltx_string_array.h"
#include "zolt41/notify/transaction.h"
#include "zolt41/platform/system/codepage.h"
#include "zolt41/prefs/enum_prefs.h"
#include "zolt41/prefs/pref_sections.h"
#include "zolt41/prefs/text_argument.h"
#include "zolt41/prefs/win_prefs.h"

namespace {

constexpr uint32_t kNameSize = 256;
constexpr uint32_t kTextSize = 1024;
constexpr uint32_t kWhole = 0xFFFFFFFF;

bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

char const *SkipSpace(char const *text) {
  while (IsSpace(*text)) ++text;
  return text;
}

// Behind the list's name at the start of `name`, or null.
char const *SkipStem(char const *name, char const *stem) {
  for (; *stem != '\0'; ++stem) {
    if (IsSpace(*stem)) {
      name = SkipSpace(name);
    } else if (*name++ != *stem) {
      return nullptr;
    }
  }
  return name;
}

// The index in a value's name. One that 32 bits do not hold lies above or below all others.
bool ScanIndex(char const *name, char const *stem, int32_t *index) {
  char const *text = SkipStem(name, stem);
  if (text == nullptr) return false;
  text = SkipSpace(text);
  bool const negative = *text == '-';
  if (*text == '+') ++text;
  if (*text == '-' && !negative) return false;
  auto const result = std::from_chars(text, text + std::strlen(text), *index);
  if (result.ec == std::errc::result_out_of_range) {
    using Limits = std::numeric_limits<int32_t>;
    *index = negative ? Limits::min() : Limits::max();
  }
  return result.ec != std::errc::invalid_argument;
}

void AddText(ListEnumData *data, char const *text) {
  size_t const size = std::strlen(text) + 1;
  std::unique_ptr<char[]> item(new (std::nothrow) char[size]);
  if (item == nullptr) return;
  std::memcpy(item.get(), text, size);
  if (data->GetList()->AddItem(item.get()) == ZOLTXList::kNone) return;
  static_cast<void>(item.release());
}

void AddNumber(ListEnumData *data, int32_t number) {
  std::unique_ptr<int32_t> item(new (std::nothrow) int32_t(number));
  if (item == nullptr || data->GetList()->AddItem(item.get()) == ZOLTXList::kNone) return;
  static_cast<void>(item.release());
}

class Temporary : public ListEnumData {
 public:
  explicit Temporary(ListEnumType type) : ListEnumData(type) {}
  ~Temporary() override = default;
};

int32_t NumberAt(ListEnumData const &data, int32_t index) {
  return *static_cast<int32_t const *>(data.GetList()->GetItem(static_cast<uint32_t>(index)));
}

char const *TextAt(ListEnumData const &data, int32_t index) {
  return static_cast<char const *>(data.GetList()->GetItem(static_cast<uint32_t>(index)));
}

bool SameItem(ListEnumData const &a, ListEnumData const &b, int32_t index) {
  if (a.GetType() != ListEnumString) return NumberAt(a, index) == NumberAt(b, index);
  return lstrcmpA(TextAt(a, index), TextAt(b, index)) == 0;
}

}  // namespace

// The name of an item, built once up to the index.
struct CListEnumPrefs::ItemName {
  explicit ItemName(ZOLTXString const &listName)
      : stem(std::min<size_t>(std::strlen(listName), kNameSize)) {
    std::memcpy(text, listName.GetBuffer(), stem);
  }

  // Null if it would be too long.
  char const *Of(int32_t index) {
    auto const result = std::to_chars(text + stem, text + kNameSize - 1, index);
    if (stem >= kNameSize || result.ec != std::errc()) return nullptr;
    *result.ptr = '\0';
    return text;
  }

  size_t stem;
  char text[kNameSize];
};

CListEnumPrefs::CListEnumPrefs(int32_t id, char const *name, int32_t parent, WinPrefs *prefs,
                               char const *listName)
    : listName_(listName), id_(id), parent_(parent), prefs_(prefs) {
  std::string_view const kept =
      std::string_view(zolt::TextOrEmpty(name)).substr(0, sizeof name_ - 1);
  name_[kept.copy(name_, kept.size())] = '\0';
  if (parent != 0) {
    RegisterPrefSection(id, parent, name);
  } else if (id != 0) {
    RegisterPrefSection(id, name);
  }
}

CListEnumPrefs::~CListEnumPrefs() {
  if (id_ != 0) UnRegisterPrefSection(id_, 0);
}

void CListEnumPrefs::Release() {
  // Read back from memory, since a compiler may hold that `this` is never null.
  CListEnumPrefs *volatile self = this;
  delete self;
}

int32_t CListEnumPrefs::GetNumberOfValues() {
  ItemName name(listName_);
  for (int32_t i = 0;; i++) {
    char const *const item = name.Of(i);
    if (item == nullptr || prefs_->Exists(static_cast<uint32_t>(id_), item) != 1) return i;
  }
}

void CListEnumPrefs::LimitNumberOfValues(int32_t limit) {
  CEnumPrefs *const walk = prefs_->GetEnum(parent_, id_, name_);
  if (walk == nullptr) return;
  ZOLTXStringArray names;
  // Not by Next, which may end at a name that is too long for it.
  for (uint32_t i = 0; char const *const value = walk->ValueName(i); i++) {
    int32_t index = 0;
    if (!ScanIndex(value, listName_, &index) || index < limit) continue;
    if (walk->TypeOf(value) == REG_SZ) names.Add(value);
  }
  walk->Release();
  if (names.GetSize() == 0) return;
  BeginPrefsRemove(id_, prefs_->Level(), 0);
  for (int32_t i = 0; i < names.GetSize(); i++) {
    prefs_->RemoveValue(static_cast<uint32_t>(id_), names.ElementAt(i));
  }
  EndPrefsRemove();
}

int32_t CListEnumPrefs::ReadStr(int32_t index, char *buffer, char const *defaultValue) {
  ItemName name(listName_);
  char const *const item = name.Of(index);
  if (item != nullptr) {
    return prefs_->ReadStr(static_cast<uint32_t>(id_), item, buffer, defaultValue, 0);
  }
  if (buffer != nullptr) AZStrCopy(zolt::TextOrEmpty(defaultValue), buffer, kWhole);
  return 0;
}

int32_t CListEnumPrefs::ReadNum(int32_t index, int32_t *value, int32_t defaultValue) {
  ItemName name(listName_);
  char const *const item = name.Of(index);
  if (item != nullptr) {
    return prefs_->ReadNum(static_cast<uint32_t>(id_), item, value, defaultValue, 0);
  }
  if (value != nullptr) *value = defaultValue;
  return 0;
}

int32_t CListEnumPrefs::ReadBool(int32_t index, int32_t *value, int32_t defaultValue) {
  ItemName name(listName_);
  char const *const item = name.Of(index);
  if (item != nullptr) {
    return prefs_->ReadBool(static_cast<uint32_t>(id_), item, value, defaultValue, 0);
  }
  if (value != nullptr) *value = defaultValue;
  return 0;
}

int32_t CListEnumPrefs::WriteStr(int32_t index, char const *value) {
  ItemName name(listName_);
  char const *const item = name.Of(index);
  if (item == nullptr) return 0;
  return prefs_->WriteStr(static_cast<uint32_t>(id_), item, value, PrefLevelThis);
}

int32_t CListEnumPrefs::WriteNum(int32_t index, int32_t value) {
  ItemName name(listName_);
  char const *const item = name.Of(index);
  if (item == nullptr) return 0;
  return prefs_->WriteNum(static_cast<uint32_t>(id_), item, value, PrefLevelThis);
}

int32_t CListEnumPrefs::WriteBool(int32_t index, int32_t value) {
  ItemName name(listName_);
  char const *const item = name.Of(index);
  if (item == nullptr) return 0;
  return prefs_->WriteBool(static_cast<uint32_t>(id_), item, value, PrefLevelThis);
}

void CListEnumPrefs::ReadItem(int32_t index, ListEnumData *data) {
  if (data->GetType() == ListEnumString) {
    char text[kTextSize];
    ReadStr(index, text, "");
    AddText(data, text);
    return;
  }
  int32_t number = 0;
  if (data->GetType() == ListEnumNumber) {
    ReadNum(index, &number, 0);
  } else {
    ReadBool(index, &number, 0);
  }
  AddNumber(data, number);
}

int32_t CListEnumPrefs::ReadList(ListEnumData *data) {
  int32_t const count = GetNumberOfValues();
  for (int32_t i = 0; i < count; i++) ReadItem(i, data);
  return 1;
}

int32_t CListEnumPrefs::ReadList(StringListEnumData *data) {
  data->SetType(ListEnumString);
  return ReadList(static_cast<ListEnumData *>(data));
}

void CListEnumPrefs::WriteItems(ListEnumData const &data, int32_t begin, int32_t end) {
  for (int32_t i = begin; i < end; i++) {
    if (data.GetType() == ListEnumString) {
      WriteStr(i, TextAt(data, i));
    } else if (data.GetType() == ListEnumNumber) {
      WriteNum(i, NumberAt(data, i));
    } else {
      WriteBool(i, NumberAt(data, i));
    }
  }
}

int32_t CListEnumPrefs::WriteList(ListEnumData *data) {
  int32_t const count = data->GetCount();
  LimitNumberOfValues(count);
  int32_t const stored = GetNumberOfValues();
  BeginPrefsModify(id_, 0, 0);
  WriteItems(*data, 0, std::min(count, stored));
  EndPrefsModify();
  if (count <= stored) return 1;
  BeginPrefsCreate(id_, 0, 0);
  WriteItems(*data, stored, count);
  EndPrefsCreate();
  return 1;
}

int32_t CListEnumPrefs::WriteList(StringListEnumData *data) {
  data->SetType(ListEnumString);
  return WriteList(static_cast<ListEnumData *>(data));
}

int32_t CListEnumPrefs::IsDiffList(ListEnumData *data) {
  Temporary stored(data->GetType());
  ReadList(&stored);
  if (stored.GetCount() != data->GetCount()) return 1;
  for (int32_t i = 0; i < stored.GetCount(); i++) {
    if (!SameItem(stored, *data, i)) return 1;
  }
  return 0;
}

int32_t CListEnumPrefs::IsDiffList(StringListEnumData *data) {
  data->SetType(ListEnumString);
  for (int32_t i = 0; i < data->GetCount(); i++) {
    if (*TextAt(*data, i) == '\0') return 1;
  }
  return IsDiffList(static_cast<ListEnumData *>(data));
}
