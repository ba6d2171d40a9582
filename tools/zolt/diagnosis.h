#ifndef ZOLT41_TOOLS_ZOLT_DIAGNOSIS_H_
#define ZOLT41_TOOLS_ZOLT_DIAGNOSIS_H_

#include <string>
#include <vector>

#include "zolt41/zolt41.h"

namespace zolt::tool {

struct Registration;

struct Problem {
  std::string subject;  // UTF-8 or a path as it is
  std::string problem;
  std::string hint;
};

// What is wrong in the eyes of the user with the id `user`.
std::vector<Problem> Diagnose(ZOLTState const &state, uint32_t user);

// "idle", "listening" or "lagging".
char const *NameOf(ZOLTProcessKind kind);

// What a door leads to, such as "mail", and "native", "missing" or "replaced".
std::string ServiceOf(ZOLTDoorState const &door);
char const *NameOf(ZOLTDoorKind kind);

// The document of the whole state, ended by a line end.
std::string StateDocument(ZOLTState const &state, Registration const &registration,
                          std::vector<Problem> const &problems);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_DIAGNOSIS_H_
