#include <unistd.h>

#include <memory>

#include "tools/zolt/diagnosis.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/registration.h"
#include "tools/zolt/store_snapshot.h"
#include "tools/zolt/table.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

std::string StateOf(ZOLTHiveState const &hive) {
  if (hive.failure != 0) return WordsOf(hive.failure).message;
  if (hive.file.present == 0) return "none yet";
  return hive.writable != 0 ? "sound" : "sound, read-only";
}

std::string StateOf(ZOLTChannelState const &channel) {
  if (channel.usable == 0) return "not usable";
  if (channel.file.present == 0) return "not in use";
  if (channel.holder == 0) return "free";
  return "held by " + std::to_string(channel.holder) + " (" + channel.holderProgram + ")";
}

std::string StateOf(Registration const &registration) {
  if (*registration.scope == '\0') return "not registered";
  return std::string("registered ") + ScopeText(std::string_view(registration.scope) == "machine");
}

void WriteState(ZOLTState const &state, Registration const &registration, Call const &call) {
  Table table(call.settings, call.out, 4);
  table.Add({"user hive", state.user.file.path, StateOf(state.user), ""});
  table.Add({"machine hive", state.machine.file.path, StateOf(state.machine), ""});
  table.Add({"channel", state.channel.file.path, StateOf(state.channel), ""});
  for (uint32_t i = 0; i < state.processCount; i++) {
    ZOLTProcessState const &process = state.processes[i];
    std::string const missed =
        process.missed == 0 ? "" : "missed " + std::to_string(process.missed);
    table.Add({"process " + std::to_string(process.process), process.program, NameOf(process.kind),
               missed});
  }
  for (uint32_t i = 0; i < state.doorCount; i++)
    table.Add({"service", ServiceOf(state.doors[i]), NameOf(state.doors[i].kind), ""});
  table.Add({"component class", registration.module, StateOf(registration), ""});
  table.Finish();
}

void WriteProblems(std::vector<Problem> const &problems, Call const &call) {
  Table table(call.settings, call.out, 4);
  for (Problem const &each : problems)
    table.Add({"problem", each.subject, each.problem, each.hint});
  table.Finish();
}

// Damage deep in a hive shows only where all of it is read; that of its indexes only in a
// transaction, which looks keys up as writers do. One that others hold is not waited for.
void ReadAll(ZOLTState *state) {
  ZOLTSetLockWait(0);
  for (std::string_view const name : {"user", "system", "shared-user", "shared-system"}) {
    Level const &level = LevelNamed(name);
    ZOLTHiveState &hive = level.root == HKEY_CURRENT_USER ? state->user : state->machine;
    if (hive.failure != 0 || hive.file.present == 0) continue;
    HiveTransaction transaction(level.root);
    // Without one as much is read as can be.
    static_cast<void>(transaction.Begin());
    try {
      VisitStore(level, {}, Exclusions({}), [](TextSection &&) {});
    } catch (ToolError const &error) {
      if (error.code == kDamaged) hive.failure = ZOLTLastFailure(nullptr, 0);
    }
  }
}

int Doctor(Call const &call) {
  PrepareLibrary(call.arguments, call.settings);
  auto const state = std::make_unique<ZOLTState>();
  ZOLTInspect(state.get());
  ReadAll(state.get());
  ZOLTSetLockWait(call.settings.wait);
  Registration const registration = FindRegistration();
  std::vector<Problem> problems = Diagnose(*state, geteuid());
  if (auto const problem = ProblemOf(registration)) problems.push_back(*problem);
  if (call.settings.json) {
    call.out.Write(StateDocument(*state, registration, problems));
  } else {
    WriteState(*state, registration, call);
    WriteProblems(problems, call);
  }
  return problems.empty() ? kDone : kNo;
}

}  // namespace

Verb const kDoctor = {
    .group = "doctor",
    .name = "",
    .operands = "",
    .summary = "what is wrong, and what would mend it",
    .options = {},
    .least = 0,
    .most = 0,
    .run = Doctor,
    .description =
        "Shows the hives, the channel over which programs hear of changes, and the programs that\n"
        "use it: idle, listening, or lagging, which make writers wait. For each thing that is\n"
        "wrong a line follows that begins with `problem` and says what would mend it. It changes\n"
        "nothing, and ends with 1 if something is wrong.",
    .examples =
        "  zolt doctor\n"
        "  zolt doctor --home /tmp/home --json\n",
};

}  // namespace zolt::tool
