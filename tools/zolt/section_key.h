#ifndef ZOLT41_TOOLS_ZOLT_SECTION_KEY_H_
#define ZOLT41_TOOLS_ZOLT_SECTION_KEY_H_

#include <span>
#include <string>
#include <utility>
#include <vector>

#include "tools/zolt/level.h"
#include "tools/zolt/section_path.h"
#include "tools/zolt/settings.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

// A section in one store, for reading: it is opened only where it exists, and nothing is made.
class SectionKey {
 public:
  // A store that only answers what the one before it does not may be closed to us; it then holds
  // nothing. Any other failure throws.
  enum class Role { first, fallback };

  SectionKey(Level const &level, SectionPath const &path, Role role);
  SectionKey(SectionKey &&other) noexcept
      : level_(other.level_), key_(std::exchange(other.key_, 0)) {}
  SectionKey(SectionKey const &) = delete;
  SectionKey &operator=(SectionKey const &) = delete;
  SectionKey &operator=(SectionKey &&) = delete;
  ~SectionKey();

  // One that lies below this one in the same store.
  SectionKey Below(std::string const &name) const;

  Level const &level() const { return *level_; }
  // 0 if the store has no such section.
  HKEY key() const { return key_; }

  // In the order of first writing.
  std::vector<std::string> ValueNames() const;
  std::vector<std::string> SectionNames() const;

 private:
  SectionKey(Level const &level, HKEY key) : level_(&level), key_(key) {}

  Level const *level_;
  HKEY key_ = 0;
};

// The section in every store that a read asks, in its order; those that lack it have key 0.
std::vector<SectionKey> OpenAlong(std::vector<Level const *> const &levels,
                                  SectionPath const &path);

// The section is one that programs know, or exists in one of the stores.
bool Exists(SectionPath const &path, std::vector<SectionKey> const &keys);

// Fails with the section's name and one that is near it.
[[noreturn]] void FailWithoutSection(std::vector<Level const *> const &levels,
                                     SectionPath const &path);

// Says, unless it is to be quiet, of each section that does not exist yet and has a name near to
// one that does, that it `is`, "is a new section" for instance: it may be a slip.
void SayMissingSections(std::span<SectionPath const *const> paths, char const *is,
                        Settings const &settings);
inline constexpr char kIsNew[] = "is a new section";
inline constexpr char kIsMissing[] = "does not exist yet";

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_SECTION_KEY_H_
