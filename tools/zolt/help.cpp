#include "tools/zolt/help.h"

#include <algorithm>
#include <vector>

#include "tools/zolt/errors.h"
#include "tools/zolt/near_name.h"

namespace zolt::tool {

namespace {

constexpr size_t kColumn = 24;

// A name in its column and a text, of which further lines stand in the same column.
std::string Row(std::string name, std::string_view text) {
  name.resize(std::max(kColumn, name.size() + 1), ' ');
  std::string row = name;
  for (char const c : text) {
    row += c;
    if (c == '\n') row.append(kColumn, ' ');
  }
  return row + "\n";
}

std::string OptionRow(Option const &option) {
  std::string name = "  ";
  name += option.letter == 0 ? "   " : std::string("-") + option.letter + ",";
  name += " --" + std::string(option.name);
  if (!option.value.empty()) name += " " + std::string(option.value);
  return Row(name, option.help);
}

template <typename Wanted>
std::string OptionRows(Wanted wanted) {
  std::string rows;
  for (Option const &option : Options())
    if (wanted(option)) rows += OptionRow(option);
  return rows;
}

std::string VerbRows(std::string_view group) {
  std::string rows;
  for (Verb const *const verb : Verbs()) {
    if (!group.empty() && verb->group != group) continue;
    rows += Row("  " + NameOf(*verb), verb->summary);
  }
  return rows;
}

std::string AboutVerb(Verb const &verb) {
  std::string text = "usage: " + UsageOf(verb) + "\n\n" + std::string(verb.description) + "\n";
  std::string const rows =
      OptionRows([&verb](Option const &option) { return verb.options.Has(option.id); });
  if (!rows.empty()) text += "\nOptions:\n" + rows;
  return text + "\nThe options that every verb takes: zolt help.\n\nExamples:\n" +
         std::string(verb.examples);
}

std::string AboutAll() {
  return "usage: zolt [OPTION]... GROUP VERB [OPERAND]...\n"
         "\n"
         "Preferences that programs share.\n"
         "\n" +
         VerbRows("") + "\nOptions, anywhere before --:\n" +
         OptionRows([](Option const &option) { return option.global; }) +
         "\n"
         "A section is a path of names with : or a backslash between them (Conferencing:Audio), a\n"
         "bare standard name (Audio), or a four-letter id (@AUDI); a lone : is the top.\n"
         "\n"
         "Ends with 0: done; 1: no such value, or an expectation failed; 2: wrong usage; 3: not\n"
         "permitted, or an I/O error; 4: damaged data; 5: locked, trying again may help.\n"
         "\n"
         "More: zolt help GROUP VERB.\n";
}

[[noreturn]] void RefuseWord(std::string_view word, std::string_view group) {
  std::vector<std::string> names;
  for (Verb const *const verb : Verbs()) {
    if (group.empty()) names.emplace_back(verb->group);
    bool const named = !verb->name.empty();
    if (named && (group.empty() || verb->group == group)) names.emplace_back(verb->name);
  }
  std::string const near = DidYouMean(word, names);
  Refuse(std::string(word), "no such command", near.empty() ? "zolt help lists them" : near);
}

// A verb by its name alone, in whatever group.
std::string AboutVerbs(std::string_view name) {
  std::string text;
  for (Verb const *const verb : Verbs()) {
    if (verb->name != name) continue;
    if (!text.empty()) text += "\n";
    text += AboutVerb(*verb);
  }
  return text;
}

}  // namespace

std::string ShortUsage() {
  return "usage: zolt [OPTION]... GROUP VERB [OPERAND]...\n" + VerbRows("") +
         "More: zolt help, zolt help GROUP VERB.";
}

std::string UsageOf(Verb const &verb) {
  std::string usage = "zolt " + NameOf(verb);
  if (!verb.operands.empty()) usage += " " + std::string(verb.operands);
  return usage;
}

std::string HelpFor(std::span<std::string_view const> words) {
  if (words.empty()) return AboutAll();
  if (!IsGroup(words[0])) {
    std::string text = words.size() == 1 ? AboutVerbs(words[0]) : "";
    if (text.empty()) RefuseWord(words[0], "");
    return text;
  }
  Verb const *const alone = FindVerb(words[0], "");
  if (alone != nullptr) return AboutVerb(*alone);
  if (words.size() == 1) {
    return "usage: zolt " + std::string(words[0]) + " VERB [OPERAND]...\n\n" + VerbRows(words[0]) +
           "\nMore: zolt help " + std::string(words[0]) + " VERB.\n";
  }
  Verb const *const verb = FindVerb(words[0], words[1]);
  if (verb == nullptr) RefuseWord(words[1], words[0]);
  return AboutVerb(*verb);
}

}  // namespace zolt::tool
