#include "tools/zolt/verbs.h"

#include <algorithm>

namespace zolt::tool {

namespace {

constexpr Verb const *kVerbs[] = {
    &kPrefsGet,       &kPrefsSet,       &kPrefsUnset,    &kPrefsList,     &kPrefsExplain,
    &kPrefsItems,     &kPrefsWatch,     &kPrefsWait,     &kPrefsDump,     &kPrefsLoad,
    &kPrefsDiff,      &kPrefsClear,     &kPrefsEdit,     &kCardNew,       &kCardShow,
    &kCardGet,        &kCardSet,        &kCardUnset,     &kCardPrefs,     &kCardConvert,
    &kCardVCard,      &kCardDiff,       &kCardCheck,     &kRolodexCreate, &kRolodexInfo,
    &kRolodexList,    &kRolodexAdd,     &kRolodexGet,    &kRolodexNew,    &kRolodexEdit,
    &kRolodexReplace, &kRolodexRemove,  &kRolodexRename, &kRolodexTag,    &kRolodexCategory,
    &kRolodexFind,    &kRolodexQuery,   &kRolodexSelect, &kRolodexDupes,  &kRolodexImport,
    &kRolodexExport,  &kRolodexCompact, &kRolodexCheck,  &kNetStatus,     &kNetAddress,
    &kOpen,           &kMail,           &kRegister,      &kUnregister,    &kDoctor,
    &kCompletion,
};

}  // namespace

std::span<Verb const *const> Verbs() {
  return kVerbs;
}

std::string NameOf(Verb const &verb) {
  std::string name(verb.group);
  if (!verb.name.empty()) name += " " + std::string(verb.name);
  return name;
}

Verb const *FindVerb(std::string_view group, std::string_view name) {
  for (Verb const *const verb : kVerbs)
    if (verb->group == group && verb->name == name) return verb;
  return nullptr;
}

bool IsGroup(std::string_view name) {
  return std::ranges::any_of(kVerbs, [name](Verb const *verb) { return verb->group == name; });
}

}  // namespace zolt::tool
