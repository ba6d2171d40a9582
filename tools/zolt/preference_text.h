#ifndef ZOLT41_TOOLS_ZOLT_PREFERENCE_TEXT_H_
#define ZOLT41_TOOLS_ZOLT_PREFERENCE_TEXT_H_

#include <string>
#include <string_view>
#include <vector>

#include "tools/zolt/level.h"
#include "tools/zolt/section_path.h"
#include "tools/zolt/stored_value.h"

namespace zolt::tool {

// Preferences of one store as a text that a person can read and edit, as
// docs/formats/preference_text.md describes it. Names and values are in the code page of the
// stores.

struct TextValue {
  std::string name;
  MaybeRaw value;  // nothing: a line that unsets it
};

struct TextSection {
  SectionPath path;
  std::vector<TextValue> values = {};
  bool onlyThere = false;  // it is only said to exist; nothing is said of its values
  std::string place = {};  // file, line and column, where it was read
};

struct PreferenceText {
  Level const *level;
  std::vector<TextSection> sections;
};

// The whole text, in the order given.
std::string TextOf(PreferenceText const &text);

// The same in parts.
std::string TextHead(Level const &level);
std::string TextOf(TextSection const &section);
std::string TextEnd();

// Throws, with `name` and line and column, at the first thing that is wrong.
PreferenceText ReadPreferenceText(std::string_view text, std::string const &name);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_PREFERENCE_TEXT_H_
