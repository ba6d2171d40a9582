#include "benchmarks/work.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace zolt::bench {
namespace {

constexpr std::string_view kPrefix = "text of ";
constexpr std::string_view kSuffix = ", ";

// Differs from what an earlier process had, which may have written the same values.
uint64_t FirstSerial() {
  return static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
}

}  // namespace

std::vector<std::string> Names(size_t count) {
  std::vector<std::string> names;
  names.reserve(count);
  for (size_t i = 0; i < count; i++) {
    char name[32];
    std::snprintf(name, sizeof name, "value-%06zu", i);
    names.emplace_back(name);
  }
  return names;
}

char const *NextText(std::string const &name) {
  static thread_local char text[kTextSize];
  static thread_local uint64_t serial = FirstSerial();
  char *at = text;
  for (std::string_view const part : {kPrefix, std::string_view(name), kSuffix}) {
    std::memcpy(at, part.data(), part.size());
    at += part.size();
  }
  *std::to_chars(at, text + kTextSize - 1, ++serial).ptr = '\0';
  return text;
}

bool IsTextOf(std::string const &name, std::string_view text) {
  std::string const start = std::string(kPrefix) + name + std::string(kSuffix);
  return text.substr(0, start.size()) == start;
}

}  // namespace zolt::bench
