#include "zolt41/platform/system/string_table.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

struct Entry {
  uint32_t id;
  std::string_view text;
};

constexpr Entry kEntries[] = {
    {25, "Software:Veltrane:Tessaly:5.0"},
    {109, "Software:Veltrane:Tessaly:Shared"},
    {20137, "SOFTWARE\\Classes\\internetShortcut"},
    {61842, "Send Mail failed to send message."},
};

}  // namespace

HINSTANCE zolt::LibraryInstance() {
  return reinterpret_cast<HINSTANCE>(kEntries);
}

int32_t LoadStringA(HINSTANCE instance, uint32_t id, char *buffer, int32_t size) {
  auto const *const entry = std::ranges::find(kEntries, id, &Entry::id);
  if (instance != zolt::LibraryInstance() || entry == std::end(kEntries)) return 0;
  if (buffer == nullptr || size < 1) return 0;
  size_t const length = entry->text.copy(buffer, static_cast<size_t>(size) - 1);
  buffer[length] = '\0';
  return static_cast<int32_t>(length);
}
