#include <array>
#include <string>

#include "tools/zolt/preference_text.h"
#include "tools/zolt/text.h"
#include "tools/zolt/text_words.h"
#include "tools/zolt/utf8.h"

namespace zolt::tool {

namespace {

// How each byte of the code page stands in quotes, and whether it needs them in a name.
struct ByteForms {
  ByteForms() {
    for (size_t i = 0; i < quoted.size(); i++) {
      std::string const text = ToUtf8(std::string(1, static_cast<char>(i)));
      size_t at = 0;
      char32_t const character = NextCharacter(text, &at);
      quoted[i] = character == '"' ? "\\\"" : character == '\r' ? "\\r" : Escape(text);
      // A character of two bytes is escaped as its one in the stores.
      if (quoted[i].starts_with("\\x")) quoted[i] = "\\x" + HexDigits(i);
      plain[i] = PlainInName(character) && !Unprintable(character);
    }
  }

  static std::string HexDigits(size_t byte) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    return {kDigits[byte >> 4], kDigits[byte & 15]};
  }

  std::array<std::string, 256> quoted;
  std::array<bool, 256> plain;
};

ByteForms const &Forms() {
  static ByteForms const forms;
  return forms;
}

void AppendQuoted(std::string_view local, std::string *text) {
  *text += '"';
  for (char const c : local) *text += Forms().quoted[static_cast<unsigned char>(c)];
  *text += '"';
}

void AppendName(std::string_view local, std::string *text) {
  bool plain = !local.empty();
  for (char const c : local) plain = plain && Forms().plain[static_cast<unsigned char>(c)];
  if (plain) {
    *text += ToUtf8(local);
  } else {
    AppendQuoted(local, text);
  }
}

void AppendPath(SectionPath const &path, std::string *text) {
  *text += '[';
  // A bare name may stand for a section that lies deeper.
  if (path.Text().starts_with(':')) *text += ':';
  for (std::string const &name : path.names()) {
    if (&name != &path.names().front()) *text += ':';
    AppendName(name, text);
  }
  *text += ']';
}

// What a client reads as text, and the stores keep as such.
bool IsPlainText(RawValue const &value) {
  return value.type == REG_SZ && value.data.size() <= kLongestText + 1 &&
         value.data.find('\0') + 1 == value.data.size() && !value.data.empty();
}

void AppendValue(RawValue const &value, std::string *text) {
  if (IsPlainText(value)) {
    AppendQuoted(std::string_view(value.data).substr(0, value.data.size() - 1), text);
    return;
  }
  *text += kTextBase64;
  *text += std::to_string(value.type) + ')';
  if (!value.data.empty()) *text += ' ' + Base64(value.data);
}

}  // namespace

std::string TextHead(Level const &level) {
  std::string text(kTextMark);
  text += ' ';
  text += kTextVersion;
  text += '\n';
  text += kTextCodePage;
  text += ' ' + std::to_string(ZOLTCodePage()) + '\n';
  text += kTextStore;
  text += ' ';
  text += level.name;
  text += '\n';
  return text;
}

std::string TextOf(TextSection const &section) {
  std::string text = "\n";
  if (section.onlyThere) text += std::string(kTextSection) + ' ';
  AppendPath(section.path, &text);
  text += '\n';
  for (TextValue const &value : section.values) {
    if (!value.value) text += std::string(kTextUnset) + ' ';
    if (IsTextKeyword(value.name)) {
      AppendQuoted(value.name, &text);
    } else {
      AppendName(value.name, &text);
    }
    if (value.value) {
      text += " = ";
      AppendValue(*value.value, &text);
    }
    text += '\n';
  }
  return text;
}

std::string TextEnd() {
  return "\n" + std::string(kTextEnd) + "\n";
}

std::string TextOf(PreferenceText const &text) {
  std::string whole = TextHead(*text.level);
  for (TextSection const &section : text.sections) whole += TextOf(section);
  return whole + TextEnd();
}

}  // namespace zolt::tool
