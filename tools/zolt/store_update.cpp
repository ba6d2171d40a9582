#include "tools/zolt/store_update.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "tools/zolt/errors.h"
#include "tools/zolt/open_sections.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

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

void Expect(Transaction *transaction, uint32_t section, ValueUpdate const &value) {
  if (!value.before) {
    transaction->Expect(section, value.name.c_str(), nullptr);
    return;
  }
  std::string const &data = value.before->data;
  transaction->ExpectFree(section, value.name.c_str(), value.before->type, data.data(),
                          static_cast<uint32_t>(data.size()));
}

void Add(Transaction *transaction, uint32_t section, ValueUpdate const &value) {
  if (!value.after) {
    transaction->Remove(section, value.name.c_str());
    return;
  }
  std::string const &data = value.after->data;
  transaction->SetFree(section, value.name.c_str(), value.after->type, data.data(),
                       static_cast<uint32_t>(data.size()));
}

std::vector<SectionPath const *> PathsOf(StoreUpdate const &update) {
  std::vector<SectionPath const *> paths;
  for (SectionUpdate const &section : update.sections) paths.push_back(&section.path);
  return paths;
}

Commit Write(Level const &level, OpenSections const &sections, StoreUpdate const &update) {
  Transaction transaction(level.level);
  for (SectionUpdate const &section : update.sections) {
    uint32_t const id = sections.IdOf(section.path);
    for (ValueUpdate const &value : section.values) {
      Expect(&transaction, id, value);
      if (value.changes()) Add(&transaction, id, value);
    }
  }
  return transaction.Write();
}

template <typename Which>
size_t Count(StoreUpdate const &update, Which which) {
  size_t count = 0;
  for (SectionUpdate const &section : update.sections)
    count += static_cast<size_t>(std::ranges::count_if(section.values, which));
  return count;
}

}  // namespace

size_t StoreUpdate::changes() const {
  return Count(*this, &ValueUpdate::changes);
}

size_t StoreUpdate::removals() const {
  return Count(*this, [](ValueUpdate const &value) { return value.before && !value.after; });
}

size_t StoreUpdate::unnamed() const {
  return Count(*this, &ValueUpdate::unnamed);
}

StoreUpdate WriteUpdate(Level const &level, StoreUpdate update,
                        std::function<StoreUpdate()> const &look) {
  std::optional<OpenSections> sections;
  for (;;) {
    std::vector<SectionPath const *> const paths = PathsOf(update);
    if (!sections || !sections->Has(paths)) sections.emplace(level, paths);
    switch (Write(level, *sections, update)) {
      case Commit::done:
      case Commit::unchanged:
        return update;
      case Commit::mismatch:
        // Somebody else has written, so it goes on for all together.
        update = look();
        continue;
      case Commit::timed_out:
        throw ChannelHeld();
      default:
        throw StoreFailure(std::string(level.name) + " store");
    }
  }
}

}  // namespace zolt::tool
