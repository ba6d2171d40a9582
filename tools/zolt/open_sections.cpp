#include "tools/zolt/open_sections.h"

#include <algorithm>

#include "tools/zolt/errors.h"
#include "tools/zolt/section_key.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

// Ids that names and letters do not give, or hardly ever.
constexpr int32_t kFirstOwnId = 0x02000000;

bool AllExist(Level const &level, std::span<SectionPath const *const> paths) {
  return std::ranges::all_of(paths, [&level](SectionPath const *path) {
    return SectionKey(level, *path, SectionKey::Role::first).key() != 0;
  });
}

}  // namespace

void KeysTogether::Keep() {
  if (begun_ && hive_.Commit() != ERROR_SUCCESS) throw StoreFailure("sections");
}

OpenSections::OpenSections(Level const &level, std::span<SectionPath const *const> paths)
    : paths_(paths), lastOwnId_(kFirstOwnId) {
  // Only what is not there yet needs all the stores, in which it is then made.
  if (AllExist(level, paths)) {
    store_.emplace(level);
  } else {
    library_.emplace();
  }
  prefs_ = level.store();
  if (prefs_ == nullptr) throw StoreFailure(std::string(level.name) + " store");
}

void OpenSections::OpenAll(std::optional<HKEY> running) {
  if (library_ && running != HKEY_CURRENT_USER) user_.emplace(HKEY_CURRENT_USER);
  if (library_ && running != HKEY_LOCAL_MACHINE) machine_.emplace(HKEY_LOCAL_MACHINE);
  for (SectionPath const *const path : paths_) Open(*path);
}

void OpenSections::Keep() {
  if (machine_) machine_->Keep();
  if (user_) user_->Keep();
}

uint32_t OpenSections::IdOf(SectionPath const &path) const {
  return static_cast<uint32_t>(path.top() ? 0 : ids_.at(path.Key()));
}

int32_t OpenSections::IdFor(SectionPath const &path) {
  int32_t const own = path.id();
  if (path.standard()) return own;
  // The library has the standard ones open; another of the same id must not stand before them.
  bool const standard =
      std::ranges::any_of(StandardSections(), [own](auto const &each) { return each.id == own; });
  return own != 0 && !standard && !taken_.contains(own) ? own : ++lastOwnId_;
}

int32_t OpenSections::Open(SectionPath const &path) {
  if (path.top()) return 0;
  std::string const key = path.Key();
  if (auto const found = ids_.find(key); found != ids_.end()) return found->second;
  int32_t const parent = Open(path.Above(path.names().size() - 1));
  int32_t const id = IdFor(path);
  char const *const name = path.names().back().c_str();
  bool const there = path.standard() && prefs_->GetSectionFromID(id) != nullptr;
  if (!there && parent == 0) prefs_->RegisterSection(id, name);
  if (!there && parent != 0) prefs_->RegisterSection(id, parent, name, 0);
  ids_[key] = id;
  taken_.insert(id);
  return id;
}

}  // namespace zolt::tool
