#include <algorithm>
#include <optional>

#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/section_key.h"
#include "tools/zolt/store_write.h"
#include "tools/zolt/text.h"
#include "tools/zolt/value_type.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

constexpr size_t kLongestName = 259;

struct Plan {
  SectionPath path;
  std::vector<std::string> names;
  std::vector<StoredValue> values;
  // What every one of the names must hold before; an absent value: nothing.
  std::optional<StoredValue> expected;
};

std::string NewName(std::string_view operand) {
  std::string name = ValueName(operand);
  if (name.size() > kLongestName) {
    Refuse(Clip(operand, 40), "a name of " + std::to_string(name.size()) +
                                  " bytes is too long; programs read up to 259");
  }
  return name;
}

void AddPairs(ValueType type, std::span<std::string_view const> operands, Plan *plan) {
  if (operands.empty() || operands.size() % 2 != 0) {
    Refuse("", "prefs set takes names and values in pairs",
           "usage: zolt prefs set SECTION NAME VALUE [NAME VALUE]...");
  }
  for (size_t i = 0; i < operands.size(); i += 2) {
    plan->names.push_back(NewName(operands[i]));
    plan->values.push_back(ParseValue(type, operands[i + 1]));
  }
}

void AddFromFile(ValueType type, std::string_view file, std::span<std::string_view const> operands,
                 Plan *plan) {
  if (operands.size() != 1) {
    Refuse("", "prefs set --from takes one name", "usage: zolt prefs set SECTION --from FILE NAME");
  }
  plan->names.push_back(NewName(operands[0]));
  plan->values.push_back(ValueOfFile(type, file));
}

void RefuseTwins(std::vector<std::string> const &names) {
  std::vector<std::string> folded;
  std::ranges::transform(names, std::back_inserter(folded), Folded);
  std::ranges::sort(folded);
  auto const twin = std::ranges::adjacent_find(folded);
  if (twin != folded.end()) Refuse(ToUtf8(*twin), "is named twice");
}

std::optional<StoredValue> Expected(ValueType type, Arguments const &arguments) {
  bool const absent = arguments.Has(OptionId::ifAbsent);
  if (!arguments.Has(OptionId::ifValue)) {
    return absent ? std::optional<StoredValue>(StoredValue{}) : std::nullopt;
  }
  if (absent) Refuse("", "--if and --if-absent exclude each other");
  std::string_view const old = arguments.Value(OptionId::ifValue);
  if (type == ValueType::bytes) return ParseValue(type, old);
  // What is a number or a boolean is written as it would be stored, and may be any text.
  try {
    return ParseValue(type, old);
  } catch (ToolError const &) {
    return StoredValue{Kind::text, ToLocal(old)};
  }
}

// Whoever reads it second would find nothing.
void RefuseTwoReadersOfInput(ValueType type, Call const &call) {
  Arguments const &arguments = call.arguments;
  int readers = arguments.Has(OptionId::from) && arguments.Value(OptionId::from) == "-" ? 1 : 0;
  if (type == ValueType::bytes) {
    bool const expects =
        arguments.Has(OptionId::ifValue) && arguments.Value(OptionId::ifValue) == "-";
    readers += expects ? 1 : 0;
    for (size_t i = 2; i < call.operands.size(); i += 2) readers += call.operands[i] == "-" ? 1 : 0;
  }
  if (readers > 1) Refuse("-", "standard input is named twice");
}

Plan PlanOf(Call const &call) {
  Arguments const &arguments = call.arguments;
  ValueType const type = TypeFrom(arguments);
  RefuseTwoReadersOfInput(type, call);
  Plan plan;
  plan.path = SectionPath::FromOperand(call.operands[0]);
  plan.expected = Expected(type, arguments);
  auto const rest = call.operands.subspan(1);
  if (arguments.Has(OptionId::from)) {
    AddFromFile(type, arguments.Value(OptionId::from), rest, &plan);
  } else {
    AddPairs(type, rest, &plan);
  }
  RefuseTwins(plan.names);
  return plan;
}

void Decide(Plan const &plan, std::vector<Change> *changes) {
  for (size_t i = 0; i < changes->size(); i++) {
    Change &change = (*changes)[i];
    if (plan.expected && change.before != *plan.expected) {
      throw ToolError(kNo, "expectation", Subject(plan.path, change.name),
                      "is " + Describe(change.before) + ", not " + Describe(*plan.expected),
                      "nothing is written");
    }
    change.after = plan.values[i];
  }
}

int Set(Call const &call) {
  Plan const plan = PlanOf(call);
  PrepareLibrary(call.arguments, call.settings);
  Level const &level = *call.settings.level;
  auto const decide = [&plan](std::vector<Change> *changes) { Decide(plan, changes); };
  std::vector<Change> changes = ReadBefore(level, plan.path, plan.names);
  decide(&changes);
  // What is there already needs no right to write.
  if (!call.settings.dryRun && std::ranges::any_of(changes, &Change::changes)) {
    SayWhoseStore(call.settings, level);
    SectionPath const *const paths[] = {&plan.path};
    SayMissingSections(paths, kIsNew, call.settings);
    changes = ChangeAtOnce(level, plan.path, plan.names, decide);
  }
  return ReportChanges(plan.path, changes, call.settings, call.out);
}

}  // namespace

Verb const kPrefsSet = {
    .group = "prefs",
    .name = "set",
    .operands = "SECTION NAME VALUE [NAME VALUE]...",
    .summary = "write values",
    .options = {OptionId::type, OptionId::from, OptionId::ifValue, OptionId::ifAbsent},
    .least = 2,
    .most = kAnyNumber,
    .run = Set,
    .description =
        "Writes values to the store of -L, all in one transaction, and says what they were. The\n"
        "section is made if it is missing. With --from the value is a file's:\n"
        "zolt prefs set SECTION --from FILE NAME.\n"
        "\n"
        "-t num takes decimal or 0x and stores decimal; -t bool takes yes, no, true, false, on,\n"
        "off, 1, 0 and stores Yes or No; -t bytes takes @FILE, - for standard input, or digits\n"
        "behind 0x. A text has at most 255 bytes in the stores' code page.\n"
        "\n"
        "With --if or --if-absent the store itself, not its chain, must hold what is expected for\n"
        "every name; else nothing is written and the end is 1. No other program's change comes\n"
        "between the look and the writing.",
    .examples =
        "  zolt prefs set Audio Volume 70\n"
        "  zolt prefs set -t bool Audio Mute on\n"
        "  zolt prefs set Audio Volume 40 --if 70\n"
        "  zolt prefs set -t bytes Audio --from ring.wav Ring\n",
};

}  // namespace zolt::tool
