#include <algorithm>
#include <string>

#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/text.h"
#include "tools/zolt/utf8.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

int NetStatus(Call const &call) {
  bool const on = IsNetworkOn() != 0;
  if (call.settings.json) {
    call.out.Write(on ? "{\"schema\":1,\"connected\":true}\n"
                      : "{\"schema\":1,\"connected\":false}\n");
  } else {
    call.out.Write(on ? "connected\n" : "not connected\n");
  }
  return on ? kDone : kNo;
}

int NetAddress(Call const &call) {
  char address[16] = "";
  if (GetMyIP(address) == 0) throw ToolError(kNo, "absent", "", "this host has no address");
  std::string const text = address;
  call.out.Write(call.settings.json ? "{\"schema\":1,\"address\":\"" + text + "\"}\n"
                                    : text + "\n");
  return kDone;
}

int Open(Call const &call) {
  std::string const link = ToLocal(call.operands[0]);
  bool const plain = !link.starts_with('-') && std::ranges::none_of(link, [](char c) {
    return static_cast<unsigned char>(c) < ' ' || c == 0x7F;
  });
  if (link.empty() || !plain)
    Refuse(std::string(call.operands[0]), "is no link that can be handed on");
  if (call.settings.dryRun) return kDone;
  PrepareLibrary(call.arguments, call.settings);
  if (URLEnabled() == 0) {
    throw ToolError(kFailed, "missing", "", "this machine opens no links", "install xdg-utils");
  }
  if (URLLaunchFromString(link.c_str()) == 0) {
    throw ToolError(kFailed, "io", std::string(call.operands[0]), "the desktop did not take it");
  }
  return kDone;
}

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

int Mail(Call const &call) {
  std::string recipient = ToLocal(call.operands[0]);
  std::string subject = ToLocal(call.arguments.Value(OptionId::subject));
  std::string text = MailText(call);
  if (call.settings.dryRun) return kDone;
  PrepareLibrary(call.arguments, call.settings);
  if (CanMail() == 0) {
    throw ToolError(kFailed, "missing", "", "this machine sends no mail",
                    "install a sendmail, or set MAPI=1 below [MAIL] in profile.ini of the home");
  }
  int32_t const silent = call.arguments.Has(OptionId::compose) ? 0 : 1;
  uint32_t const result =
      SendMail(nullptr, recipient.data(), subject.data(), text.data(), nullptr, silent);
  if (result == 0) return kDone;
  std::string const number = std::to_string(result);
  if (result == 1) throw ToolError(kNo, "refused", "", "the user gave it up");
  throw ToolError(kFailed, "io", std::string(call.operands[0]), "not sent, result " + number);
}

}  // namespace

Verb const kNetStatus = {
    .group = "net",
    .name = "status",
    .operands = "",
    .summary = "whether this machine is connected",
    .options = {},
    .least = 0,
    .most = 0,
    .run = NetStatus,
    .description = "Says connected, or not connected and ends with 1.",
    .examples = "  zolt net status -q > /dev/null && call\n",
};

Verb const kNetAddress = {
    .group = "net",
    .name = "address",
    .operands = "",
    .summary = "the address of this machine",
    .options = {},
    .least = 0,
    .most = 0,
    .run = NetAddress,
    .description =
        "Prints the first address that a look-up of this machine's name gives; in place of one\n"
        "that stays in the machine, that of the default route. Ends with 1 if there is none.",
    .examples = "  zolt net address\n",
};

Verb const kOpen = {
    .group = "open",
    .name = "",
    .operands = "URL",
    .summary = "hand a link to the desktop",
    .options = {},
    .least = 1,
    .most = 1,
    .run = Open,
    .description =
        "Opens a link with what the desktop has for it (xdg-open), and ends with 3 if that does\n"
        "not take it. What begins with a dash or holds control characters is refused.",
    .examples = "  zolt open https://example.org/\n",
};

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
        "Sends a message to one recipient through sendmail; with --compose the desktop's mail\n"
        "program shows it first. The text is that of --text, or of a file with --from.",
    .examples =
        "  zolt mail anna@example.org --subject Hello --text 'See you at ten.'\n"
        "  zolt mail anna@example.org --subject Notes --from notes.txt\n",
};

}  // namespace zolt::tool
