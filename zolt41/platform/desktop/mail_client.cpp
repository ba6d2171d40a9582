#include "zolt41/platform/desktop/mail_client.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "zolt41/platform/desktop/command.h"
#include "zolt41/platform/system/codepage.h"
#include "zolt41/platform/system/home.h"
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

std::string Base64(std::string const &bytes) {
  static constexpr char kDigits[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t at = 0; at < bytes.size(); at += 3) {
    uint32_t bits = 0;
    for (size_t i = 0; i < 3; i++)
      bits = bits << 8 | (at + i < bytes.size() ? static_cast<unsigned char>(bytes[at + i]) : 0U);
    for (size_t i = 0; i < 4; i++)
      text += at + i <= bytes.size() ? kDigits[bits >> (18 - 6 * i) & 63] : '=';
  }
  return text;
}

// A line of a message's head, as RFC 2047 has text beyond ASCII, in words of at most 75 bytes.
std::string Encoded(std::string const &text) {
  constexpr size_t kWord = 45;
  bool ascii = true;
  for (char const c : text) ascii = ascii && static_cast<signed char>(c) >= 0;
  if (ascii) return text;
  std::string encoded;
  for (size_t at = 0; at < text.size();) {
    size_t end = std::min(at + kWord, text.size());
    while (end < text.size() && (text[end] & 0xC0) == 0x80) end--;
    encoded += (encoded.empty() ? "=?UTF-8?B?" : "\n =?UTF-8?B?") +
               Base64(text.substr(at, end - at)) + "?=";
    at = end;
  }
  return encoded;
}

// In lines that end with LF, which is what sendmail wants.
std::string Body(std::string const &text) {
  std::string lines;
  for (size_t i = 0; i < text.size(); i++) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    lines += text[i] == '\r' ? '\n' : text[i];
  }
  return lines + "\n";
}

uint32_t ShowInMailProgram(std::string const &recipient, std::string const &subject,
                           std::string const &note) {
  int const code = zolt::RunCommand(
      Compose(), {"xdg-email", "--utf8", "--subject", subject, "--body", note, recipient}, "",
      kDialogPatience);
  return code == 0 ? SUCCESS_SUCCESS : MAPI_E_FAILURE;
}

uint32_t SendDirectly(std::string const &recipient, std::string const &subject,
                      std::string const &note) {
  std::string const program = Send();
  if (program.empty()) return MAPI_E_FAILURE;
  std::string const message = "To: " + recipient + "\nSubject: " + Encoded(subject) +
                              "\nMIME-Version: 1.0\nContent-Type: text/plain; charset=UTF-8\n"
                              "Content-Transfer-Encoding: 8bit\n\n" +
                              Body(note);
  int const code =
      zolt::RunCommand(program, {"sendmail", "-i", "--", recipient}, message, kSendPatience);
  return code == 0 ? SUCCESS_SUCCESS : MAPI_E_FAILURE;
}

uint32_t NativeSendMail(uintptr_t, uintptr_t, MapiMessage *message, uint32_t flags, uint32_t) {
  if (message == nullptr || message->nRecipCount != 1) return MAPI_E_FAILURE;
  std::string const recipient = Text(message->lpRecips->lpszName);
  std::string const subject = Text(message->lpszSubject);
  std::string const note = Text(message->lpszNoteText);
  if (recipient.empty() || !zolt::IsPlainArgument(recipient)) return MAPI_E_INVALID_RECIPS;
  if (!zolt::IsPlainArgument(subject)) return MAPI_E_FAILURE;
  bool const dialog = (flags & MAPI_DIALOG) != 0 && zolt::HasDesktop() && !Compose().empty();
  return dialog ? ShowInMailProgram(recipient, subject, note)
                : SendDirectly(recipient, subject, note);
}

zolt::LateFunction const kFunctions[] = {
    {"MAPISendMail", reinterpret_cast<FARPROC>(NativeSendMail)}};
zolt::LateModule const kModule = {"MAPI32.DLL", kFunctions, zolt::HasMailClient};

[[gnu::constructor]] void Enter() {
  zolt::EnterLateModule(&kModule);
}

bool SameWord(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return (x >= 'A' && x <= 'Z' ? x | 0x20 : x) == (y >= 'A' && y <= 'Z' ? y | 0x20 : y);
         });
}

std::optional<uint32_t> InProfile(std::string_view section, std::string_view key) {
  std::ifstream profile(zolt::ResolveHomes().user + "/profile.ini");
  bool inSection = false;
  for (std::string line; std::getline(profile, line);) {
    if (line.ends_with('\r')) line.pop_back();
    if (line.starts_with('[')) inSection = SameWord(line, "[" + std::string(section) + "]");
    size_t const equals = line.find('=');
    if (!inSection || equals == std::string::npos) continue;
    if (!SameWord(std::string_view(line).substr(0, equals), key)) continue;
    return static_cast<uint32_t>(std::strtol(line.c_str() + equals + 1, nullptr, 10));
  }
  return std::nullopt;
}

}  // namespace

namespace zolt {

bool HasMailClient() {
  return !Send().empty() || (HasDesktop() && !Compose().empty());
}

}  // namespace zolt

uint32_t GetProfileIntA(char const *section, char const *key, int32_t defaultValue) {
  if (section == nullptr || key == nullptr) return static_cast<uint32_t>(defaultValue);
  if (std::optional<uint32_t> const number = InProfile(section, key)) return *number;
  bool const mail = SameWord(section, "MAIL") && SameWord(key, "MAPI");
  return mail && zolt::HasMailClient() ? 1 : static_cast<uint32_t>(defaultValue);
}
