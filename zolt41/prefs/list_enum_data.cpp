#include "zolt41/prefs/list_enum_data.h"

#include <cstring>
#include <new>

namespace {

char *CopyText(char const *text) {
  if (text == nullptr) return nullptr;
  size_t const size = std::strlen(text) + 1;
  char *const copy = new (std::nothrow) char[size];
  if (copy != nullptr) std::memcpy(copy, text, size);
  return copy;
}

// What a list without memory for it does not take is freed again.
int32_t Taken(uint32_t index, char *text) {
  if (index != ZOLTXList::kNone) return 1;
  delete[] text;
  return 0;
}

}  // namespace

ListEnumData::~ListEnumData() {
  for (uint32_t i = 0; i < list_.Count(); i++) {
    if (type_ == ListEnumString) {
      delete[] static_cast<char *>(list_.GetItem(i));
    } else if (type_ == ListEnumNumber || type_ == ListEnumBool) {
      delete static_cast<int32_t *>(list_.GetItem(i));
    }
  }
}

StringListEnumData::~StringListEnumData() = default;

int32_t StringListEnumData::AddString(char const *text) {
  char *const copy = CopyText(text);
  return copy == nullptr ? 0 : Taken(GetList()->AddItem(copy), copy);
}

int32_t StringListEnumData::InsertString(int32_t index, char const *text) {
  char *const copy = index < 0 ? nullptr : CopyText(text);
  return copy == nullptr ? 0
                         : Taken(GetList()->InsertItem(copy, static_cast<uint32_t>(index)), copy);
}

int32_t StringListEnumData::ReadString(int32_t index, char *buffer, int32_t size) const {
  if (index < 0 || index >= GetCount()) return 0;
  auto const *const text =
      static_cast<char const *>(GetList()->GetItem(static_cast<uint32_t>(index)));
  size_t const length = std::strlen(text);
  if (buffer != nullptr && size > 0 && static_cast<size_t>(size) > length) {
    std::memcpy(buffer, text, length + 1);
  }
  return static_cast<int32_t>(length);
}
