#include <unistd.h>

#include <new>
#include <span>
#include <string>
#include <vector>

#include "tools/zolt/arguments.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/help.h"
#include "tools/zolt/near_name.h"
#include "tools/zolt/output.h"
#include "tools/zolt/settings.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

using Words = std::span<char const *const>;

// Also for a command line that cannot be understood.
bool AsksForJson(Words words) {
  for (std::string_view const word : words) {
    if (word == "--") return false;
    if (word == "--json") return true;
  }
  return false;
}

[[noreturn]] void RefuseCommand(std::span<std::string_view const> operands) {
  bool const group = IsGroup(operands[0]);
  std::vector<std::string> names;
  for (Verb const *const verb : Verbs()) {
    if (!group || verb->group == operands[0]) names.emplace_back(group ? verb->name : verb->group);
  }
  if (group && operands.size() == 1) {
    Refuse(std::string(operands[0]), "a verb is missing",
           "zolt help " + std::string(operands[0]) + " lists them");
  }
  std::string_view const word = operands[group ? 1 : 0];
  std::string const near = DidYouMean(word, names);
  Refuse(std::string(word), "no such command", near.empty() ? "zolt help lists them" : near);
}

void CheckUsage(Verb const &verb, Arguments const &arguments, size_t operands) {
  std::string const name = NameOf(verb);
  for (Option const &option : Options()) {
    if (option.global || !arguments.Has(option.id) || verb.options.Has(option.id)) continue;
    Refuse("", name + " takes no --" + std::string(option.name), "see zolt help " + name);
  }
  if (operands >= verb.least && operands <= verb.most) return;
  Refuse("", name + (operands < verb.least ? " needs more operands" : " takes fewer operands"),
         "usage: " + UsageOf(verb));
}

int Dispatch(Arguments const &arguments, Output &out) {
  auto const operands = arguments.operands();
  Settings const settings(arguments);
  if (arguments.Has(OptionId::version)) {
    out.Write("zolt " ZOLT_VERSION "\n");
    return kDone;
  }
  bool const helpVerb = !operands.empty() && operands[0] == "help";
  if (helpVerb || arguments.Has(OptionId::help)) {
    out.Write(HelpFor(operands.subspan(helpVerb ? 1 : 0)));
    return kDone;
  }
  if (operands.empty()) {
    WriteError(ShortUsage());
    return kUsage;
  }
  Verb const *verb = FindVerb(operands[0], "");
  if (verb == nullptr && operands.size() > 1) verb = FindVerb(operands[0], operands[1]);
  if (verb == nullptr) RefuseCommand(operands);
  Call const call = {arguments, settings, operands.subspan(verb->name.empty() ? 1 : 2), out};
  CheckUsage(*verb, arguments, call.operands.size());
  return verb->run(call);
}

int Run(Words words) {
  bool const json = AsksForJson(words);
  When colour = When::automatic;
  try {
    Arguments const arguments(words);
    colour = Settings(arguments).colour;
    Output out(STDOUT_FILENO, "standard output");
    int const code = Dispatch(arguments, out);
    out.Finish();
    return code;
  } catch (ToolError const &error) {
    Report(error, json, InColour(colour, ErrorIsTerminal()));
    return error.code;
  } catch (std::bad_alloc const &) {
    WriteError("zolt: not enough memory");
    return kFailed;
  }
}

}  // namespace

}  // namespace zolt::tool

int main(int count, char **words) {
  zolt::tool::HoldStandardDescriptors();
  return zolt::tool::Run({words + (count > 0 ? 1 : 0), words + count});
}
