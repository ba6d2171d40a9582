#include "tools/zolt/settings.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tools/zolt/errors.h"

namespace zolt::tool {

namespace {

constexpr uint32_t kUsualWait = 5000;
constexpr double kLongestWait = 4'000'000;

When WhenOf(Arguments const &arguments, OptionId id) {
  std::string_view const word = arguments.Value(id);
  if (!arguments.Has(id) || word == "auto") return When::automatic;
  if (word == "always") return When::always;
  if (word == "never") return When::never;
  Refuse("--" + std::string(OptionOf(id).name) + " " + std::string(word),
         "it is auto, always or never");
}

bool TextInEnvironment(char const *name, std::string_view text) {
  char const *const value = getenv(name);
  return value != nullptr && (text.empty() ? *value != '\0' : value == text);
}

}  // namespace

Settings::Settings(Arguments const &arguments)
    : level(
          &LevelNamed(arguments.Has(OptionId::level) ? arguments.Value(OptionId::level) : "user")),
      colour(WhenOf(arguments, OptionId::color)),
      progress(WhenOf(arguments, OptionId::progress)),
      wait(arguments.Has(OptionId::wait) ? MillisecondsOf(arguments, OptionId::wait) : kUsualWait),
      only(arguments.Has(OptionId::only)),
      json(arguments.Has(OptionId::json)),
      quiet(arguments.Has(OptionId::quiet)),
      yes(arguments.Has(OptionId::yes)),
      dryRun(arguments.Has(OptionId::dryRun)),
      exitCode(arguments.Has(OptionId::exitCode)),
      nul(arguments.Has(OptionId::nul)) {}

uint32_t MillisecondsOf(Arguments const &arguments, OptionId id) {
  std::string_view const word = arguments.Value(id);
  double seconds = 0;
  auto const end = std::from_chars(word.data(), word.data() + word.size(), seconds);
  bool const whole = end.ec == std::errc() && end.ptr == word.data() + word.size();
  if (!whole || !(seconds >= 0)) {
    Refuse("--" + std::string(OptionOf(id).name) + " " + std::string(word),
           "is no number of seconds");
  }
  return static_cast<uint32_t>(std::ceil(std::min(seconds, kLongestWait) * 1000));
}

bool InColour(When colour, bool terminal) {
  if (colour != When::automatic) return colour == When::always;
  return terminal && !TextInEnvironment("NO_COLOR", "") && !TextInEnvironment("TERM", "dumb");
}

}  // namespace zolt::tool
