#include "zolt41/platform/registry/name_lists.h"

#include <utility>

#include "zolt41/platform/registry/hive_text.h"

namespace zolt {

NameLists::List &NameLists::Get(int64_t key, Kind kind, Stamp const &stamp) {
  List *oldest = lists_.data();
  for (List &list : lists_) {
    if (list.good && list.key == key && list.kind == kind) {
      oldest = &list;
      break;
    }
    if (list.used < oldest->used) oldest = &list;
  }
  List &list = *oldest;
  list.used = ++clock_;
  if (!list.good || list.key != key || list.kind != kind || list.stamp != stamp) {
    list = List{.key = key, .kind = kind, .stamp = stamp, .names = nullptr, .used = list.used};
  }
  return list;
}

void NameLists::Forget() {
  lists_ = {};
}

Failure NameLists::Load(Connection &connection, List &list, uint32_t index) {
  bool const next = list.good && !list.names->names.empty() &&
                    index == list.names->first + list.names->names.size();
  Sql const after = list.kind == Kind::values ? Sql::values_after : Sql::keys_after;
  Sql const from = list.kind == Kind::values ? Sql::values_from : Sql::keys_from;
  Use walk(connection, next ? after : from);
  walk.Bind(list.key).Bind(next ? list.lastPlace : int64_t{index}).Bind(kMostNames);
  auto stretch = std::make_shared<NameStretch>();
  stretch->first = index;
  list.good = false;
  size_t bytes = 0;
  bool more = false;
  while ((more = walk.Row())) {
    std::string const &name = stretch->names.emplace_back(LocalNameOf(walk.Text(1)));
    list.lastPlace = walk.Number(0);
    bytes += name.size() + sizeof(std::string);
    if (bytes > kMostBytes) break;
  }
  stretch->last = !more && stretch->names.size() < static_cast<size_t>(kMostNames);
  list.names = std::move(stretch);
  list.good = walk.failure() == Failure::none;
  return walk.failure();
}

}  // namespace zolt
