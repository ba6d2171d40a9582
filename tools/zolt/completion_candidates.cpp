#include <algorithm>
#include <cctype>
#include <exception>
#include <iterator>
#include <memory>
#include <set>

#include "tools/zolt/book.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/chain_read.h"
#include "tools/zolt/completion.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/section_names.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

using Candidates = std::vector<Candidate>;

constexpr size_t kMostCards = 1000;  // nobody picks from more

Candidates FromWords(std::span<std::string_view const> words) {
  Candidates candidates;
  for (std::string_view const word : words) candidates.push_back({std::string(word)});
  return candidates;
}

Candidates OptionNames(Verb const *verb) {
  Candidates names;
  for (Option const &option : Options()) {
    if (!option.global && (verb == nullptr || !verb->options.Has(option.id))) continue;
    std::string_view const help = option.help;
    names.push_back({"--" + std::string(option.name), help.substr(0, help.find('\n'))});
  }
  return names;
}

Candidates OptionValues(OptionId id) {
  struct Row {
    OptionId id;
    std::vector<std::string_view> words;
  };
  static std::vector<Row> const rows = {
      {OptionId::level, {"user", "system", "shared-user", "shared-system"}},
      {OptionId::color, {"auto", "always", "never"}},
      {OptionId::progress, {"auto", "always", "never"}},
      {OptionId::type, {"text", "num", "bool", "bytes"}},
      {OptionId::to, {"card", "text"}},
      {OptionId::profile, {"classic", "3.0", "4.0"}},
      {OptionId::format, {"card", "text", "vcard"}},
  };
  auto const row = std::ranges::find(rows, id, &Row::id);
  return row == rows.end() ? Candidates() : FromWords(row->words);
}

// The groups, or with a group the verbs in it.
Candidates Commands(std::string_view group) {
  Candidates commands;
  for (Verb const *const verb : Verbs()) {
    if (!group.empty() && verb->group != group) continue;
    bool const alone = verb->name.empty() || !group.empty();
    std::string_view const name = group.empty() ? verb->group : verb->name;
    if (!commands.empty() && commands.back().word == name) continue;
    commands.push_back({std::string(name), alone ? verb->summary : ""});
  }
  return commands;
}

Candidates Sections() {
  Candidates sections;
  std::set<std::string> seen;
  auto const add = [&](std::string const &text) {
    if (seen.insert(text).second) sections.push_back({text});
  };
  for (StandardSection const &section : StandardSections()) {
    SectionPath const path = StandardSectionNamed(section.name);
    if (path.names().size() > 1) add(ToUtf8(path.names().back()));
    add(path.Text());
  }
  for (SectionPath const &path : StoredSections()) add(path.Text());
  return sections;
}

Candidates ValueNames(Call const &call, bool lists) {
  SectionPath const path = SectionPath::FromOperand(call.operands[0]);
  Candidates names;
  auto const keys = OpenAlong(ReadLevels(call.settings), path);
  for (FoundName const &found : NamesAlong(keys, &SectionKey::ValueNames)) {
    std::string name = ToUtf8(found.name);
    if (lists) {
      size_t const digits = name.find_last_not_of("0123456789") + 1;
      if (digits == 0 || digits == name.size()) continue;
      name.resize(digits);
    }
    names.push_back({std::move(name), found.level->name});
  }
  return names;
}

Candidates PropertyNames(Call const &call) {
  Candidates names;
  std::unique_ptr<CallCard> const card = LoadCard(call, call.operands[0]);
  for (CardProperty const &property : PropertiesOf(card.get())) names.push_back({property.name});
  return names;
}

Candidates CategoryNames(Call const &call, std::string_view sign) {
  Candidates names;
  Book book(call, Book::Access::read);
  for (auto const &[category, name] : book.CategoryNames())
    names.push_back({std::string(sign) + name, {}});
  return names;
}

Candidates CardNames(Call const &call, std::string_view begin) {
  Candidates names;
  Book book(call, Book::Access::read);
  for (uint32_t const id : book.Ids()) {
    std::string name = ToUtf8(book.Head(id).names[0]);
    if (!name.empty() && name.starts_with(begin)) names.push_back({std::move(name)});
    if (names.size() == kMostCards) break;
  }
  return names;
}

// How the usage calls the operand at that place: of "SECTION NAME VALUE [NAME VALUE]..." the fourth
// and the sixth are NAME. Empty where there is none.
std::string_view OperandAt(std::string_view usage, size_t place) {
  std::vector<std::string_view> names;
  size_t group = 0;  // what is repeated begins there
  bool repeats = false;
  while (!usage.empty()) {
    std::string_view name = usage.substr(0, usage.find(' '));
    usage.remove_prefix(std::min(name.size() + 1, usage.size()));
    repeats = name.ends_with("...");
    if (repeats) name.remove_suffix(3);
    if (name.starts_with('[') || (repeats && !name.ends_with(']'))) group = names.size();
    if (name.starts_with('[')) name.remove_prefix(1);
    if (name.ends_with(']')) name.remove_suffix(1);
    names.push_back(name);
  }
  if (place < names.size()) return names[place];
  return repeats ? names[group + (place - group) % (names.size() - group)] : "";
}

Candidates Operands(Verb const &verb, Call const &call, std::string_view begin) {
  std::string_view const name = OperandAt(verb.operands, call.operands.size());
  if (verb.name == "prefs" && call.operands.size() == 1) {
    constexpr std::string_view kVerbs[] = {"list", "get", "set", "unset"};
    return FromWords(kVerbs);
  }
  if (verb.signedNames) {
    bool const isSigned = begin.starts_with('+') || begin.starts_with('-');
    return isSigned ? CategoryNames(call, begin.substr(0, 1)) : CardNames(call, begin);
  }
  bool const ofCard = verb.name == "prefs" && call.operands.size() == 2;
  if (name == "SECTION" || ofCard) return Sections();
  if (name == "SHELL") {
    constexpr std::string_view kShells[] = {"bash", "zsh", "fish"};
    return FromWords(kShells);
  }
  if (name == "LIST") return ValueNames(call, true);
  if (name == "NAME" && verb.group == "prefs") return ValueNames(call, false);
  if (name == "NAME" && verb.group == "card") return PropertyNames(call);
  if (name == "CARD" && verb.name != "add") return CardNames(call, begin);
  return {};
}

Candidates Unfiltered(std::span<std::string_view const> words, Output &out) {
  std::string_view const last = words.back();
  std::vector<std::string> before = {"--wait", "0"};
  before.insert(before.end(), words.begin(), words.end() - 1);
  bool const dashed = std::ranges::find(before, "--") != before.end();
  // A value of an option in a word of its own.
  Option const *valued = nullptr;
  if (std::string_view const word = before.back(); !dashed && word.size() > 1 && word[0] == '-') {
    bool const isLong = word[1] == '-';
    valued = isLong ? FindOption(word.substr(2)) : FindOption(word.back());
    if (valued != nullptr && valued->value.empty()) valued = nullptr;
  }
  bool const ofCategory = valued != nullptr && valued->id == OptionId::category;
  if (before.size() > 2 && valued != nullptr && !ofCategory) return OptionValues(valued->id);
  if (ofCategory) before.pop_back();
  std::vector<char const *> pointers;
  pointers.reserve(before.size());
  for (std::string const &word : before) pointers.push_back(word.c_str());
  Arguments const arguments(pointers);
  auto operands = arguments.operands();
  if (!operands.empty() && operands[0] == "help") operands = operands.subspan(1);
  Verb const *verb = operands.empty() ? nullptr : FindVerb(operands[0], "");
  if (verb == nullptr && operands.size() > 1) verb = FindVerb(operands[0], operands[1]);
  bool const isOption = last.starts_with('-') && !dashed && !ofCategory;
  bool const maybeName = verb != nullptr && verb->signedNames && !last.starts_with("--");
  if (isOption && !maybeName) return OptionNames(verb);
  if (operands.empty()) {
    Candidates commands = Commands("");
    commands.push_back({"help", "what a group or a verb does"});
    return commands;
  }
  if (verb == nullptr) return operands.size() == 1 ? Commands(operands[0]) : Candidates();
  Settings const settings(arguments);
  PrepareLibrary(arguments, settings);
  Call const call = {arguments, settings, operands.subspan(verb->name.empty() ? 1 : 2), out};
  if (ofCategory) return CategoryNames(call, "");
  Candidates candidates = Operands(*verb, call, last);
  if (isOption) std::ranges::move(OptionNames(verb), std::back_inserter(candidates));
  return candidates;
}

}  // namespace

std::vector<Candidate> CandidatesFor(std::span<std::string_view const> words, Output &out) {
  try {
    Candidates candidates = Unfiltered(words, out);
    std::erase_if(candidates, [&](Candidate const &candidate) {
      return !candidate.word.starts_with(words.back());
    });
    return candidates;
  } catch (ToolError const &) {
    // What is wrong is said when the line is run.
    return {};
  }
}

}  // namespace zolt::tool
