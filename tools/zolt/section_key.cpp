#include "tools/zolt/section_key.h"

#include <algorithm>

#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/near_name.h"
#include "tools/zolt/output.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

constexpr uint32_t kNameSize = 16384;

HKEY TopKey(Level const &level, SectionKey::Role role) {
  HKEY const key = OpenTop(level);
  if (key != 0 || ZOLTLastFailure(nullptr, 0) == 0) return key;
  ToolError const failure = StoreFailure(std::string(level.name) + " store");
  bool const closed = failure.kind == std::string_view("denied");
  if (role == SectionKey::Role::first || !closed) throw failure;
  return 0;
}

HKEY OpenBelow(HKEY parent, std::string const &name) {
  HKEY key = 0;
  int32_t const result = RegOpenKeyA(parent, name.c_str(), &key);
  bool const absent = result == ERROR_FILE_NOT_FOUND || result == ERROR_KEY_DELETED;
  if (result != ERROR_SUCCESS && !absent) throw StoreFailure(ToUtf8(name));
  return key;
}

template <typename Enumerate>
std::vector<std::string> Names(HKEY key, Enumerate enumerate) {
  std::vector<std::string> names;
  if (key == 0) return names;
  std::string name(kNameSize, '\0');
  for (uint32_t i = 0;; i++) {
    uint32_t length = kNameSize;
    int32_t const result =
        enumerate(key, i, name.data(), &length, nullptr, nullptr, nullptr, nullptr);
    if (result == ERROR_NO_MORE_ITEMS || result == ERROR_KEY_DELETED) return names;
    if (result != ERROR_SUCCESS) throw StoreFailure("");
    names.push_back(name.substr(0, length));
  }
}

// How many of the path's names lead to sections that exist in some store.
size_t KnownNames(std::vector<Level const *> const &levels, SectionPath const &path) {
  size_t count = path.names().size();
  while (count > 0 && !Exists(path.Above(count), OpenAlong(levels, path.Above(count)))) count--;
  return count;
}

// The path with its first unknown name replaced.
std::string Replaced(SectionPath const &path, size_t known, std::string const &name) {
  SectionPath replaced = path.Above(known).Below(name);
  for (size_t i = known + 1; i < path.names().size(); i++)
    replaced = replaced.Below(path.names()[i]);
  return replaced.Text();
}

std::string NearSection(std::vector<Level const *> const &levels, SectionPath const &path) {
  size_t const known = KnownNames(levels, path);
  // Somebody has made it meanwhile.
  if (known == path.names().size()) return "";
  std::vector<std::string> names;
  std::vector<std::string> paths;
  for (SectionKey const &key : OpenAlong(levels, path.Above(known))) {
    for (std::string const &name : key.SectionNames()) {
      names.push_back(name);
      paths.push_back(Replaced(path, known, name));
    }
  }
  for (StandardSection const &section : StandardSections()) {
    if (known != 0 || section.parent == 0) continue;
    names.emplace_back(section.name);
    SectionPath full = StandardSectionNamed(section.name);
    for (size_t i = 1; i < path.names().size(); i++) full = full.Below(path.names()[i]);
    paths.push_back(full.Text());
  }
  size_t const place = NearName(path.names()[known], names);
  return place == names.size() ? "" : "did you mean " + paths[place] + "?";
}

}  // namespace

SectionKey::SectionKey(Level const &level, SectionPath const &path, Role role)
    : level_(&level), key_(TopKey(level, role)) {
  for (std::string const &name : path.names()) {
    if (key_ == 0) return;
    HKEY const below = OpenBelow(key_, name);
    RegCloseKey(key_);
    key_ = below;
  }
}

SectionKey::~SectionKey() {
  if (key_ != 0) RegCloseKey(key_);
}

SectionKey SectionKey::Below(std::string const &name) const {
  return {*level_, key_ == 0 ? 0 : OpenBelow(key_, name)};
}

std::vector<std::string> SectionKey::ValueNames() const {
  return Names(key_, RegEnumValueA);
}

std::vector<std::string> SectionKey::SectionNames() const {
  return Names(key_, RegEnumKeyExA);
}

std::vector<SectionKey> OpenAlong(std::vector<Level const *> const &levels,
                                  SectionPath const &path) {
  std::vector<SectionKey> keys;
  keys.reserve(levels.size());
  for (Level const *const level : levels) {
    keys.emplace_back(*level, path,
                      keys.empty() ? SectionKey::Role::first : SectionKey::Role::fallback);
  }
  return keys;
}

bool Exists(SectionPath const &path, std::vector<SectionKey> const &keys) {
  if (path.top() || path.standard()) return true;
  return std::ranges::any_of(keys, [](SectionKey const &key) { return key.key() != 0; });
}

void FailWithoutSection(std::vector<Level const *> const &levels, SectionPath const &path) {
  throw ToolError(kNo, "absent", path.Text(), "no such section", NearSection(levels, path));
}

void SayMissingSections(std::span<SectionPath const *const> paths, char const *is,
                        Settings const &settings) {
  if (settings.quiet || settings.json) return;
  std::vector<Level const *> const levels = Chain(*settings.level);
  for (SectionPath const *const path : paths) {
    if (Exists(*path, OpenAlong(levels, *path))) continue;
    std::string const near = NearSection(levels, *path);
    if (near.empty()) continue;
    WriteError("zolt: " + Escape(path->Text() + " " + is + "; " + near));
  }
}

}  // namespace zolt::tool
