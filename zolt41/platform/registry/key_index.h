#ifndef ZOLT41_PLATFORM_REGISTRY_KEY_INDEX_H_
#define ZOLT41_PLATFORM_REGISTRY_KEY_INDEX_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "zolt41/platform/registry/connection.h"
#include "zolt41/platform/registry/stamp.h"

namespace zolt {

// The keys of one hive by parent and name, read with one query, so that the opening of a whole tree
// costs one. A hive with more keys than kMostKeys is asked for each key. Names are UTF-8.
class KeyIndex {
 public:
  static constexpr int64_t kMostKeys = 4096;

  enum class Result { found, absent, unknown };

  bool Current(Stamp const &stamp) const { return loaded_ && stamp == stamp_; }
  void Forget();

  // Reads all keys, or finds that they are too many.
  Failure Load(Connection &connection);
  // The stamp that Load's content is good for.
  void Vouch(Stamp const &stamp);

  Result Find(int64_t parent, std::string_view name, int64_t *key) const;

 private:
  static std::string Folded(int64_t parent, std::string_view name);

  std::unordered_map<std::string, int64_t> keys_;
  Stamp stamp_{};
  bool loaded_ = false;
  bool whole_ = false;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_KEY_INDEX_H_
