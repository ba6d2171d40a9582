#include "zolt41/platform/desktop/mail_client.h"

#include <string>

#include "zolt41/platform/desktop/command.h"
#include "zolt41/platform/desktop/mail_message.h"
#include "zolt41/platform/system/codepage.h"
#include "zolt41/platform/system/late_module.h"

namespace {

// A mail program of a desktop may ask its user before it ends.
constexpr int kDialogPatience = 2000;
constexpr int kSendPatience = 60000;

std::string Compose() {
  return zolt::FindProgram("xdg-email");
}

std::string Send() {
  return zolt::FindProgram("sendmail", {"/usr/sbin", "/usr/lib"});
}

std::string Text(char const *local) {
  return local == nullptr ? "" : zolt::Utf8FromLocal(local);
}

uint32_t ShowInMailProgram(std::string const &recipient, std::string const &subject,
                           std::string const &note) {
  int const code = zolt::RunCommand({Compose(),
                                     {"xdg-email", zolt::MailtoUri(recipient, subject, note)},
                                     "",
                                     kDialogPatience,
                                     false});
  return code == 0 || code == zolt::kStillRuns ? SUCCESS_SUCCESS : MAPI_E_FAILURE;
}

uint32_t SendDirectly(std::string const &recipient, std::string const &subject,
                      std::string const &note) {
  std::string const program = Send();
  if (program.empty()) return MAPI_E_FAILURE;
  std::string const message = zolt::MessageText(recipient, subject, note);
  int const code = zolt::RunCommand(
      {program, {"sendmail", "-i", "--", recipient}, message, kSendPatience, true});
  return code == 0 ? SUCCESS_SUCCESS : MAPI_E_FAILURE;
}

uint32_t NativeSendMail(uintptr_t, uintptr_t, MapiMessage *message, uint32_t flags, uint32_t) {
  if (message == nullptr || message->nRecipCount != 1) return MAPI_E_FAILURE;
  std::string const recipient = Text(message->lpRecips->lpszName);
  std::string const subject = Text(message->lpszSubject);
  std::string const note = Text(message->lpszNoteText);
  uint32_t const refused = zolt::MailRefusal(recipient, subject);
  if (refused != SUCCESS_SUCCESS) return refused;
  bool const dialog = (flags & MAPI_DIALOG) != 0 && zolt::CanShowMail();
  return dialog ? ShowInMailProgram(recipient, subject, note)
                : SendDirectly(recipient, subject, note);
}

zolt::LateFunction const kFunctions[] = {
    {"MAPISendMail", reinterpret_cast<FARPROC>(NativeSendMail)}};
zolt::LateModule const kModule = {"MAPI32.DLL", kFunctions, zolt::HasMailClient};

[[gnu::constructor]] void Enter() {
  zolt::EnterLateModule(&kModule);
}

}  // namespace

namespace zolt {

uint32_t MailRefusal(std::string_view recipient, std::string_view subject) {
  if (!IsOneAddress(recipient)) return MAPI_E_INVALID_RECIPS;
  return HasControls(subject) ? MAPI_E_FAILURE : SUCCESS_SUCCESS;
}

bool CanShowMail() {
  return HasDesktop() && !Compose().empty();
}

bool HasMailClient() {
  return !Send().empty() || CanShowMail();
}

}  // namespace zolt
