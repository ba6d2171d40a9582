#ifndef ZOLT41_TOOLS_ZOLT_VERBS_H_
#define ZOLT41_TOOLS_ZOLT_VERBS_H_

#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <string_view>

#include "tools/zolt/arguments.h"
#include "tools/zolt/options.h"
#include "tools/zolt/output.h"
#include "tools/zolt/settings.h"

namespace zolt::tool {

// A command line that asks for a verb.
struct Call {
  Arguments const &arguments;
  Settings const &settings;
  std::span<std::string_view const> operands;  // behind the verb
  Output &out;
};

inline constexpr size_t kAnyNumber = std::numeric_limits<size_t>::max();

// What the tool can do. A verb has a file of its own and a row in the table of verbs.cpp.
struct Verb {
  std::string_view group;
  std::string_view name;      // empty: the group is a verb itself
  std::string_view operands;  // as the usage shows them
  std::string_view summary;   // a few words, for the list of verbs
  OptionSet options;          // those that it takes beside the global ones
  size_t least;               // how many operands it takes
  size_t most;
  int (*run)(Call const &call);  // gives the exit code, or throws
  std::string_view description;
  std::string_view examples;
};

extern Verb const kPrefsGet;
extern Verb const kPrefsSet;
extern Verb const kPrefsUnset;
extern Verb const kPrefsList;
extern Verb const kPrefsExplain;
extern Verb const kPrefsWatch;
extern Verb const kPrefsWait;
extern Verb const kPrefsItems;
extern Verb const kPrefsDump;
extern Verb const kPrefsLoad;
extern Verb const kPrefsDiff;
extern Verb const kPrefsClear;
extern Verb const kDoctor;

std::span<Verb const *const> Verbs();

// "GROUP NAME", or the group alone.
std::string NameOf(Verb const &verb);

// Null if there is none.
Verb const *FindVerb(std::string_view group, std::string_view name);
bool IsGroup(std::string_view name);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_VERBS_H_
