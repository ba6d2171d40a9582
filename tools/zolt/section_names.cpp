#include "tools/zolt/section_names.h"

#include "tools/zolt/chain_read.h"

namespace zolt::tool {

namespace {

// Programs make no deeper trees.
constexpr size_t kDeepest = 64;

template <typename Visit>
void VisitBelow(SectionPath const &path, std::vector<SectionKey> const &keys, Visit visit) {
  if (path.names().size() >= kDeepest) return;
  for (FoundName const &found : NamesAlong(keys, &SectionKey::SectionNames)) {
    SectionPath const below = path.Below(found.name);
    visit(below);
    VisitBelow(below, AllBelow(keys, found.name), visit);
  }
}

}  // namespace

SectionNames::SectionNames(std::vector<SectionPath> const &named) {
  for (SectionPath const &path : named) paths_.emplace(path.id(), path);
  for (StandardSection const &section : StandardSections()) {
    SectionPath path = StandardSectionNamed(section.name);
    paths_.emplace(path.id(), std::move(path));
  }
  paths_.emplace(0, SectionPath());
}

std::optional<SectionPath> SectionNames::Find(int32_t id) {
  if (!paths_.contains(id)) AddStored();
  auto const found = paths_.find(id);
  return found == paths_.end() ? std::nullopt : std::optional(found->second);
}

void SectionNames::AddStored() {
  for (SectionPath const &path : StoredSections()) paths_.emplace(path.id(), path);
}

std::vector<SectionPath> StoredSections() {
  std::vector<SectionPath> paths;
  for (char const *const level : {"user", "shared-user"}) {
    VisitBelow({}, OpenAlong(Chain(LevelNamed(level)), {}),
               [&paths](SectionPath const &path) { paths.push_back(path); });
  }
  return paths;
}

}  // namespace zolt::tool
