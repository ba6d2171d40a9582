#ifndef ZOLT41_PREFS_CHANGE_SET_H_
#define ZOLT41_PREFS_CHANGE_SET_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "zolt41/platform/registry/registry.h"

namespace zolt {

// What the store holds under a name, to the byte.
struct StoredValue {
  uint32_t type;
  std::string data;

  bool operator==(StoredValue const &) const = default;
  // Without its NUL; empty if it is no text.
  std::string_view text() const;
};

// Nothing if there is no value.
using MaybeValue = std::optional<StoredValue>;

MaybeValue TextValue(char const *text);
MaybeValue BytesValue(uint32_t type, void const *data, uint32_t size);

// The values that a transaction touches, each as it was before and as it is to be, so that what
// was set and removed again is no change. Reads in the hive transaction of the calling thread.
class ChangeSet {
 public:
  struct Value {
    std::string name;
    MaybeValue before;
    MaybeValue after;
  };
  struct Section {
    uint32_t id;
    HKEY key;
    std::vector<Value> values;
    std::unordered_multimap<size_t, size_t> places;  // of values, by a hash of the name
  };

  // False if the store cannot be read; ZOLTLastFailure tells why.
  [[nodiscard]] bool Set(uint32_t section, HKEY key, std::string_view name, MaybeValue value);
  [[nodiscard]] bool Clear(uint32_t section, HKEY key);
  // What the store holds now.
  [[nodiscard]] bool Read(uint32_t section, HKEY key, std::string_view name, MaybeValue *value);

  bool changes() const;

  // Writes what changes; false if that fails.
  [[nodiscard]] bool Write() const;

  // In the order in which they were first named.
  std::vector<Section> const &sections() const { return sections_; }

 private:
  Section &In(uint32_t id, HKEY key);
  static Value *Touch(Section *section, std::string_view name);

  std::vector<Section> sections_;
  // Places of sections. One may be open under two ids.
  std::unordered_map<uint32_t, size_t> byId_;
  std::unordered_map<int64_t, size_t> byKey_;
};

}  // namespace zolt

#endif  // ZOLT41_PREFS_CHANGE_SET_H_
