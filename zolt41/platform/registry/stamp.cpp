#include "zolt41/platform/registry/stamp.h"

#include "zolt41/platform/system/ascii_case.h"

namespace zolt {
namespace {

constexpr uint64_t kPrime = 0x100000001B3;

uint32_t Finish(uint64_t hash) {
  hash ^= hash >> 32;
  hash *= 0x9E3779B97F4A7C15;
  return static_cast<uint32_t>(hash >> 40) % kValueWords;
}

}  // namespace

uint32_t ValueWord(int64_t key, std::string_view name) {
  uint64_t hash = (0xCBF29CE484222325 ^ static_cast<uint64_t>(key)) * kPrime;
  for (char const c : name) hash = (hash ^ static_cast<uint8_t>(FoldAscii(c))) * kPrime;
  return Finish(hash);
}

uint32_t ShapeWord(int64_t key) {
  // A hash of no name: value names hold no NUL.
  return ValueWord(key, std::string_view("\0", 1));
}

}  // namespace zolt
