#ifndef ZOLT41_TOOLS_ZOLT_STORE_SNAPSHOT_H_
#define ZOLT41_TOOLS_ZOLT_STORE_SNAPSHOT_H_

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/zolt/level.h"
#include "tools/zolt/preference_text.h"
#include "tools/zolt/progress.h"
#include "tools/zolt/section_key.h"

namespace zolt::tool {

// Names of sections and values to be left out: patterns as a shell has them, without regard to the
// case of ASCII letters, in which * stands for colons too. What lies below a section that is left
// out goes with it.
class Exclusions {
 public:
  explicit Exclusions(std::vector<std::string_view> const &patterns);

  bool Match(SectionPath const &path) const;
  bool Match(SectionPath const &path, std::string const &name) const;
  // Those that have matched nothing, as they were given.
  std::vector<std::string> Unused() const;

 private:
  struct Pattern {
    std::string given;
    std::string text;  // with the path of a standard section that it begins with
    mutable bool used = false;
  };

  bool MatchText(std::string const &text) const;

  std::vector<Pattern> patterns_;
};

// Gives each section of a store from `path` down to `take`, sorted by names, with its values,
// sorted too. Of what lies above, and of sections whose values are all left out, only those are
// given that the library does not make itself, as being there; empty ones of these, too. False if
// there is no such section.
bool VisitStore(Level const &level, SectionPath const &path, Exclusions const &exclusions,
                std::function<void(TextSection &&)> const &take);

// All of it as it was at one moment. Nobody can write meanwhile, so nothing should be written out
// before it is over. Of a store that we may not write there is no such moment. Throws if there is
// no such section.
std::vector<TextSection> SnapshotOf(Level const &level, SectionPath const &path,
                                    Exclusions const &exclusions, Progress *progress);

// The values of one section, sorted.
TextSection ReadSection(SectionPath const &path, SectionKey const &key);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_STORE_SNAPSHOT_H_
