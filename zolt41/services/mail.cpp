#include "zolt41/services/mail.h"

#include <atomic>
#include <string>

#include "zolt41/foundation/zoltx_string.h"
#include "zolt41/platform/desktop/mail_client.h"
#include "zolt41/platform/desktop/message_box.h"
#include "zolt41/platform/desktop/profile.h"
#include "zolt41/platform/system/codepage.h"
#include "zolt41/platform/system/late_module.h"
#include "zolt41/platform/system/string_table.h"
#include "zolt41/platform/system/with_memory.h"
#include "zolt41/services/mail_state.h"

namespace {

constexpr uint32_t kFailedMessage = 61842;
constexpr char kModule[] = "MAPI32.DLL";

struct Mail {
  HMODULE module;     // 0 if it was not even asked for, or is none
  MapiSendMail send;  // null if mail cannot be sent
};

Mail Test() {
  if (GetProfileIntA("MAIL", "MAPI", 0) == 0) return {};
  if (SearchPathA(nullptr, kModule, nullptr, 0, nullptr, nullptr) == 0) return {};
  HMODULE const module = LoadLibraryA(kModule);
  if (module == 0) return {};
  return {module, reinterpret_cast<MapiSendMail>(GetProcAddress(module, "MAPISendMail"))};
}

// What this process has found: the words that all share may be another's. Two threads that make
// the first call at the same moment both test, so that nobody waits, not even after a fork, and
// none is told "no" while the other one is at it; the result that comes first stands.
constexpr uintptr_t kNotTested = 0;
constexpr uintptr_t kCannot = 1;
std::atomic<uintptr_t> outcome = kNotTested;  // or the function that sends

MapiSendMail Tested() {
  uintptr_t now = outcome.load(std::memory_order_acquire);
  if (now == kNotTested) {
    Mail const found = Test();
    auto const sender = reinterpret_cast<uintptr_t>(found.send);
    uintptr_t const result = sender == 0 ? kCannot : sender;
    if (outcome.compare_exchange_strong(now, result, std::memory_order_acq_rel)) {
      if (found.module == 0) {
        zolt::ShareNoMail();
      } else {
        zolt::ShareMailState(sender, found.module);
      }
      now = result;
    }
  }
  return now == kCannot ? nullptr : reinterpret_cast<MapiSendMail>(now);  // NOLINT(*-int-to-ptr)
}

void TellOfFailure() {
  char text[260] = "";
  LoadStringA(zolt::LibraryInstance(), kFailedMessage, text, sizeof text);
  zolt::WithMemory(0, [&text] { return MessageBoxA(0, text, nullptr, 0); });
}

uint32_t Send(MapiSendMail send, char *recipient, char *subject, char *text, int32_t silent) {
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
  return send(0, 0, &message, flags, 0);
}

std::string Utf8(char const *local) {
  return local == nullptr ? "" : zolt::Utf8FromLocal(local);
}

}  // namespace

namespace zolt {

void ForgetMailTest() {
  outcome = kNotTested;
}

}  // namespace zolt

int32_t CanMail() {
  return zolt::WithMemory(0, [] { return Tested() != nullptr ? 1 : 0; });
}

uint32_t SendMail(char *, char *recipient, char *subject, char *text, char *, int32_t silent) {
  if (CanMail() == 0) return 0;
  uint32_t const result = ZOLTSendMail(recipient, subject, text, silent);
  bool const quiet =
      result == SUCCESS_SUCCESS || result == MAPI_USER_ABORT || result == MAPI_E_LOGIN_FAILURE;
  if (!quiet) TellOfFailure();
  return result;
}

uint32_t ZOLTSendMail(char *recipient, char *subject, char *text, int32_t silent) {
  return zolt::WithMemory(MAPI_E_FAILURE, [&] {
    MapiSendMail const send = Tested();
    return send == nullptr ? 0 : Send(send, recipient, subject, text, silent);
  });
}

uint32_t ZOLTCheckMail(char const *recipient, char const *subject) {
  return zolt::WithMemory(MAPI_E_FAILURE,
                          [&] { return zolt::MailRefusal(Utf8(recipient), Utf8(subject)); });
}

int32_t ZOLTCanShowMail() {
  return zolt::WithMemory(0, [] { return zolt::CanShowMail() ? 1 : 0; });
}
