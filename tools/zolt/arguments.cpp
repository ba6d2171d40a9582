#include "tools/zolt/arguments.h"

#include <string>

#include "tools/zolt/errors.h"
#include "tools/zolt/near_name.h"
#include "tools/zolt/utf8.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

namespace {

bool IsOperand(std::string_view word) {
  return word.size() < 2 || word[0] != '-' || (word[1] >= '0' && word[1] <= '9');
}

void CheckUtf8(std::span<char const *const> words) {
  for (size_t i = 0; i < words.size(); i++) {
    if (!ValidUtf8(words[i])) Refuse("argument " + std::to_string(i + 1), "is no valid UTF-8");
  }
}

[[noreturn]] void RefuseName(std::string_view name) {
  std::vector<std::string> names;
  for (Option const &option : Options()) names.push_back("--" + std::string(option.name));
  Refuse("", "unknown option --" + std::string(name), DidYouMean("--" + std::string(name), names));
}

std::string_view ValueIn(std::span<char const *const> rest, std::string const &option) {
  if (rest.size() < 2) Refuse("", option + " needs a value");
  return rest[1];
}

}  // namespace

Arguments::Arguments(std::span<char const *const> words) {
  CheckUtf8(words);
  for (size_t at = 0; at < words.size();) {
    std::string_view const word = words[at];
    if (word == "--") {
      operands_.insert(operands_.end(), words.begin() + static_cast<ptrdiff_t>(at) + 1,
                       words.end());
      return;
    }
    bool const signedName = word.size() > 2 && word[1] != '-' && TakesSignedNames();
    if (IsOperand(word) || signedName) {
      operands_.push_back(word);
      at++;
    } else {
      auto const rest = words.subspan(at);
      at += word.starts_with("--") ? TakeLong(rest) : TakeShort(rest);
    }
  }
}

bool Arguments::TakesSignedNames() const {
  Verb const *const verb = operands_.size() < 2 ? nullptr : FindVerb(operands_[0], operands_[1]);
  return verb != nullptr && verb->signedNames;
}

void Arguments::Take(Option const &option, std::string_view value) {
  given_.Add(option.id);
  values_[static_cast<size_t>(option.id)] = value;
  all_.emplace_back(option.id, value);
}

std::vector<std::string_view> Arguments::Values(OptionId id) const {
  std::vector<std::string_view> values;
  for (auto const &[given, value] : all_)
    if (given == id) values.push_back(value);
  return values;
}

// How many words were taken.
size_t Arguments::TakeLong(std::span<char const *const> rest) {
  std::string_view const word = std::string_view(rest[0]).substr(2);
  size_t const equals = word.find('=');
  std::string_view const name = word.substr(0, equals);
  Option const *const option = FindOption(name);
  if (option == nullptr) RefuseName(name);
  bool const attached = equals != std::string_view::npos;
  if (option->value.empty()) {
    if (attached) Refuse("", "--" + std::string(name) + " takes no value");
    Take(*option, "");
    return 1;
  }
  Take(*option, attached ? word.substr(equals + 1) : ValueIn(rest, "--" + std::string(name)));
  return attached ? 1 : 2;
}

size_t Arguments::TakeShort(std::span<char const *const> rest) {
  std::string_view const letters = std::string_view(rest[0]).substr(1);
  for (size_t i = 0; i < letters.size(); i++) {
    Option const *const option = FindOption(letters[i]);
    if (option == nullptr) {
      Refuse("", "unknown option -" + std::string(letters.substr(i)), "-- ends the options");
    }
    if (option->value.empty()) {
      Take(*option, "");
      continue;
    }
    bool const attached = i + 1 < letters.size();
    Take(*option, attached ? letters.substr(i + 1) : ValueIn(rest, std::string("-") + letters[i]));
    return attached ? 1 : 2;
  }
  return 1;
}

}  // namespace zolt::tool
