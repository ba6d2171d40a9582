#include <memory>
#include <string>
#include <string_view>

#include "tools/zolt/error_capture.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/outcome.h"
#include "tools/zolt/text.h"
#include "tools/zolt/utf8.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

constexpr uint32_t kGivenUp = 1;
constexpr uint32_t kNoAddress = 25;
constexpr size_t kLongestComplaint = 200;

std::string MailText(Call const &call) {
  Arguments const &arguments = call.arguments;
  if (!arguments.Has(OptionId::from)) return ToLocal(arguments.Value(OptionId::text));
  if (arguments.Has(OptionId::text)) Refuse("", "--text and --from exclude each other");
  std::string const content = ReadInput(arguments.Value(OptionId::from));
  if (!ValidUtf8(content) || content.find('\0') != std::string::npos) {
    Refuse(std::string(arguments.Value(OptionId::from)), "is no text in UTF-8");
  }
  return ToLocal(content);
}

void Check(std::string_view shown, std::string const &recipient, std::string const &subject) {
  uint32_t const refused = ZOLTCheckMail(recipient.c_str(), subject.c_str());
  if (refused == kNoAddress) {
    Refuse(shown.empty() ? "TO" : std::string(shown), "is not one address",
           "give it plain, as in anna@example.org");
  }
  if (refused != 0) Refuse("--subject", "holds control characters");
}

bool MachineHasMailer() {
  auto const state = std::make_unique<ZOLTState>();
  ZOLTInspect(state.get());
  for (uint32_t i = 0; i < state->doorCount; i++) {
    if (std::string_view(state->doors[i].name) == "MAPI32.DLL") {
      return state->doors[i].kind != ZOLTDoorMissing;
    }
  }
  return false;
}

void CheckMachine(bool compose) {
  if (CanMail() == 0) {
    bool const off = MachineHasMailer();
    throw ToolError(
        kFailed, "missing", "", off ? "mail is switched off" : "this machine sends no mail",
        off ? "set MAPI=1 below [MAIL] in " + UserHome() + "/profile.ini" : "install a sendmail");
  }
  if (compose && ZOLTCanShowMail() == 0) {
    throw ToolError(kFailed, "missing", "", "no mail program can show it before it is sent",
                    "--compose needs a desktop with xdg-email");
  }
}

int Mail(Call const &call) {
  std::string_view const shown = call.operands[0];
  bool const compose = call.arguments.Has(OptionId::compose);
  std::string recipient = ToLocal(shown);
  std::string subject = ToLocal(call.arguments.Value(OptionId::subject));
  std::string text = MailText(call);
  Check(shown, recipient, subject);
  PrepareLibrary(call.arguments, call.settings);
  CheckMachine(compose);
  Deed const sent = {"to", "sent", "would get the message (not sent)"};
  if (call.settings.dryRun) return TellDeed(sent, call);
  uint32_t result = 0;
  std::string complaint;
  {
    ErrorCapture const errors;
    result = ZOLTSendMail(recipient.data(), subject.data(), text.data(), compose ? 0 : 1);
    complaint = Clip(errors.FirstLine(), kLongestComplaint);
  }
  if (result == 0) return TellDeed(sent, call);
  if (result == kGivenUp) throw ToolError(kNo, "refused", "", "the user gave it up");
  bool const show = !compose && ZOLTCanShowMail() != 0;
  throw ToolError(kFailed, "io", std::string(shown),
                  complaint.empty() ? "not sent" : "not sent: " + complaint,
                  show ? "--compose shows it in the desktop's mail program" : "");
}

}  // namespace

Verb const kMail = {
    .group = "mail",
    .name = "",
    .operands = "TO",
    .summary = "send a message",
    .options = {OptionId::subject, OptionId::text, OptionId::from, OptionId::compose},
    .least = 1,
    .most = 1,
    .run = Mail,
    .description =
        "Sends a message to one address through sendmail. With --compose the desktop's mail\n"
        "program shows it, and its user sends it; where there is none that ends with 3, and\n"
        "nothing is sent. The text is that of --text, or of a file with --from.",
    .examples =
        "  zolt mail anna@example.org --subject Hello --text 'See you at ten.'\n"
        "  zolt mail anna@example.org --subject Notes --from notes.txt\n",
};

}  // namespace zolt::tool
