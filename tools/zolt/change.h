#ifndef ZOLT41_TOOLS_ZOLT_CHANGE_H_
#define ZOLT41_TOOLS_ZOLT_CHANGE_H_

#include <string>
#include <vector>

#include "tools/zolt/output.h"
#include "tools/zolt/section_path.h"
#include "tools/zolt/settings.h"
#include "tools/zolt/stored_value.h"

namespace zolt::tool {

// One value of one store, before and after.
struct Change {
  std::string name;  // in the code page of the stores
  StoredValue before;
  StoredValue after;

  bool changes() const { return before != after; }
};

// A name of a value that a verb was given, in the code page of the stores. Throws a usage error for
// the empty name.
std::string ValueName(std::string_view operand);

// The section and the value, for a message.
std::string Subject(SectionPath const &path, std::string const &name);

// Says what was done, or would be. Gives the exit code.
int ReportChanges(SectionPath const &path, std::vector<Change> const &changes,
                  Settings const &settings, Output &out);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CHANGE_H_
