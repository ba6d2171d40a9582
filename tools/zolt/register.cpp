#include <nlohmann/json.hpp>

#include "tools/zolt/errors.h"
#include "tools/zolt/in_child.h"
#include "tools/zolt/library_file.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/registration.h"
#include "tools/zolt/text.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

// What was done, or would be.
struct Result {
  std::string module;  // that is entered, or was
  bool changes;
  bool registered;  // in the end
};

std::string DocumentOf(Result const &result, bool machine) {
  nlohmann::ordered_json document;
  document["schema"] = 1;
  document["class"] = kClassName;
  document["scope"] = machine ? "machine" : "user";
  document["module"] = nullptr;
  if (!result.module.empty()) document["module"] = result.module;
  document["registered"] = result.registered;
  document["changed"] = result.changes;
  return document.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::string Told(Result const &result) {
  static constexpr char const *kWords[2][2] = {{"was not registered ", "no longer registered "},
                                               {"is registered already ", "registered "}};
  return kWords[result.registered ? 1 : 0][result.changes ? 1 : 0];
}

// Gives the exit code.
int Tell(Call const &call, Result const &result) {
  Settings const &settings = call.settings;
  bool const machine = call.arguments.Has(OptionId::machine);
  if (settings.json) {
    call.out.Write(DocumentOf(result, machine));
  } else if (!settings.quiet) {
    std::string const subject = result.module.empty() ? kClassName : result.module;
    WriteError("zolt: " + Escape(subject) + ": " + Told(result) + ScopeText(machine) +
               (result.changes && settings.dryRun ? " (not written)" : ""));
  }
  return settings.dryRun && settings.exitCode && result.changes ? kNo : kDone;
}

bool Failed(HRESULT state) {
  return FAILED(state) && state != REGDB_E_CLASSNOTREG;
}

// Gives '+' if something changes, else '=', and the path.
std::string Enter(Call const &call) {
  BOOL const machine = call.arguments.Has(OptionId::machine) ? 1 : 0;
  LibraryFile const library{std::string(call.arguments.Value(OptionId::module))};
  library.SetLockWait(call.settings.wait);
  char entered[4096] = "";
  HRESULT const state = library.Named<HRESULT(BOOL, char *, uint32_t)>("ZOLTServerRegistration")(
      machine, entered, sizeof entered);
  if (Failed(state)) throw library.Failure();
  if (state == S_OK && library.path() == entered) return "=" + library.path();
  if (!call.settings.dryRun && library.Named<HRESULT(BOOL)>("ZOLTRegisterServer")(machine) != S_OK)
    throw library.Failure();
  return "+" + library.path();
}

int Register(Call const &call) {
  PrepareLibrary(call.arguments, call.settings);
  if (call.arguments.Has(OptionId::module) && call.arguments.Value(OptionId::module).empty()) {
    Refuse("--module", "names no file");
  }
  std::string const answer = InChild([&] { return Enter(call); });
  return Tell(call, {answer.substr(1), answer.front() == '+', true});
}

int Unregister(Call const &call) {
  BOOL const machine = call.arguments.Has(OptionId::machine) ? 1 : 0;
  PrepareLibrary(call.arguments, call.settings);
  char module[4096] = "";
  HRESULT const state = ZOLTServerRegistration(machine, module, sizeof module);
  if (Failed(state)) throw StoreFailure(kClassName);
  bool const changes = state != REGDB_E_CLASSNOTREG;
  if (changes && !call.settings.dryRun && ZOLTUnregisterServer(machine) != S_OK) {
    throw StoreFailure(kClassName);
  }
  return Tell(call, {module, changes, false});
}

}  // namespace

Verb const kRegister = {
    .group = "register",
    .name = "",
    .operands = "",
    .summary = "let programs find the component server",
    .options = {OptionId::machine, OptionId::module},
    .least = 0,
    .most = 0,
    .run = Register,
    .description =
        "Enters the class of the component server, and where its library lies, among the user's\n"
        "classes, or with --machine among those of all users, which ends with 3 without the right\n"
        "to it. The library is the one that is installed with zolt, or with --module the file at\n"
        "PATH. What was entered before is replaced. A library that others could change, in a\n"
        "folder that they can write for instance, is refused with 3: no program would load it.\n"
        "Such a folder will do if it is sticky, as /tmp is: others replace only what is theirs.",
    .examples =
        "  zolt register\n"
        "  zolt register --module /opt/zolt41/lib/libzolt41.so.0\n",
};

Verb const kUnregister = {
    .group = "unregister",
    .name = "",
    .operands = "",
    .summary = "take the component server out again",
    .options = {OptionId::machine},
    .least = 0,
    .most = 0,
    .run = Unregister,
    .description = "Takes away what zolt register enters; what is not there is no failure.",
    .examples = "  zolt unregister\n",
};

}  // namespace zolt::tool
