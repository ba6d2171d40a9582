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
  bool signedNames = false;  // takes operands such as -NAME
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
extern Verb const kPrefsEdit;
extern Verb const kCardNew;
extern Verb const kCardShow;
extern Verb const kCardGet;
extern Verb const kCardSet;
extern Verb const kCardUnset;
extern Verb const kCardPrefs;
extern Verb const kCardConvert;
extern Verb const kCardVCard;
extern Verb const kCardDiff;
extern Verb const kCardCheck;
extern Verb const kRolodexCreate;
extern Verb const kRolodexInfo;
extern Verb const kRolodexList;
extern Verb const kRolodexAdd;
extern Verb const kRolodexGet;
extern Verb const kRolodexNew;
extern Verb const kRolodexEdit;
extern Verb const kRolodexReplace;
extern Verb const kRolodexRemove;
extern Verb const kRolodexRename;
extern Verb const kRolodexTag;
extern Verb const kRolodexCategory;
extern Verb const kRolodexFind;
extern Verb const kRolodexQuery;
extern Verb const kRolodexSelect;
extern Verb const kRolodexDupes;
extern Verb const kRolodexImport;
extern Verb const kRolodexExport;
extern Verb const kRolodexCompact;
extern Verb const kRolodexCheck;
extern Verb const kNetStatus;
extern Verb const kNetAddress;
extern Verb const kOpen;
extern Verb const kMail;
extern Verb const kRegister;
extern Verb const kUnregister;
extern Verb const kDoctor;
extern Verb const kCompletion;

std::span<Verb const *const> Verbs();

// "GROUP NAME", or the group alone.
std::string NameOf(Verb const &verb);

// Null if there is none.
Verb const *FindVerb(std::string_view group, std::string_view name);
bool IsGroup(std::string_view name);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_VERBS_H_
