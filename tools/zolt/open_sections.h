#ifndef ZOLT41_TOOLS_ZOLT_OPEN_SECTIONS_H_
#define ZOLT41_TOOLS_ZOLT_OPEN_SECTIONS_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>

#include "tools/zolt/level.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/section_path.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

// Keys that are made in a tree while this lives are kept together or not at all. In one that may
// not be written none are made.
class KeysTogether {
 public:
  explicit KeysTogether(HKEY root) : hive_(root), begun_(hive_.Begin() == ERROR_SUCCESS) {}

  void Keep();

 private:
  HiveTransaction hive_;
  bool begun_;
};

// Sections opened in the store that the process has of its level, so that a transaction finds them.
// Those that are missing are made, with what lies above them, in both trees.
class OpenSections {
 public:
  // Gets ready; the paths must live as long as this.
  OpenSections(Level const &level, std::span<SectionPath const *const> paths);

  // What is made is kept by `Keep`, but in the tree whose transaction runs: there by that.
  void OpenAll(std::optional<HKEY> running);
  void Keep();

  // The id under which the section is open: its own, or where another one has the same, or it has
  // none, one that only this process uses.
  uint32_t IdOf(SectionPath const &path) const;

 private:
  int32_t Open(SectionPath const &path);
  int32_t IdFor(SectionPath const &path);

  std::span<SectionPath const *const> paths_;
  std::optional<StoreSession> store_;
  std::optional<LibrarySession> library_;
  std::optional<KeysTogether> user_;
  std::optional<KeysTogether> machine_;
  WinPrefs *prefs_ = nullptr;
  std::unordered_map<std::string, int32_t> ids_;  // by path
  std::unordered_set<int32_t> taken_;
  int32_t lastOwnId_;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_OPEN_SECTIONS_H_
