#ifndef ZOLT41_TOOLS_ZOLT_REGISTRATION_H_
#define ZOLT41_TOOLS_ZOLT_REGISTRATION_H_

#include <optional>
#include <string>

#include "tools/zolt/diagnosis.h"

namespace zolt::tool {

inline constexpr char kClassName[] = "Brindle.PrefManager";

// How the class of the component server is registered where clients find its module first, or
// without one, where they find it first.
struct Registration {
  char const *scope;   // "user", "machine", or "" if it is nowhere
  std::string module;  // empty if none is entered
  bool whole;          // as zolt register does it
};

// After PrepareLibrary. What cannot be read is taken for nothing.
Registration FindRegistration();

// What keeps clients from the class that is registered.
std::optional<Problem> ProblemOf(Registration const &registration);

// "for this user" or "for all users".
char const *ScopeText(bool machine);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_REGISTRATION_H_
