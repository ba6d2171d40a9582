#ifndef ZOLT41_TOOLS_ZOLT_STORE_WRITE_H_
#define ZOLT41_TOOLS_ZOLT_STORE_WRITE_H_

#include <functional>
#include <string>
#include <vector>

#include "tools/zolt/change.h"
#include "tools/zolt/level.h"
#include "tools/zolt/section_path.h"

namespace zolt::tool {

// What the store of a level holds for each name: all changes with only `before` filled in.
std::vector<Change> ReadBefore(Level const &level, SectionPath const &path,
                               std::vector<std::string> const &names);

// Reads, decides and writes with no other program's change between: `decide` fills in `after`, or
// throws, and what then differs is written, all of it or nothing. The section is made if need be.
std::vector<Change> ChangeAtOnce(Level const &level, SectionPath const &path,
                                 std::vector<std::string> const &names,
                                 std::function<void(std::vector<Change> *)> const &decide);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_STORE_WRITE_H_
