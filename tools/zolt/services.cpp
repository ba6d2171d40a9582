#include <string>
#include <string_view>

#include "tools/zolt/errors.h"
#include "tools/zolt/library_session.h"
#include "tools/zolt/outcome.h"
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

// What the library would refuse.
bool IsLink(std::string_view link) {
  if (link.empty() || link.starts_with('-')) return false;
  for (size_t at = 0; at < link.size();)
    if (Unprintable(NextCharacter(link, &at))) return false;
  return true;
}

int Open(Call const &call) {
  std::string const shown(call.operands[0]);
  if (!IsLink(shown)) Refuse(shown.empty() ? "URL" : shown, "is no link that can be handed on");
  std::string const link = ToLocal(shown);
  PrepareLibrary(call.arguments, call.settings);
  if (URLEnabled() == 0) {
    throw ToolError(kFailed, "missing", "", "this machine opens no links", "install xdg-utils");
  }
  if (!call.settings.dryRun && URLLaunchFromString(link.c_str()) == 0) {
    throw ToolError(kFailed, "io", shown, "the desktop did not take it");
  }
  return TellDeed({"url", "opened", "would be opened (not opened)"}, call);
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

}  // namespace zolt::tool
