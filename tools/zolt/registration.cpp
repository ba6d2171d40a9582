#include "tools/zolt/registration.h"

namespace zolt::tool {

Registration FindRegistration() {
  Registration found = {"", "", false};
  for (BOOL const machine : {0, 1}) {
    char module[4096] = "";
    HRESULT const state = ZOLTServerRegistration(machine, module, sizeof module);
    if (FAILED(state)) continue;
    Registration here = {machine != 0 ? "machine" : "user", module, state == S_OK};
    if (!here.module.empty()) return here;
    if (*found.scope == '\0') found = here;
  }
  return found;
}

std::optional<Problem> ProblemOf(Registration const &registration) {
  if (*registration.scope == '\0') return std::nullopt;
  Problem const inPart = {kClassName, "is registered in part", "zolt register"};
  if (registration.module.empty()) return inPart;
  char place[4096] = "";
  HRESULT const result = ZOLTCheckModule(registration.module.c_str(), place, sizeof place);
  if (result == CO_E_DLLNOTFOUND) {
    return Problem{registration.module, "is registered as the component server and not there",
                   "zolt unregister, or zolt register where it is now"};
  }
  if (result != S_OK) {
    return Problem{place, "others can change it, so no program loads the component server",
                   "take their right away with chmod go-w on it"};
  }
  return registration.whole ? std::nullopt : std::optional(inPart);
}

char const *ScopeText(bool machine) {
  return machine ? "for all users" : "for this user";
}

}  // namespace zolt::tool
