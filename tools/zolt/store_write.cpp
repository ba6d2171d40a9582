#include "tools/zolt/store_write.h"

#include "tools/zolt/section_key.h"
#include "tools/zolt/store_update.h"

namespace zolt::tool {

namespace {

SectionUpdate Look(Level const &level, SectionPath const &path,
                   std::vector<std::string> const &names) {
  SectionKey const key(level, path, SectionKey::Role::first);
  SectionUpdate section{path, {}};
  for (std::string const &name : names) {
    MaybeRaw const raw = ReadRaw(key.key(), name);
    section.values.push_back({name, raw, raw});
  }
  return section;
}

// What `decide` makes of it, both for a message and for the store.
std::vector<Change> Decide(std::function<void(std::vector<Change> *)> const &decide,
                           SectionUpdate *section) {
  std::vector<Change> changes;
  changes.reserve(section->values.size());
  for (ValueUpdate const &value : section->values)
    changes.push_back({value.name, Interpreted(value.before), {}});
  decide(&changes);
  for (size_t i = 0; i < changes.size(); i++)
    if (changes[i].changes()) section->values[i].after = RawOf(changes[i].after);
  return changes;
}

}  // namespace

std::vector<Change> ReadBefore(Level const &level, SectionPath const &path,
                               std::vector<std::string> const &names) {
  SectionKey const key(level, path, SectionKey::Role::first);
  std::vector<Change> changes;
  changes.reserve(names.size());
  for (std::string const &name : names) changes.push_back({name, ReadValue(key.key(), name), {}});
  return changes;
}

std::vector<Change> ChangeAtOnce(Level const &level, SectionPath const &path,
                                 std::vector<std::string> const &names,
                                 std::function<void(std::vector<Change> *)> const &decide) {
  std::vector<Change> changes;
  SectionPath const *const paths[] = {&path};
  WriteUpdate(level, paths, [&] {
    StoreUpdate update;
    update.sections.push_back(Look(level, path, names));
    changes = Decide(decide, &update.sections.front());
    return update;
  });
  return changes;
}

}  // namespace zolt::tool
