#include "tools/zolt/text_cursor.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "tools/zolt/errors.h"
#include "tools/zolt/text.h"
#include "tools/zolt/text_words.h"
#include "tools/zolt/utf8.h"

namespace zolt::tool {

namespace {

constexpr char kBlanks[] = " \t";

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  char const letter = static_cast<char>(c | 0x20);
  return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

}  // namespace

bool TextCursor::NextLine() {
  while (!rest_.empty()) {
    size_t const end = rest_.find('\n');
    line_ = rest_.substr(0, end);
    number_++;
    at_ = mark_ = 0;
    if (end == std::string_view::npos) {
      at_ = line_.size();
      FailHere("is cut short: the last line has no end");
    }
    rest_.remove_prefix(end + 1);
    if (line_.ends_with('\r')) line_.remove_suffix(1);
    CheckCharacters();
    SkipBlanks();
    mark_ = at_;
    if (Peek() != '\0' && Peek() != '#') return true;
  }
  return false;
}

void TextCursor::CheckCharacters() {
  for (size_t at = 0; at < line_.size();) {
    at_ = at;
    char32_t const character = NextCharacter(line_, &at);
    if (character == kInvalid) FailHere("is no valid UTF-8");
    if (character == 0xFEFF) FailHere("begins with a byte order mark; UTF-8 needs none");
    if (character != '\t' && Unprintable(character)) {
      FailHere("a character that is not shown stands in quotes, as a backslash, x and two digits");
    }
  }
  at_ = 0;
}

void TextCursor::SkipBlanks() {
  at_ = std::min(line_.find_first_not_of(kBlanks, at_), line_.size());
}

bool TextCursor::TakeText(std::string_view text) {
  if (!line_.substr(at_).starts_with(text)) return false;
  at_ += text.size();
  return true;
}

bool TextCursor::TakeWord(std::string_view word) {
  std::string_view const rest = line_.substr(at_);
  if (!rest.starts_with(word) || (rest.size() > word.size() && !IsBlank(rest[word.size()]))) {
    return false;
  }
  at_ += word.size();
  SkipBlanks();
  return true;
}

std::string_view TextCursor::TakeBareWord() {
  size_t const begin = at_;
  at_ = std::min(line_.find_first_of(kBlanks, at_), line_.size());
  return line_.substr(begin, at_ - begin);
}

std::optional<uint32_t> TextCursor::TakeNumber() {
  uint32_t number = 0;
  char const *const begin = line_.data() + at_;
  auto const result = std::from_chars(begin, line_.data() + line_.size(), number);
  if (result.ec != std::errc()) return std::nullopt;
  at_ += static_cast<size_t>(result.ptr - begin);
  return number;
}

std::string TextCursor::Local(size_t begin) {
  std::string_view const utf8 = line_.substr(begin, at_ - begin);
  try {
    return ToLocal(utf8);
  } catch (ToolError const &error) {
    mark_ = begin;
    Refuse(error.message, "");
  }
}

std::string TextCursor::TakeName() {
  if (Peek() == '"') return TakeQuoted();
  size_t const begin = at_;
  while (at_ < line_.size()) {
    size_t next = at_;
    if (!PlainInName(NextCharacter(line_, &next))) break;
    at_ = next;
  }
  if (at_ == begin) FailHere("a name expected, in quotes if it holds more than letters and digits");
  return Local(begin);
}

std::string TextCursor::TakeQuoted() {
  std::string local;
  Expect('"');
  for (;;) {
    size_t const begin = at_;
    at_ = std::min(line_.find_first_of("\"\\", at_), line_.size());
    local += Local(begin);
    if (Take('"')) return local;
    if (Peek() != '\\') FailHere("a quote expected, which ends the text");
    TakeEscape(&local);
  }
}

void TextCursor::TakeEscape(std::string *local) {
  static constexpr std::string_view kLetters = "\\\"ntr";
  static constexpr std::string_view kMeanings = "\\\"\n\t\r";
  std::string_view const escape = line_.substr(at_);
  size_t const letter = escape.size() < 2 ? std::string_view::npos : kLetters.find(escape[1]);
  if (letter != std::string_view::npos) {
    *local += kMeanings[letter];
    at_ += 2;
    return;
  }
  int const high = escape.size() < 4 || escape[1] != 'x' ? -1 : HexDigit(escape[2]);
  int const low = high < 0 ? -1 : HexDigit(escape[3]);
  if (low < 0)
    FailHere(
        "no such escape; behind a backslash stands one more, a quote, n, t, r, or x and two "
        "digits");
  if (high == 0 && low == 0) FailHere("a text holds no NUL; base64(1) does");
  *local += static_cast<char>(high << 4 | low);
  at_ += 4;
}

bool TextCursor::Take(char c) {
  if (Peek() != c || at_ == line_.size()) return false;
  at_++;
  return true;
}

void TextCursor::Expect(char c) {
  if (!Take(c)) FailHere(std::string(1, c) + " expected");
}

void TextCursor::ExpectLineEnd() {
  SkipBlanks();
  if (at_ != line_.size()) FailHere("the end of the line expected");
}

std::string TextCursor::PlaceOf(size_t at) const {
  size_t column = 1;
  for (size_t i = 0; i < at; column++) NextCharacter(line_, &i);
  return name_ + ":" + std::to_string(number_) + ":" + std::to_string(column);
}

void TextCursor::Fail(std::string const &message) {
  throw ToolError(kDamaged, "syntax", PlaceOf(mark_), message, "nothing is written");
}

void TextCursor::FailHere(std::string const &message) {
  mark_ = at_;
  Fail(message);
}

void TextCursor::FailNewer() {
  throw ToolError(kDamaged, "newer", PlaceOf(at_), "is written by a newer version of zolt",
                  "use that version");
}

void TextCursor::FailEmpty() {
  throw ToolError(kDamaged, "syntax", name_, "is empty", "nothing is written");
}

void TextCursor::Refuse(std::string const &message, std::string const &hint) {
  throw ToolError(kUsage, "usage", PlaceOf(mark_), message,
                  hint.empty() ? "nothing is written" : hint);
}

}  // namespace zolt::tool
