#ifndef ZOLT41_PLATFORM_REGISTRY_NAME_LISTS_H_
#define ZOLT41_PLATFORM_REGISTRY_NAME_LISTS_H_

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zolt41/platform/registry/connection.h"
#include "zolt41/platform/registry/stamp.h"

namespace zolt {

// Names of a key's values or subkeys that stand one behind another, in the local code page.
struct NameStretch {
  uint32_t first = 0;  // position of the first name
  bool last = false;   // no entry behind the stretch
  std::vector<std::string> names;

  // The name at a position, or null if the stretch does not hold it.
  std::string const *At(uint32_t index) const {
    bool const held = index >= first && index - first < names.size();
    return held ? &names[index - first] : nullptr;
  }
  // It tells what stands at the position, even if that is nothing.
  bool Tells(uint32_t index) const { return At(index) != nullptr || (last && index >= first); }
};

// The names of a key's values or subkeys by position, for walks: a stretch of names is read with
// one query and serves until the key gets or loses an entry. The stretches of the last eight walks
// are kept, each of at most kMostNames names and kMostBytes bytes of them, and so is one for as
// long as somebody holds it.
class NameLists {
 public:
  static constexpr int64_t kMostNames = 16384;
  static constexpr size_t kMostBytes = 1u << 20;

  enum class Kind { values, keys };

  struct List {
    int64_t key = -1;
    Kind kind = Kind::values;
    Stamp stamp{};
    bool good = false;
    int64_t lastPlace = 0;  // from where the next stretch goes on
    std::shared_ptr<NameStretch const> names;
    uint64_t used = 0;

    bool Tells(uint32_t index) const { return good && names->Tells(index); }
  };

  // The stretch of a key that is good for `stamp`, or an empty one in the place of the one that was
  // not used for the longest time.
  List &Get(int64_t key, Kind kind, Stamp const &stamp);
  void Forget();

  // Gives a list the stretch that begins with the position `index`.
  static Failure Load(Connection &connection, List &list, uint32_t index);

 private:
  std::array<List, 8> lists_;
  uint64_t clock_ = 0;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_NAME_LISTS_H_
