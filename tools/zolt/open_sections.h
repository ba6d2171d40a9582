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

namespace zolt::tool {

// Sections opened in the store that the process has of its level, so that a transaction finds them.
// Those that are missing are made, with what lies above them.
class OpenSections {
 public:
  OpenSections(Level const &level, std::span<SectionPath const *const> paths);

  // The id under which the section is open: its own, or where another one has the same, or it has
  // none, one that only this process uses.
  uint32_t IdOf(SectionPath const &path) const;

 private:
  void OpenAll(std::span<SectionPath const *const> paths);
  int32_t Open(SectionPath const &path);
  int32_t IdFor(SectionPath const &path);

  std::optional<StoreSession> store_;
  std::optional<LibrarySession> library_;
  WinPrefs *prefs_ = nullptr;
  std::unordered_map<std::string, int32_t> ids_;  // by path
  std::unordered_set<int32_t> taken_;
  int32_t lastOwnId_;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_OPEN_SECTIONS_H_
