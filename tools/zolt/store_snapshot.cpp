#include "tools/zolt/store_snapshot.h"

#include <fnmatch.h>

#include <algorithm>
#include <utility>

#include "tools/zolt/errors.h"
#include "tools/zolt/section_key.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

// Programs make no deeper trees.
constexpr size_t kDeepest = 512;

std::string Joined(SectionPath const &path) {
  std::string text;
  for (std::string const &name : path.names()) text += (text.empty() ? "" : ":") + ToUtf8(name);
  return text;
}

std::vector<std::string> Sorted(std::vector<std::string> const &names) {
  std::vector<std::pair<std::string, std::string>> sorted;
  sorted.reserve(names.size());
  for (std::string const &name : names) sorted.emplace_back(Folded(name), name);
  std::ranges::sort(sorted);
  std::vector<std::string> result;
  result.reserve(names.size());
  for (auto &each : sorted) result.push_back(std::move(each.second));
  return result;
}

class Visit {
 public:
  Visit(Exclusions const &exclusions, std::function<void(TextSection &&)> const &take)
      : exclusions_(exclusions), take_(take) {}

  void Above(SectionPath const &path) {
    for (size_t count = 1; count < path.names().size(); count++) {
      SectionPath above = path.Above(count);
      if (!above.standard()) take_({.path = std::move(above), .onlyThere = true});
    }
  }

  void From(SectionPath const &path, SectionKey const &key) {
    if (exclusions_.Match(path) || path.names().size() > kDeepest) return;
    Take(path, key);
    for (std::string const &name : Sorted(key.SectionNames()))
      From(path.Below(name), key.Below(name));
  }

 private:
  void Take(SectionPath const &path, SectionKey const &key) {
    TextSection section = ReadSection(path, key);
    auto const excluded = [&](TextValue const &value) {
      return exclusions_.Match(path, value.name);
    };
    section.onlyThere = std::erase_if(section.values, excluded) > 0 && section.values.empty();
    if (!section.values.empty() || !path.standard()) take_(std::move(section));
  }

  Exclusions const &exclusions_;
  std::function<void(TextSection &&)> const &take_;
};

}  // namespace

Exclusions::Exclusions(std::vector<std::string_view> const &patterns) {
  for (std::string_view const given : patterns) {
    size_t const end = std::min(given.find(':'), given.size());
    SectionPath const standard = StandardSectionNamed(given.substr(0, end));
    std::string text(given);
    if (!standard.top()) text = Joined(standard) + text.substr(end);
    patterns_.push_back({std::string(given), std::move(text)});
  }
}

bool Exclusions::MatchText(std::string const &text) const {
  bool matches = false;
  for (Pattern const &pattern : patterns_) {
    if (fnmatch(pattern.text.c_str(), text.c_str(), FNM_CASEFOLD | FNM_NOESCAPE) != 0) continue;
    pattern.used = true;
    matches = true;
  }
  return matches;
}

std::vector<std::string> Exclusions::Unused() const {
  std::vector<std::string> unused;
  for (Pattern const &pattern : patterns_)
    if (!pattern.used) unused.push_back(pattern.given);
  return unused;
}

bool Exclusions::Match(SectionPath const &path) const {
  return !path.top() && MatchText(Joined(path));
}

bool Exclusions::Match(SectionPath const &path, std::string const &name) const {
  if (patterns_.empty()) return false;
  return MatchText(path.top() ? ToUtf8(name) : Joined(path) + ":" + ToUtf8(name));
}

TextSection ReadSection(SectionPath const &path, SectionKey const &key) {
  TextSection section{.path = path};
  std::vector<std::string> names = Sorted(key.ValueNames());
  section.values.reserve(names.size());
  for (std::string &name : names) {
    if (MaybeRaw raw = ReadRaw(key.key(), name)) {
      section.values.push_back({std::move(name), std::move(raw)});
    }
  }
  return section;
}

bool VisitStore(Level const &level, SectionPath const &path, Exclusions const &exclusions,
                std::function<void(TextSection &&)> const &take) {
  SectionKey const key(level, path, SectionKey::Role::first);
  if (key.key() == 0) return false;
  Visit visit(exclusions, take);
  visit.Above(path);
  visit.From(path, key);
  return true;
}

std::vector<TextSection> SnapshotOf(Level const &level, SectionPath const &path,
                                    Exclusions const &exclusions, Progress *progress) {
  HiveTransaction hive(level.root);
  bool const there = SectionKey(level, path, SectionKey::Role::first).key() != 0;
  if (!there && !path.standard()) FailWithoutSection({&level}, path);
  if (there && hive.Begin() != ERROR_SUCCESS) {
    ToolError const failure = StoreFailure(std::string(level.name) + " store");
    if (failure.kind != std::string_view("denied")) throw failure;
  }
  std::vector<TextSection> sections;
  VisitStore(level, path, exclusions, [&](TextSection &&section) {
    progress->Step(section.values.size());
    sections.push_back(std::move(section));
  });
  return sections;
}

}  // namespace zolt::tool
