#include "tools/zolt/shell_words.h"

#include <string_view>

#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

constexpr std::string_view kPlain =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-+=.,:/@%";

std::string Replaced(std::string_view text, char mark, std::string_view by) {
  std::string replaced;
  for (char const c : text) {
    if (c == mark) {
      replaced += by;
    } else {
      replaced += c;
    }
  }
  return replaced;
}

std::string Quoted(std::string const &word, bool terminal) {
  bool const plain = word.find_first_not_of(kPlain) == std::string::npos;
  if (plain && !word.empty()) return word;
  // Escape doubles a backslash, which is no control character.
  bool const control = Escape(word) != Replaced(word, '\\', "\\\\");
  if (terminal && control) return "$'" + Replaced(Escape(word), '\'', "\\'") + "'";
  return "'" + Replaced(word, '\'', "'\\''") + "'";
}

}  // namespace

std::string ShellLine(std::vector<std::string> const &words, bool terminal) {
  std::string line;
  for (std::string const &word : words) {
    if (!line.empty()) line += ' ';
    line += Quoted(word, terminal);
  }
  return line + "\n";
}

}  // namespace zolt::tool
