#include "zolt41/prefs/announced_ids.h"

#include <algorithm>
#include <string>

#include "zolt41/platform/system/ascii_case.h"
#include "zolt41/prefs/section_list.h"
#include "zolt41/prefs/section_name_hash.h"
#include "zolt41/prefs/standard_sections.h"

namespace zolt {
namespace {

StandardSection const *StandardById(int32_t id) {
  auto const sections = StandardSections();
  auto const found = std::ranges::find(sections, id, &StandardSection::id);
  return found == sections.end() ? nullptr : &*found;
}

// The standard section that lies where the section does: no standard one lies deeper than in
// another.
StandardSection const *StandardByPlace(Section const &section) {
  int32_t parent = 0;
  if (section.parent != 0) {
    StandardSection const *above = StandardById(section.parent);
    Section const *const record = sectionList.Find(section.parent);
    if (above == nullptr && record != nullptr && record->parent == 0) {
      above = StandardByPlace(*record);
    }
    if (above == nullptr) return nullptr;
    parent = above->id;
  }
  for (StandardSection const &standard : StandardSections()) {
    if (standard.parent == parent && EqualButForAsciiCase(standard.name, section.name)) {
      return &standard;
    }
  }
  return nullptr;
}

int32_t IdByName(StandardSection const &standard) {
  StandardSection const *const above = StandardById(standard.parent);
  std::string const names = (above == nullptr ? "" : std::string(above->name)) + standard.name;
  return SectionNameHash(names.c_str());
}

}  // namespace

AnnouncedIds IdsToAnnounce(int32_t section) {
  StandardSection const *standard = StandardById(section);
  Section const *const record = sectionList.Find(section);
  if (standard == nullptr && record != nullptr) standard = StandardByPlace(*record);
  if (standard == nullptr) return {section, 0};
  int32_t const byName = IdByName(*standard);
  return {standard->id, byName == standard->id ? 0 : byName};
}

}  // namespace zolt
