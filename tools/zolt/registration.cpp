#include "tools/zolt/registration.h"

namespace zolt::tool {

Registration FindRegistration() {
  for (BOOL const machine : {0, 1}) {
    char module[4096] = "";
    HRESULT const state = ZOLTServerRegistration(machine, module, sizeof module);
    if (SUCCEEDED(state) && module[0] != '\0') {
      return {machine != 0 ? "machine" : "user", module, state == S_OK};
    }
  }
  return {"", "", false};
}

std::optional<Problem> ProblemOf(Registration const &registration) {
  if (registration.module.empty()) return std::nullopt;
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
  if (registration.whole) return std::nullopt;
  return Problem{kClassName, "is registered in part", "zolt register"};
}

char const *ScopeText(bool machine) {
  return machine ? "for all users" : "for this user";
}

}  // namespace zolt::tool
