#ifndef ZOLT41_TOOLS_ZOLT_SECTION_NAMES_H_
#define ZOLT41_TOOLS_ZOLT_SECTION_NAMES_H_

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "tools/zolt/section_path.h"

namespace zolt::tool {

// Which section an id stands for: one that was named, a standard one, or one that is found in the
// stores.
class SectionNames {
 public:
  explicit SectionNames(std::vector<SectionPath> const &named);

  // Nothing for an id that a program made up for itself.
  std::optional<SectionPath> Find(int32_t id);

 private:
  void AddStored();

  std::map<int32_t, SectionPath> paths_;
};

// All sections that are found in the stores of the user and of the machine; one may come twice.
std::vector<SectionPath> StoredSections();

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_SECTION_NAMES_H_
