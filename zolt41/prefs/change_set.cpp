#include "zolt41/prefs/change_set.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <utility>

#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/system/ascii_case.h"

namespace zolt {
namespace {

constexpr uint32_t kLongestName = 16383;
constexpr uint32_t kUsualSize = 256;

std::string LowerCase(std::string_view name) {
  std::string lower(name);
  for (char &c : lower) c = FoldAscii(c);
  return lower;
}

bool ReadStored(HKEY key, char const *name, MaybeValue *value) {
  StoredValue stored{0, std::string(kUsualSize, '\0')};
  value->reset();
  for (;;) {
    auto size = static_cast<uint32_t>(stored.data.size());
    auto *const data = reinterpret_cast<uint8_t *>(stored.data.data());
    int32_t const result = RegQueryValueExA(key, name, nullptr, &stored.type, data, &size);
    if (result == ERROR_FILE_NOT_FOUND) return true;
    if (result != ERROR_SUCCESS && result != ERROR_MORE_DATA) return false;
    stored.data.resize(size);
    if (result == ERROR_MORE_DATA) continue;
    stored.data.shrink_to_fit();
    *value = std::move(stored);
    return true;
  }
}

bool WriteStored(HKEY key, ChangeSet::Value const &value) {
  if (!value.after) return RegDeleteValueA(key, value.name.c_str()) == ERROR_SUCCESS;
  std::string const &data = value.after->data;
  return RegSetValueExA(key, value.name.c_str(), 0, value.after->type,
                        reinterpret_cast<uint8_t const *>(data.data()),
                        static_cast<uint32_t>(data.size())) == ERROR_SUCCESS;
}

}  // namespace

std::string_view StoredValue::text() const {
  if (type != REG_SZ) return {};
  std::string_view const all = data;
  return all.substr(0, all.find('\0'));
}

MaybeValue TextValue(char const *text) {
  return StoredValue{REG_SZ, std::string(text, std::strlen(text) + 1)};
}

MaybeValue BytesValue(uint32_t type, void const *data, uint32_t size) {
  auto const *const bytes = static_cast<char const *>(data);
  return StoredValue{type, bytes == nullptr ? "" : std::string(bytes, size)};
}

ChangeSet::Section &ChangeSet::In(uint32_t id, HKEY key) {
  auto const [known, isNew] = byId_.try_emplace(id, sections_.size());
  if (!isNew) return sections_[known->second];
  int64_t const number = KeyNumber(key);
  if (number >= 0) known->second = byKey_.try_emplace(number, sections_.size()).first->second;
  if (known->second == sections_.size()) sections_.push_back({id, key, {}, {}});
  return sections_[known->second];
}

// Null if the store cannot be read.
ChangeSet::Value *ChangeSet::Touch(Section *section, std::string_view name) {
  std::string const folded = LowerCase(name);
  size_t const hash = std::hash<std::string>()(folded);
  auto const [first, last] = section->places.equal_range(hash);
  for (auto place = first; place != last; ++place) {
    Value &value = section->values[place->second];
    if (LowerCase(value.name) == folded) return &value;
  }
  Value value{std::string(name), {}, {}};
  if (!ReadStored(section->key, value.name.c_str(), &value.before)) return nullptr;
  value.after = value.before;
  section->places.emplace(hash, section->values.size());
  return &section->values.emplace_back(std::move(value));
}

bool ChangeSet::Set(uint32_t section, HKEY key, std::string_view name, MaybeValue value) {
  Value *const touched = Touch(&In(section, key), name);
  if (touched == nullptr) return false;
  // Told under the name that it was changed by.
  touched->name = name;
  touched->after = std::move(value);
  return true;
}

bool ChangeSet::Read(uint32_t section, HKEY key, std::string_view name, MaybeValue *value) {
  Value const *const touched = Touch(&In(section, key), name);
  if (touched == nullptr) return false;
  *value = touched->before;
  return true;
}

bool ChangeSet::Clear(uint32_t id, HKEY key) {
  Section &section = In(id, key);
  std::string name(kLongestName + 1, '\0');
  for (uint32_t index = 0;; index++) {
    uint32_t length = kLongestName + 1;
    int32_t const result =
        RegEnumValueA(key, index, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
    if (result == ERROR_NO_MORE_ITEMS) break;
    if (result != ERROR_SUCCESS) return false;
    if (Touch(&section, std::string_view(name.data(), length)) == nullptr) return false;
  }
  for (Value &value : section.values) value.after.reset();
  return true;
}

bool ChangeSet::changes() const {
  return std::ranges::any_of(sections_, [](Section const &section) {
    return std::ranges::any_of(section.values,
                               [](Value const &value) { return value.before != value.after; });
  });
}

bool ChangeSet::Write() const {
  return std::ranges::all_of(sections_, [](Section const &section) {
    return std::ranges::all_of(section.values, [&section](Value const &value) {
      return value.before == value.after || WriteStored(section.key, value);
    });
  });
}

}  // namespace zolt
