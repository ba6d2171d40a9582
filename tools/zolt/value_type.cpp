#include "tools/zolt/value_type.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <span>
#include <vector>

#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/near_name.h"
#include "tools/zolt/text.h"
#include "tools/zolt/utf8.h"

namespace zolt::tool {

namespace {

struct TypeRow {
  std::string_view name;
  ValueType type;
};

constexpr TypeRow kTypes[] = {{"text", ValueType::text},
                              {"num", ValueType::number},
                              {"bool", ValueType::boolean},
                              {"bytes", ValueType::bytes}};

constexpr std::array<std::string_view, 4> kYesWords = {"yes", "true", "on", "1"};
constexpr std::array<std::string_view, 4> kNoWords = {"no", "false", "off", "0"};

bool IsOneOf(std::string_view word, std::span<std::string_view const> words) {
  return std::ranges::any_of(words, [word](std::string_view each) { return SameName(each, word); });
}

bool TakePrefix(std::string_view *text, std::string_view prefix) {
  if (!SameName(text->substr(0, prefix.size()), prefix)) return false;
  text->remove_prefix(prefix.size());
  return true;
}

std::optional<int32_t> Number(std::string_view text, bool octal) {
  bool const negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  int const base = TakePrefix(&text, "0x") ? 16 : octal && text.starts_with('0') ? 8 : 10;
  uint32_t magnitude = 0;
  auto const end = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
  if (end.ec != std::errc() || end.ptr != text.data() + text.size()) return std::nullopt;
  int64_t const value = negative ? -int64_t{magnitude} : int64_t{magnitude};
  using Limits = std::numeric_limits<int32_t>;
  if (value < Limits::min() || value > Limits::max()) return std::nullopt;
  return static_cast<int32_t>(value);
}

StoredValue NumberFrom(std::string_view text) {
  std::optional<int32_t> const number = Number(text, false);
  if (!number) {
    Refuse(std::string(text), "is no number of 32 bits", "write it in decimal, or behind 0x");
  }
  return {Kind::text, std::to_string(*number)};
}

StoredValue BooleanFrom(std::string_view text) {
  bool const yes = IsOneOf(text, kYesWords);
  if (!yes && !IsOneOf(text, kNoWords)) {
    Refuse(std::string(text), "is neither yes nor no",
           "write yes, no, true, false, on, off, 1 or 0");
  }
  return {Kind::text, BooleanText(yes)};
}

StoredValue TextFrom(std::string_view text) {
  std::string local = ToLocal(text, "use -t bytes");
  if (local.size() > kLongestText) {
    Refuse(Clip(text, 40),
           "a text of " + std::to_string(local.size()) +
               " bytes could be written and not read; 255 is the most",
           "use -t bytes");
  }
  return {Kind::text, std::move(local)};
}

StoredValue BytesFrom(std::string_view operand) {
  if (operand == "-") return {Kind::bytes, ReadInput("-")};
  if (operand.starts_with('@')) return {Kind::bytes, ReadInput(operand.substr(1))};
  std::string const shown = Clip(operand, 40);
  std::string_view digits = operand;
  if (!TakePrefix(&digits, "0x")) Refuse(shown, "is no bytes", "write @FILE, - or 0x and digits");
  if (digits.size() % 2 != 0) Refuse(shown, "has half a byte at its end");
  std::string bytes;
  for (; !digits.empty(); digits.remove_prefix(2)) {
    unsigned char byte = 0;
    auto const end = std::from_chars(digits.data(), digits.data() + 2, byte, 16);
    if (end.ptr != digits.data() + 2) Refuse(shown, "is no hexadecimal");
    bytes.push_back(static_cast<char>(byte));
  }
  return {Kind::bytes, std::move(bytes)};
}

}  // namespace

ValueType TypeFrom(Arguments const &arguments) {
  if (!arguments.Has(OptionId::type)) return ValueType::text;
  std::string_view const word = arguments.Value(OptionId::type);
  std::vector<std::string> names;
  for (TypeRow const &row : kTypes) {
    if (row.name == word) return row.type;
    names.emplace_back(row.name);
  }
  std::string const near = DidYouMean(word, names);
  Refuse("-t " + std::string(word), "no such type",
         near.empty() ? "it is text, num, bool or bytes" : near);
}

StoredValue ParseValue(ValueType type, std::string_view operand) {
  switch (type) {
    case ValueType::number:
      return NumberFrom(operand);
    case ValueType::boolean:
      return BooleanFrom(operand);
    case ValueType::bytes:
      return BytesFrom(operand);
    case ValueType::text:
      break;
  }
  return TextFrom(operand);
}

StoredValue ValueOfFile(ValueType type, std::string_view path) {
  std::string content = ReadInput(path);
  if (type == ValueType::bytes) return {Kind::bytes, std::move(content)};
  if (content.ends_with('\n')) content.pop_back();
  bool const text = ValidUtf8(content) && content.find('\0') == std::string::npos;
  if (!text) Refuse(std::string(path), "is no text in UTF-8", "use -t bytes");
  return ParseValue(type, content);
}

std::optional<int32_t> ClientNumber(std::string_view text) {
  return Number(text, true);
}

bool ClientBoolean(std::string_view text) {
  return !text.empty() && std::string_view("YyTt").find(text[0]) != std::string_view::npos;
}

char const *BooleanText(bool value) {
  return value ? "Yes" : "No";
}

}  // namespace zolt::tool
