#include "zolt41/platform/registry/hive_text.h"

#include <algorithm>

#include "zolt41/platform/system/codepage.h"

namespace zolt {
namespace {

bool IsAscii(char c) {
  return static_cast<signed char>(c) >= 0;
}

bool Continues(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

StoredName::StoredName(std::string_view local) : text_(local) {
  if (std::ranges::all_of(local, IsAscii)) return;
  converted_ = Utf8FromLocal(local);
  text_ = converted_;
}

std::string LocalNameOf(std::string_view stored) {
  std::string local;
  if (std::ranges::all_of(stored, IsAscii)) return std::string(stored);
  if (LocalFromUtf8(stored, &local)) return local;
  for (size_t at = 0; at < stored.size();) {
    size_t end = at + 1;
    while (end < stored.size() && Continues(stored[end])) end++;
    std::string character;
    bool const known = LocalFromUtf8(stored.substr(at, end - at), &character);
    local.append(known ? character : std::string(1, '?'));
    at = end;
  }
  return local;
}

}  // namespace zolt
