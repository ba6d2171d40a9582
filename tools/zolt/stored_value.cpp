#include "tools/zolt/stored_value.h"

#include <algorithm>

#include "tools/zolt/errors.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

constexpr size_t kBriefBytes = 16;
constexpr size_t kBriefText = 60;

bool Absent(int32_t result) {
  return result == ERROR_FILE_NOT_FOUND || result == ERROR_KEY_DELETED;
}

// Type and bytes of a value belong together: read again if somebody changes it between.
bool ReadStored(HKEY key, std::string const &name, uint32_t *type, std::string *bytes) {
  // Enough for most at once.
  uint32_t size = 512;
  int32_t result = ERROR_MORE_DATA;
  while (result == ERROR_MORE_DATA) {
    bytes->resize(std::max<uint32_t>(size, 1));
    auto *const data = reinterpret_cast<uint8_t *>(bytes->data());
    size = static_cast<uint32_t>(bytes->size());
    result = RegQueryValueExA(key, name.c_str(), nullptr, type, data, &size);
    if (result != ERROR_SUCCESS) continue;
    bytes->resize(size);
    bytes->shrink_to_fit();
    return true;
  }
  if (!Absent(result)) throw StoreFailure(ToUtf8(name));
  return false;
}

}  // namespace

char const *NameOf(Kind kind) {
  static constexpr char const *kNames[] = {"absent", "text", "bytes", "unreadable"};
  return kNames[static_cast<size_t>(kind)];
}

StoredValue ReadValue(HKEY key, std::string const &name) {
  if (key == 0) return {};
  char text[kLongestText + 1];
  uint32_t size = sizeof text;
  int32_t const result = ZOLTQueryText(key, name.c_str(), text, &size);
  if (result == ERROR_SUCCESS) return {Kind::text, text};
  if (Absent(result)) return {};
  if (result != ERROR_UNSUPPORTED_TYPE && result != ERROR_MORE_DATA) {
    throw StoreFailure(ToUtf8(name));
  }
  return Interpreted(ReadRaw(key, name));
}

StoredValue Interpreted(MaybeRaw const &raw) {
  if (!raw) return {};
  std::string const &bytes = raw->data;
  if (raw->type != REG_SZ) return {Kind::bytes, bytes};
  size_t const length = bytes.size() - (bytes.ends_with('\0') ? 1 : 0);
  Kind const kind = length <= kLongestText ? Kind::text : Kind::unreadable;
  return {kind, bytes.substr(0, bytes.find('\0'))};
}

MaybeRaw ReadRaw(HKEY key, std::string const &name) {
  RawValue raw{};
  if (key == 0 || !ReadStored(key, name, &raw.type, &raw.data)) return std::nullopt;
  return raw;
}

MaybeRaw RawOf(StoredValue const &value) {
  if (value.kind == Kind::absent) return std::nullopt;
  if (value.kind == Kind::bytes) return RawValue{REG_BINARY, value.data};
  return RawValue{REG_SZ, value.data + '\0'};
}

std::string Describe(StoredValue const &value) {
  switch (value.kind) {
    case Kind::absent:
      return "unset";
    case Kind::text:
      return value.data.empty() ? "\"\"" : ToUtf8(value.data);
    case Kind::bytes:
      return Hex(value.data, kBriefBytes);
    case Kind::unreadable:
      break;
  }
  return "an unreadable text of " + std::to_string(value.data.size()) + " bytes";
}

std::string Column(StoredValue const &value, bool brief) {
  switch (value.kind) {
    case Kind::absent:
      return "";
    case Kind::text:
      return ToUtf8(value.data);
    case Kind::bytes:
      return brief ? Hex(value.data, kBriefBytes) : Hex(value.data);
    case Kind::unreadable:
      break;
  }
  std::string text = ToUtf8(value.data);
  return brief ? Clip(text, kBriefText) : text;
}

}  // namespace zolt::tool
