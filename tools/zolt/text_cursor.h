#ifndef ZOLT41_TOOLS_ZOLT_TEXT_CURSOR_H_
#define ZOLT41_TOOLS_ZOLT_TEXT_CURSOR_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace zolt::tool {

// A walk through the lines of a preference text. Whatever is not as expected throws, with the name
// of the file, line and column: damaged data, or with Refuse wrong usage.
class TextCursor {
 public:
  // `text` must live as long as this.
  TextCursor(std::string_view text, std::string name) : rest_(text), name_(std::move(name)) {}

  // Goes on to the next line that is neither blank nor a comment, behind its indentation. False at
  // the end of the text.
  bool NextLine();

  // NUL at the end of the line.
  char Peek() const { return at_ < line_.size() ? line_[at_] : '\0'; }
  void SkipBlanks();

  // Goes behind `text`, or the word and the blanks behind it, if it stands here.
  bool TakeText(std::string_view text);
  bool TakeWord(std::string_view word);
  // Up to the next blank or the end.
  std::string_view TakeBareWord();
  std::optional<uint32_t> TakeNumber();
  // In the code page of the stores.
  std::string TakeName();
  std::string TakeQuoted();

  bool Take(char c);
  void Expect(char c);
  void ExpectLineEnd();

  // The place to which Fail and Refuse point; that of the line's start before the first Mark.
  void Mark() { mark_ = at_; }
  // The file, line and column of the mark.
  std::string Place() const { return PlaceOf(mark_); }
  [[noreturn]] void Fail(std::string const &message);
  [[noreturn]] void FailHere(std::string const &message);
  [[noreturn]] void FailNewer();
  [[noreturn]] void FailEmpty();
  [[noreturn]] void Refuse(std::string const &message, std::string const &hint);

 private:
  void CheckCharacters();
  std::string PlaceOf(size_t at) const;
  void TakeEscape(std::string *local);
  std::string Local(size_t begin);

  std::string_view rest_;
  std::string name_;
  std::string_view line_;
  size_t number_ = 0;
  size_t at_ = 0;
  size_t mark_ = 0;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_TEXT_CURSOR_H_
