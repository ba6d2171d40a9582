#include "zolt41/services/mail.h"

#include <mutex>
#include <optional>

#include "zolt41/foundation/zoltx_string.h"
#include "zolt41/platform/desktop/mail_client.h"
#include "zolt41/platform/desktop/shell.h"
#include "zolt41/platform/system/late_module.h"
#include "zolt41/platform/system/string_table.h"
#include "zolt41/services/mail_state.h"

namespace {

constexpr uint32_t kFailedMessage = 61842;
constexpr char kModule[] = "MAPI32.DLL";

struct Mail {
  HMODULE module;
  MapiSendMail send;  // null if mail cannot be sent
};

Mail Test() {
  if (GetProfileIntA("MAIL", "MAPI", 0) == 0) return {};
  if (SearchPathA(nullptr, kModule, nullptr, 0, nullptr, nullptr) == 0) return {};
  HMODULE const module = LoadLibraryA(kModule);
  if (module == 0) return {};
  return {module, reinterpret_cast<MapiSendMail>(GetProcAddress(module, "MAPISendMail"))};
}

// What this process has found: the words that all share may be another's.
std::mutex lock;
std::optional<Mail> found;

MapiSendMail Tested() {
  std::lock_guard const guard(lock);
  if (!found) {
    found = Test();
    zolt::ShareMailState(reinterpret_cast<uintptr_t>(found->send), found->module,
                         found->send != nullptr);
  }
  return found->send;
}

void TellOfFailure() {
  char text[260] = "";
  LoadStringA(zolt::LibraryInstance(), kFailedMessage, text, sizeof text);
  MessageBoxA(0, text, nullptr, 0);
}

}  // namespace

namespace zolt {

void ForgetMailTest() {
  std::lock_guard const guard(lock);
  found.reset();
}

}  // namespace zolt

int32_t CanMail() {
  return Tested() != nullptr;
}

uint32_t SendMail(char *, char *recipient, char *subject, char *text, char *, int32_t silent) {
  MapiSendMail const send = Tested();
  if (send == nullptr) return 0;
  ZOLTXString const address = ZOLTXString("SMTP:") + (recipient == nullptr ? "" : recipient);
  MapiRecipDesc to{};
  to.ulRecipClass = MAPI_TO;
  to.lpszName = recipient;
  to.lpszAddress = const_cast<char *>(address.GetBuffer());
  MapiMessage message{};
  message.lpszSubject = subject;
  message.lpszNoteText = text;
  message.nRecipCount = 1;
  message.lpRecips = &to;
  uint32_t const flags = silent != 0 ? MAPI_LOGON_UI : MAPI_LOGON_UI | MAPI_DIALOG;
  uint32_t const result = send(0, 0, &message, flags, 0);
  bool const quiet =
      result == SUCCESS_SUCCESS || result == MAPI_USER_ABORT || result == MAPI_E_LOGIN_FAILURE;
  if (!quiet) TellOfFailure();
  return result;
}
