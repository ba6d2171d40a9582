#include "zolt41/platform/desktop/profile.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

#include "zolt41/platform/desktop/mail_client.h"
#include "zolt41/platform/system/ascii_case.h"
#include "zolt41/platform/system/home.h"

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool SameWord(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, {}, zolt::FoldAscii, zolt::FoldAscii);
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r";
  text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

std::optional<uint32_t> InProfile(std::string_view section, std::string_view key) {
  std::string const path = zolt::ResolveHomes().user + "/profile.ini";
  std::error_code none;
  // A pipe or a device might never end.
  if (!std::filesystem::is_regular_file(path, none)) return std::nullopt;
  std::ifstream profile(path);
  bool inSection = false;
  for (std::string whole; std::getline(profile, whole);) {
    std::string_view line = whole;
    if (line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
    line = Trimmed(line);
    if (line.starts_with('[')) {
      inSection = SameWord(Trimmed(line.substr(1, line.find(']') - 1)), section);
    }
    size_t const equals = line.find('=');
    if (!inSection || equals == std::string_view::npos) continue;
    if (!SameWord(Trimmed(line.substr(0, equals)), key)) continue;
    return static_cast<uint32_t>(
        std::strtol(std::string(line.substr(equals + 1)).c_str(), nullptr, 10));
  }
  return std::nullopt;
}

}  // namespace

uint32_t GetProfileIntA(char const *section, char const *key, int32_t defaultValue) {
  if (section == nullptr || key == nullptr) return static_cast<uint32_t>(defaultValue);
  if (std::optional<uint32_t> const number = InProfile(section, key)) return *number;
  bool const mail = SameWord(section, "MAIL") && SameWord(key, "MAPI");
  return mail && zolt::HasMailClient() ? 1 : static_cast<uint32_t>(defaultValue);
}
