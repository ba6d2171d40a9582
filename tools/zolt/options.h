#ifndef ZOLT41_TOOLS_ZOLT_OPTIONS_H_
#define ZOLT41_TOOLS_ZOLT_OPTIONS_H_

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>

namespace zolt::tool {

// In the order of the table.
enum class OptionId : uint8_t {
  home,
  tree,
  level,
  only,
  json,
  color,
  progress,
  wait,
  quiet,
  yes,
  dryRun,
  exitCode,
  nul,
  help,
  version,
  type,
  defaultValue,
  parentFirst,
  output,
  from,
  ifValue,
  ifAbsent,
  recursive,
  initial,
  eventCount,
  timeout,
  asCommands,
  exclude,
  replace,
  undo,
  patch,
  add,
  remove,
  flags,
  to,
  profile,
  subject,
  text,
  compose,
  file,
  first,
  all,
  category,
  email,
  tel,
  prune,
  format,
  repair,
  machine,
  module,
  count,
};

struct Option {
  OptionId id;
  char letter;             // 0: none
  std::string_view name;   // without the dashes
  std::string_view value;  // how the help calls its value; empty: it takes none
  bool global;             // every verb takes it
  std::string_view help;
};

std::span<Option const> Options();
Option const &OptionOf(OptionId id);

// Null if there is none.
Option const *FindOption(std::string_view name);
Option const *FindOption(char letter);

// A set of options.
class OptionSet {
 public:
  constexpr OptionSet() = default;
  constexpr OptionSet(std::initializer_list<OptionId> ids) {
    for (OptionId const id : ids) Add(id);
  }
  constexpr void Add(OptionId id) { bits_ |= Bit(id); }
  constexpr bool Has(OptionId id) const { return (bits_ & Bit(id)) != 0; }

 private:
  static constexpr uint64_t Bit(OptionId id) { return uint64_t{1} << static_cast<unsigned>(id); }

  uint64_t bits_ = 0;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_OPTIONS_H_
