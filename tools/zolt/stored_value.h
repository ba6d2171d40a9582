#ifndef ZOLT41_TOOLS_ZOLT_STORED_VALUE_H_
#define ZOLT41_TOOLS_ZOLT_STORED_VALUE_H_

#include <optional>
#include <string>

#include "zolt41/zolt41.h"

namespace zolt::tool {

enum class Kind {
  absent,
  text,        // a client reads it as text
  bytes,       // of another type
  unreadable,  // a text that is too long to be read as one
};

char const *NameOf(Kind kind);

// A value as one store holds it. Of a text `data` is what a client reads, in the code page of the
// stores; of an unreadable one what stands before its end; else all bytes.
struct StoredValue {
  Kind kind = Kind::absent;
  std::string data;

  bool operator==(StoredValue const &) const = default;
};

// The same as it is stored: the type and all bytes, a text's NUL among them.
struct RawValue {
  uint32_t type;
  std::string data;

  bool operator==(RawValue const &) const = default;
};
using MaybeRaw = std::optional<RawValue>;

// The longest text that a client can read, in bytes.
inline constexpr size_t kLongestText = 255;

// From a key that is open or 0. Throw if the store fails.
StoredValue ReadValue(HKEY key, std::string const &name);
MaybeRaw ReadRaw(HKEY key, std::string const &name);

// What a client makes of what is stored, and how a value of its own is stored.
StoredValue Interpreted(MaybeRaw const &raw);
MaybeRaw RawOf(StoredValue const &value);

// For a message: `unset`, a text, or the first bytes.
std::string Describe(StoredValue const &value);

// For a column: a text, bytes as 0x and digits; UTF-8. `brief` cuts what would not fit a terminal.
std::string Column(StoredValue const &value, bool brief);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_STORED_VALUE_H_
