#include "tools/zolt/store_write.h"

#include <algorithm>
#include <optional>

#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/section_key.h"
#include "tools/zolt/text.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

// The section opened in the store that the process has of its level, so that a transaction finds
// it.
class OpenedSection {
 public:
  OpenedSection(Level const &level, SectionPath const &path) {
    // Only one that is not there yet needs all the stores, in which it is then made.
    if (SectionKey(level, path, SectionKey::Role::first).key() != 0) {
      store_.emplace(level);
    } else {
      library_.emplace();
    }
    Register(level.store(), path);
  }

 private:
  static void Register(WinPrefs *store, SectionPath const &path) {
    if (store == nullptr) throw StoreFailure(path.Text());
    SectionPath above;
    for (std::string const &name : path.names()) {
      SectionPath const section = above.Below(name);
      if (section.id() == 0) Refuse(section.Text(), "no program can open a section of this name");
      // The library has the standard sections open; one of the same id may lie elsewhere.
      if (!section.standard() || store->GetSectionFromID(section.id()) == nullptr) {
        Register(store, above, section);
      }
      above = section;
    }
  }

  static void Register(WinPrefs *store, SectionPath const &above, SectionPath const &section) {
    char const *const name = section.names().back().c_str();
    if (above.top()) {
      store->RegisterSection(section.id(), name);
    } else {
      store->RegisterSection(section.id(), above.id(), name, 0);
    }
  }

  std::optional<StoreSession> store_;
  std::optional<LibrarySession> library_;
};

// A look at the values, and the transaction that holds only if they are still the same.
class Attempt {
 public:
  Attempt(Level const &level, SectionPath const &path)
      : section_(static_cast<uint32_t>(path.id())),
        key_(level, path, SectionKey::Role::first),
        transaction_(level.level) {}

  Change Look(std::string const &name) {
    uint32_t type = 0;
    std::optional<std::string> const stored = ReadBytes(key_.key(), name, &type);
    if (!stored) {
      transaction_.Expect(section_, name.c_str(), nullptr);
      return {name, {}, {}};
    }
    transaction_.ExpectFree(section_, name.c_str(), type, stored->data(),
                            static_cast<uint32_t>(stored->size()));
    return {name, Interpreted(type, *stored), {}};
  }

  void Add(Change const &change) {
    std::string const &data = change.after.data;
    if (change.after.kind == Kind::absent) {
      transaction_.Remove(section_, change.name.c_str());
    } else if (change.after.kind == Kind::bytes) {
      transaction_.SetFree(section_, change.name.c_str(), REG_BINARY, data.data(),
                           static_cast<uint32_t>(data.size()));
    } else {
      transaction_.SetStr(section_, change.name.c_str(), data.c_str());
    }
  }

  Commit Write() { return transaction_.Write(); }

 private:
  uint32_t section_;
  SectionKey key_;
  Transaction transaction_;
};

ToolError ChannelHeld() {
  ZOLTState state;
  ZOLTInspect(&state);
  std::string holder = "another process";
  std::string hint = "try again";
  if (state.channel.holder != 0) {
    std::string const process = std::to_string(state.channel.holder);
    holder = "process " + process + " (" + state.channel.holderProgram + ")";
    hint += "; if it is stopped, kill -CONT " + process;
  }
  return {kLocked, "timeout", "channel of changes", "held by " + holder, hint};
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
  OpenedSection const opened(level, path);
  for (;;) {
    Attempt attempt(level, path);
    std::vector<Change> changes;
    changes.reserve(names.size());
    for (std::string const &name : names) changes.push_back(attempt.Look(name));
    decide(&changes);
    if (std::ranges::none_of(changes, &Change::changes)) return changes;
    for (Change const &change : changes)
      if (change.changes()) attempt.Add(change);
    switch (attempt.Write()) {
      case Commit::done:
      case Commit::unchanged:
        return changes;
      case Commit::mismatch:
        // Somebody else has written, so it goes on for all together.
        continue;
      case Commit::timed_out:
        throw ChannelHeld();
      default:
        throw StoreFailure(std::string(level.name) + " store");
    }
  }
}

}  // namespace zolt::tool
