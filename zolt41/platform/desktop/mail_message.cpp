#include "zolt41/platform/desktop/mail_message.h"

#include <algorithm>
#include <cstdint>

namespace zolt {
namespace {

// What RFC 5322 lets a line have.
constexpr size_t kLongestLine = 998;
constexpr size_t kEncodedLine = 76;

std::string Base64(std::string_view bytes) {
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

// Whether a field of the head can hold the text as it is: "=?" could be taken for an encoded word.
bool StandsForItself(std::string_view field, std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return (c & 0x80) == 0; }) &&
         text.find("=?") == std::string_view::npos && field.size() + text.size() <= kLongestLine;
}

// The subject's field, where it needs it as RFC 2047 has text beyond ASCII: no line is longer than
// 76 bytes.
std::string SubjectField(std::string_view text) {
  constexpr size_t kFirstWord = 39;
  constexpr size_t kWord = 45;
  std::string encoded = "Subject: ";
  if (StandsForItself(encoded, text)) return encoded += text;
  for (size_t at = 0; at < text.size();) {
    size_t end = std::min(at + (at == 0 ? kFirstWord : kWord), text.size());
    while (end < text.size() && (text[end] & 0xC0) == 0x80) end--;
    encoded +=
        (at == 0 ? "=?UTF-8?B?" : "\n =?UTF-8?B?") + Base64(text.substr(at, end - at)) + "?=";
    at = end;
  }
  return encoded;
}

// Every kind of line end becomes `end`.
std::string WithLineEnds(std::string_view text, std::string_view end) {
  std::string lines;
  for (size_t i = 0; i < text.size(); i++) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    if (text[i] == '\r' || text[i] == '\n') {
      lines += end;
    } else {
      lines += text[i];
    }
  }
  return lines;
}

bool HasTooLongALine(std::string_view lines) {
  for (size_t at = 0; at < lines.size();) {
    size_t const end = std::min(lines.find('\n', at), lines.size());
    if (end - at > kLongestLine) return true;
    at = end + 1;
  }
  return false;
}

// The last field of the head, and the text behind it; its own lines end with CR and LF where they
// are encoded.
std::string EncodingAndText(std::string_view note) {
  std::string const field = "Content-Transfer-Encoding: ";
  std::string const lines = WithLineEnds(note, "\n") + "\n";
  if (!HasTooLongALine(lines)) return field + "8bit\n\n" + lines;
  std::string const digits = Base64(WithLineEnds(lines, "\r\n"));
  std::string text = field + "base64\n\n";
  for (size_t at = 0; at < digits.size(); at += kEncodedLine) {
    text += digits.substr(at, kEncodedLine) + "\n";
  }
  return text;
}

// What stands for itself in each part of such a URI.
bool IsPlain(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         std::string_view("-._~@").find(c) != std::string_view::npos;
}

std::string PercentEncoded(std::string_view text) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string encoded;
  for (char const c : text) {
    auto const byte = static_cast<unsigned char>(c);
    if (IsPlain(c)) {
      encoded += c;
    } else {
      encoded += {'%', kDigits[byte >> 4], kDigits[byte & 15]};
    }
  }
  return encoded;
}

}  // namespace

bool IsOneAddress(std::string_view recipient) {
  constexpr std::string_view kSpecial = ",;:<>()[]\"\\";
  return !recipient.empty() && recipient[0] != '-' && std::ranges::all_of(recipient, [&](char c) {
    return c > ' ' && c < 0x7F && kSpecial.find(c) == std::string_view::npos;
  });
}

std::string MailtoUri(std::string_view recipient, std::string_view subject, std::string_view note) {
  std::string uri = "mailto:" + PercentEncoded(recipient);
  char before = '?';
  auto const add = [&](char const *field, std::string const &text) {
    if (text.empty()) return;
    uri += before + std::string(field) + "=" + PercentEncoded(text);
    before = '&';
  };
  add("subject", std::string(subject));
  add("body", WithLineEnds(note, "\r\n"));
  return uri;
}

std::string MessageText(std::string const &recipient, std::string const &subject,
                        std::string_view note) {
  return "To: " + recipient + "\n" + SubjectField(subject) +
         "\nMIME-Version: 1.0\nContent-Type: text/plain; charset=UTF-8\n" + EncodingAndText(note);
}

}  // namespace zolt
