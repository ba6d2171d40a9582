#ifndef ZOLT41_TOOLS_ZOLT_OUTCOME_H_
#define ZOLT41_TOOLS_ZOLT_OUTCOME_H_

#include <string>

#include "tools/zolt/verbs.h"

namespace zolt::tool {

// What a verb ends with that changes something, or would.
int CodeOfChange(Call const &call, bool changes);

// Tells of a file that was written, or in a dry run would be. Gives the exit code.
int TellFile(std::string const &path, Call const &call);

// What is done with the first operand by another program, and leaves nothing to be seen here.
struct Deed {
  char const *subject;  // how a document calls the operand
  char const *done;     // and whether it was done
  char const *would;    // what is said in a dry run
};

// Tells of it, as done or in a dry run not. Gives the exit code.
int TellDeed(Deed const &deed, Call const &call);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_OUTCOME_H_
