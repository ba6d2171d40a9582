#include "tools/zolt/store_write.h"

#include <algorithm>

#include "tools/zolt/errors.h"
#include "tools/zolt/section_key.h"
#include "tools/zolt/text.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

// Opens the section as a client does, which makes its keys; gives the one of the level.
HKEY Register(Level const &level, SectionPath const &path) {
  // The section was there a moment ago, so the stores were not started.
  if (level.store() == nullptr) throw StoreFailure(path.Text());
  SectionPath above;
  for (std::string const &name : path.names()) {
    SectionPath const section = above.Below(name);
    if (!section.standard()) {
      if (section.id() == 0) Refuse(section.Text(), "no program can open a section of this name");
      if (above.top()) {
        RegisterPrefSection(section.id(), name.c_str());
      } else {
        RegisterPrefSection(section.id(), above.id(), name.c_str());
      }
    }
    above = section;
  }
  HKEY const key = level.store()->SectionKey(path.id(), 0);
  if (key != 0) return key;
  // An operation on the missing key leaves why it is missing.
  level.store()->Exists(static_cast<uint32_t>(path.id()), "");
  throw StoreFailure(path.Text());
}

void WriteValue(HKEY key, Change const &change) {
  // A text goes with its NUL.
  bool const text = change.after.kind != Kind::bytes;
  std::string const &data = change.after.data;
  RegSetValueExA(key, change.name.c_str(), 0, text ? REG_SZ : REG_BINARY,
                 reinterpret_cast<uint8_t const *>(data.c_str()),
                 static_cast<uint32_t>(data.size()) + (text ? 1 : 0));
}

void CheckLastFailure(Change const &change) {
  if (ZOLTLastFailure(nullptr, 0) != 0) throw StoreFailure(ToUtf8(change.name));
}

void WriteAll(Level const &level, SectionPath const &path, std::vector<Change> const &changes) {
  SectionKey const found(level, path, SectionKey::Role::first);
  HKEY const key = found.key() != 0 ? found.key() : Register(level, path);
  for (Change const &change : changes) {
    if (!change.changes()) continue;
    WriteValue(key, change);
    CheckLastFailure(change);
  }
}

// Registering the section would make it in the other stores too.
void RemoveAll(Level const &level, SectionPath const &path, std::vector<Change> const &changes) {
  SectionKey const key(level, path, SectionKey::Role::first);
  for (Change const &change : changes) {
    if (!change.changes()) continue;
    RegDeleteValueA(key.key(), change.name.c_str());
    CheckLastFailure(change);
  }
}

bool Removes(Change const &change) {
  return change.after.kind == Kind::absent;
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
  std::string const subject = std::string(level.name) + " store";
  HiveTransaction transaction(level.root);
  if (transaction.Begin() != ERROR_SUCCESS) throw StoreFailure(subject);
  std::vector<Change> changes = ReadBefore(level, path, names);
  decide(&changes);
  if (std::ranges::none_of(changes, &Change::changes)) return changes;
  if (std::ranges::all_of(changes, Removes)) {
    RemoveAll(level, path, changes);
  } else {
    WriteAll(level, path, changes);
  }
  if (transaction.Commit() != ERROR_SUCCESS) throw StoreFailure(subject);
  return changes;
}

}  // namespace zolt::tool
