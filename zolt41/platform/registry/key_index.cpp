#include "zolt41/platform/registry/key_index.h"

#include "zolt41/platform/system/ascii_case.h"

namespace zolt {

std::string KeyIndex::Folded(int64_t parent, std::string_view name) {
  std::string folded(reinterpret_cast<char const *>(&parent), sizeof parent);
  for (char const c : name) folded += FoldAscii(c);
  return folded;
}

void KeyIndex::Forget() {
  keys_.clear();
  loaded_ = false;
}

Failure KeyIndex::Load(Connection &connection) {
  Forget();
  Use all(connection, Sql::all_keys);
  all.Bind(kMostKeys + 1);
  while (all.Row()) keys_.emplace(Folded(all.Number(1), all.Text(2)), all.Number(0));
  whole_ = keys_.size() <= static_cast<size_t>(kMostKeys);
  if (!whole_) keys_.clear();
  return all.failure();
}

void KeyIndex::Vouch(Stamp const &stamp) {
  stamp_ = stamp;
  loaded_ = true;
}

KeyIndex::Result KeyIndex::Find(int64_t parent, std::string_view name, int64_t *key) const {
  if (!whole_) return Result::unknown;
  auto const found = keys_.find(Folded(parent, name));
  if (found == keys_.end()) return Result::absent;
  *key = found->second;
  return Result::found;
}

}  // namespace zolt
