#include <optional>
#include <string>
#include <unordered_set>
#include <utility>

#include "tools/zolt/errors.h"
#include "tools/zolt/preference_text.h"
#include "tools/zolt/text.h"
#include "tools/zolt/text_cursor.h"
#include "tools/zolt/text_words.h"

namespace zolt::tool {

namespace {

constexpr size_t kLongestName = 16383;
constexpr size_t kLongestSection = 255;
constexpr size_t kDeepest = 512;

class Reader {
 public:
  Reader(std::string_view text, std::string const &name) : cursor_(text, name) {}

  PreferenceText Read() {
    ReadHead();
    while (cursor_.NextLine()) {
      if (cursor_.TakeWord(kTextEnd)) {
        cursor_.ExpectLineEnd();
        if (cursor_.NextLine()) cursor_.Fail("stands behind the end");
        return std::move(text_);
      }
      ReadLine();
    }
    cursor_.Fail("is cut short: its last line is not \"end\"");
  }

 private:
  void ReadHead() {
    if (!cursor_.NextLine()) cursor_.FailEmpty();
    if (!cursor_.TakeWord(kTextMark)) {
      cursor_.Fail("is no preference text: it does not begin with \"zolt-preferences 1\"");
    }
    if (!cursor_.TakeWord(kTextVersion)) cursor_.FailNewer();
    cursor_.ExpectLineEnd();
    ReadCodePage();
    ReadStore();
  }

  void ReadCodePage() {
    if (!cursor_.NextLine() || !cursor_.TakeWord(kTextCodePage)) {
      cursor_.Fail("\"code-page\" and a number expected");
    }
    cursor_.Mark();
    std::optional<uint32_t> const page = cursor_.TakeNumber();
    if (!page) cursor_.FailHere("the number of a code page expected");
    if (*page != ZOLTCodePage()) {
      std::string const number = std::to_string(*page);
      cursor_.Refuse(
          "is in code page " + number + ", and the stores are in " + std::to_string(ZOLTCodePage()),
          "set ZOLT_CODEPAGE=" + number + " for stores in that page");
    }
    cursor_.ExpectLineEnd();
  }

  void ReadStore() {
    if (!cursor_.NextLine() || !cursor_.TakeWord(kTextStore)) {
      cursor_.Fail("\"store\" and a level expected");
    }
    cursor_.Mark();
    std::string_view const name = cursor_.TakeBareWord();
    for (PrefLevel const level :
         {PrefLevelUser, PrefLevelSystem, PrefLevelSharedUser, PrefLevelSharedSystem}) {
      if (LevelOf(level)->name == name) text_.level = LevelOf(level);
    }
    if (text_.level == nullptr) cursor_.Fail("is no store");
    cursor_.ExpectLineEnd();
  }

  void ReadLine() {
    bool const onlyThere = cursor_.TakeWord(kTextSection);
    if (onlyThere || cursor_.Peek() == '[') {
      ReadSection(onlyThere);
    } else {
      ReadValue();
    }
  }

  void ReadSection(bool onlyThere) {
    cursor_.Mark();
    std::string place = cursor_.Place();
    TextSection section{.path = ReadPath(), .onlyThere = onlyThere, .place = std::move(place)};
    cursor_.ExpectLineEnd();
    if (!sections_.insert(section.path.Key()).second) FailTwice(section.place);
    names_.clear();
    text_.sections.push_back(std::move(section));
  }

  SectionPath ReadPath() {
    cursor_.Expect('[');
    bool const fromTop = cursor_.Take(':');
    std::vector<std::string> names;
    if (fromTop && cursor_.Take(']')) return {};
    do {
      cursor_.Mark();
      std::string name = cursor_.TakeName();
      if (name.empty()) cursor_.Fail("a section has a name");
      if (name.size() > kLongestSection) {
        cursor_.Fail("a section's name has at most 255 bytes");
      }
      names.push_back(std::move(name));
    } while (cursor_.Take(':'));
    cursor_.Expect(']');
    if (names.size() > kDeepest) cursor_.Fail("lies too deep");
    if (names.size() == 1 && !fromTop) {
      SectionPath standard = StandardSectionNamed(names[0]);
      if (!standard.top()) return standard;
    }
    return SectionPath(std::move(names));
  }

  [[noreturn]] static void FailTwice(std::string const &place) {
    throw ToolError(kDamaged, "syntax", place, "is there twice", "nothing is written");
  }

  void ReadValue() {
    bool const unset = cursor_.TakeWord(kTextUnset);
    cursor_.Mark();
    std::string name = cursor_.TakeName();
    if (text_.sections.empty()) cursor_.Fail("stands in no section");
    TextSection &section = text_.sections.back();
    if (section.onlyThere) {
      cursor_.Fail("stands behind a section of which only is said that it is there");
    }
    if (name.size() > kLongestName) cursor_.Fail("a name of a value is too long");
    if (!names_.insert(Folded(name)).second) cursor_.Fail("is there twice");
    MaybeRaw value;
    if (!unset) {
      cursor_.SkipBlanks();
      cursor_.Expect('=');
      cursor_.SkipBlanks();
      value = ReadRaw();
    }
    cursor_.ExpectLineEnd();
    section.values.push_back({std::move(name), std::move(value)});
  }

  RawValue ReadRaw() {
    cursor_.Mark();
    if (cursor_.Peek() == '"') {
      std::string text = cursor_.TakeQuoted();
      if (text.size() > kLongestText) {
        cursor_.Refuse("a text of " + std::to_string(text.size()) +
                           " bytes could be written and not read; 255 is the most",
                       "use -t bytes, or base64(3)");
      }
      text += '\0';
      return {REG_SZ, std::move(text)};
    }
    if (!cursor_.TakeText(kTextBase64))
      cursor_.FailHere("a text in quotes, or base64(TYPE) expected");
    std::optional<uint32_t> const type = cursor_.TakeNumber();
    if (!type) cursor_.FailHere("the number of a type expected");
    cursor_.Expect(')');
    cursor_.SkipBlanks();
    cursor_.Mark();
    std::optional<std::string> data = FromBase64(cursor_.TakeBareWord());
    if (!data) cursor_.Fail("is no base64");
    return {*type, std::move(*data)};
  }

  TextCursor cursor_;
  PreferenceText text_{.level = nullptr, .sections = {}};
  std::unordered_set<std::string> sections_;
  std::unordered_set<std::string> names_;  // of the section that is being read
};

}  // namespace

PreferenceText ReadPreferenceText(std::string_view text, std::string const &name) {
  return Reader(text, name).Read();
}

}  // namespace zolt::tool
