#include "tools/zolt/store_update.h"

#include <algorithm>

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

void Add(Transaction *transaction, uint32_t section, ValueUpdate const &value) {
  if (!value.after) {
    transaction->Remove(section, value.name.c_str());
    return;
  }
  std::string const &data = value.after->data;
  transaction->SetFree(section, value.name.c_str(), value.after->type, data.data(),
                       static_cast<uint32_t>(data.size()));
}

void AddTo(Transaction *transaction, OpenSections const &sections, StoreUpdate const &update) {
  for (SectionUpdate const &section : update.sections) {
    uint32_t const id = sections.IdOf(section.path);
    for (ValueUpdate const &value : section.values)
      if (value.changes()) Add(transaction, id, value);
  }
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

size_t StoreUpdate::sectionsMade() const {
  return static_cast<size_t>(std::ranges::count_if(sections, &SectionUpdate::made));
}

std::vector<SectionPath const *> PathsOf(StoreUpdate const &update) {
  std::vector<SectionPath const *> paths;
  for (SectionUpdate const &section : update.sections) paths.push_back(&section.path);
  return paths;
}

StoreUpdate WriteUpdate(Level const &level, std::span<SectionPath const *const> paths,
                        std::function<StoreUpdate()> const &look) {
  OpenSections sections(level, paths);
  Transaction transaction(level.level);
  StoreUpdate update;
  Commit const result = transaction.Write([&] {
    update = look();
    if (update.changes() == 0) return;
    sections.OpenAll(level.root);
    AddTo(&transaction, sections, update);
  });
  if (result == Commit::timed_out) throw ChannelHeld();
  if (result != Commit::done && result != Commit::unchanged) {
    throw StoreFailure(std::string(level.name) + " store");
  }
  // A transaction without a change keeps nothing.
  if (result == Commit::unchanged && update.sectionsMade() > 0) sections.OpenAll({});
  sections.Keep();
  return update;
}

}  // namespace zolt::tool
