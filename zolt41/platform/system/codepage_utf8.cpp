#include "zolt41/platform/system/codepage.h"

#include <utility>

#include "zolt41/platform/system/ascii_block.h"
#include "zolt41/platform/system/codepage_table.h"

namespace zolt {
namespace {

constexpr char32_t kInvalid = 0xFFFFFFFF;

// A lead byte with the bits `mark` under `mask` begins a sequence of `size` bytes, which stands for
// a character not below `least`: a lower one has a shorter form, and only that one is valid.
struct SequenceForm {
  uint8_t mask;
  uint8_t mark;
  uint8_t size;
  char32_t least;
};

constexpr SequenceForm kForms[] = {
    {0x80, 0x00, 1, 0},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
};

size_t AsciiRun(std::string_view text) {
  size_t run = 0;
  while (run + kAsciiBlock <= text.size() && IsAsciiBlock(text.data() + run)) run += kAsciiBlock;
  while (run < text.size() && static_cast<signed char>(text[run]) >= 0) run++;
  return run;
}

// Moves the run of ASCII at the start of `*text` to the end of `to`.
void TakeAsciiRun(std::string_view *text, std::string *to) {
  size_t const run = AsciiRun(*text);
  to->append(text->substr(0, run));
  text->remove_prefix(run);
}

SequenceForm const *FormOf(uint8_t lead) {
  for (SequenceForm const &form : kForms) {
    if ((lead & form.mask) == form.mark) return &form;
  }
  return nullptr;
}

// Takes one character from the start of `*text`, which is not empty.
char32_t TakeCharacter(std::string_view *text) {
  auto const lead = static_cast<uint8_t>(text->front());
  SequenceForm const *const form = FormOf(lead);
  if (form == nullptr || form->size > text->size()) return kInvalid;
  char32_t character = lead & static_cast<uint8_t>(~form->mask);
  for (size_t i = 1; i < form->size; i++) {
    auto const byte = static_cast<uint8_t>((*text)[i]);
    if ((byte & 0xC0) != 0x80) return kInvalid;
    character = character << 6 | (byte & 0x3F);
  }
  text->remove_prefix(form->size);
  return character < form->least ? kInvalid : character;
}

}  // namespace

uint32_t LocalCodePage() {
  return LocalPage().Number();
}

void AddUtf8(char32_t character, std::string *utf8) {
  auto const tail = [character](int shift) {
    return static_cast<char>(0x80 | (character >> shift & 0x3F));
  };
  if (character < 0x80) {
    *utf8 += static_cast<char>(character);
    return;
  }
  if (character < 0x800) {
    *utf8 += static_cast<char>(0xC0 | character >> 6);
  } else if (character < 0x10000) {
    *utf8 += {static_cast<char>(0xE0 | character >> 12), tail(6)};
  } else {
    *utf8 += {static_cast<char>(0xF0 | character >> 18), tail(12), tail(6)};
  }
  *utf8 += tail(0);
}

std::string Utf8FromLocal(std::string_view text) {
  CodePage const &page = LocalPage();
  std::string utf8;
  utf8.reserve(text.size());
  for (TakeAsciiRun(&text, &utf8); !text.empty(); TakeAsciiRun(&text, &utf8)) {
    AddUtf8(page.CharacterOf(text.front()), &utf8);
    text.remove_prefix(1);
  }
  return utf8;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    char32_t const character = TakeCharacter(&text);
    bool const surrogate = character >= 0xD800 && character < 0xE000;
    if (character > 0x10FFFF || surrogate) return false;
  }
  return true;
}

bool LocalFromUtf8(std::string_view utf8, std::string *text) {
  CodePage const &page = LocalPage();
  std::string local;
  local.reserve(utf8.size());
  for (TakeAsciiRun(&utf8, &local); !utf8.empty(); TakeAsciiRun(&utf8, &local)) {
    char32_t const character = TakeCharacter(&utf8);
    // Surrogates need no test of their own: no page has one.
    if (character > 0xFFFF || !page.Has(static_cast<char16_t>(character))) return false;
    local.push_back(page.ByteOf(static_cast<char16_t>(character), '?'));
  }
  *text = std::move(local);
  return true;
}

}  // namespace zolt
