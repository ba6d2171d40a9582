#include <algorithm>
#include <bit>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "zolt41/cards/property_format.h"
#include "zolt41/cards/property_storage.h"
#include "zolt41/foundation/a_string.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/foundation/u_convert.h"
#include "zolt41/foundation/u_string.h"
#include "zolt41/platform/system/ascii_case.h"
#include "zolt41/platform/system/with_memory.h"

namespace {

constexpr uint32_t kNone = 0xFFFFFFFF;

// A string value, which may lack its NUL: the units before it.
template <typename Unit>
std::basic_string_view<Unit> TextOf(char const *value, uint32_t length) {
  std::basic_string_view<Unit> const all(reinterpret_cast<Unit const *>(value),
                                         length / sizeof(Unit));
  return all.substr(0, all.find(Unit{0}));
}

char Narrow(char c) {
  return c;
}

char Narrow(char16_t c) {
  return c <= 0x80 ? static_cast<char>(c) : '?';
}

template <typename Unit>
bool SameText(std::basic_string_view<Unit> text, std::string_view value) {
  return std::ranges::equal(
      text, value, [](Unit a, char b) { return zolt::FoldAscii(Narrow(a)) == zolt::FoldAscii(b); });
}

template <typename Unit>
bool Compares(std::basic_string_view<Unit> text, CSOper oper, std::string_view value) {
  if (value.size() > text.size()) return false;
  size_t const last = text.size() - value.size();
  switch (oper) {
    case CSContains:
      for (size_t i = 0; i <= last; i++)
        if (SameText(text.substr(i, value.size()), value)) return true;
      return false;
    case CSEquals:
      return SameText(text, value);
    case CSBeginsWith:
      return SameText(text.substr(0, value.size()), value);
    case CSEndsWith:
      return SameText(text.substr(last), value);
  }
  return false;
}

// Local text of a 16-bit value, or false if it does not fit into `size` bytes with its NUL.
bool CopyUnicode(char const *value, uint32_t length, char *buffer, int32_t size) {
  if (int64_t{length / 2} >= size) return false;
  std::u16string_view const text = TextOf<char16_t>(value, length);
  auto const count = static_cast<int32_t>(text.size());
  if (count > 0) ConvertUnicodeToLocal(text.data(), buffer, count, '?');
  buffer[count] = '\0';
  return true;
}

void CopyBytes(std::string_view text, char *buffer, int32_t size) {
  size_t const count = text.copy(buffer, static_cast<size_t>(std::max(size, 0)));
  buffer[count] = '\0';
}

}  // namespace

uint32_t PCardStorage::FindProp(char const *name, uint32_t requiredFlags, uint32_t preferredFlags,
                                uint32_t startIndex, uint32_t *type) {
  if (name == nullptr) name = "";
  uint32_t best = kNone;
  int bestScore = -1;
  for (uint32_t i = startIndex; i < PropCount(); i++) {
    uint32_t flags = 0;
    char *found = nullptr;
    GetPropA(i, nullptr, nullptr, &flags, &found);
    if ((flags & requiredFlags) != requiredFlags || AZStrEqual(found, name) == 0) continue;
    int const score = std::popcount(flags & preferredFlags);
    if (score <= bestScore) continue;
    best = i;
    bestScore = score;
    if (score == std::popcount(preferredFlags)) break;
  }
  if (best != kNone && type != nullptr) GetPropA(best, nullptr, type, nullptr, nullptr);
  return best;
}

void PCardStorage::GetStrProp(char const *name, uint32_t requiredFlags, uint32_t preferredFlags,
                              char const *defaultValue, char *buffer, int32_t bufferSize) {
  uint32_t length = 0;
  uint32_t type = 0;
  uint32_t const index = FindProp(name, requiredFlags, preferredFlags, 0, nullptr);
  char const *const value = GetPropA(index, &length, &type, nullptr, nullptr);
  if (value != nullptr && zolt::IsUnicode(type)) {
    if (CopyUnicode(value, length, buffer, bufferSize)) return;
  } else if (value != nullptr && zolt::IsString(type)) {
    return CopyBytes(TextOf<char>(value, length), buffer, bufferSize);
  }
  CopyBytes(defaultValue == nullptr ? "" : defaultValue, buffer, bufferSize);
}

void PCardStorage::SetStrProp(char const *name, uint32_t requiredFlags, uint32_t preferredFlags,
                              char const *value) {
  // The name may lie in the list, which moves.
  auto const kept = zolt::WithMemory(std::optional<std::string>(), [name] {
    return std::optional<std::string>(name == nullptr ? "" : name);
  });
  char const *const text = value == nullptr ? "" : value;
  size_t const length = strnlen(text, zolt::kLongestText + 1);
  if (!kept || length > zolt::kLongestText) return;
  auto const size = static_cast<uint32_t>((length + 1) * sizeof(char16_t));
  char *const block = NewMem(size);
  if (block == nullptr) return;
  auto *const wide = reinterpret_cast<char16_t *>(block);
  LZ2UZStrCopy(text, wide, 0);
  uint32_t olds = PropCount();
  // The new one first, so that without memory for it the old ones stay.
  bool const fails =
      *text != '\0' && AddProp(kept->c_str(), PropertyUnicode, requiredFlags | preferredFlags,
                               block, static_cast<int32_t>(size)) == kNone;
  while (!fails) {
    uint32_t const old = FindProp(kept->c_str(), requiredFlags, 0, 0, nullptr);
    if (old >= olds || DeleteProp(old) == 0) break;
    olds--;
  }
  _DisposeMem(block);
}

int32_t PCardStorage::Selected(char const *name, CSOper oper, char const *value) {
  std::string_view const wanted = value == nullptr ? "" : value;
  for (uint32_t i = FindProp(name, 0, 0, 0, nullptr); i != kNone;
       i = FindProp(name, 0, 0, i + 1, nullptr)) {
    uint32_t length = 0;
    uint32_t type = 0;
    char const *const bytes = GetPropA(i, &length, &type, nullptr, nullptr);
    bool const matches =
        zolt::IsUnicode(type)
            ? Compares(TextOf<char16_t>(bytes, length), oper, wanted)
            : zolt::IsString(type) && Compares(TextOf<char>(bytes, length), oper, wanted);
    if (matches) return 1;
  }
  return 0;
}
