// Base64 and hex beside the loop that a programmer writes first, on the same bytes.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <string>
#include <string_view>

#include "benchmarks/measure.h"
#include "benchmarks/median_reporter.h"
#include "zolt41/foundation/text_coding.h"

namespace {

using namespace zolt::bench;

constexpr double kSeconds = 0.03;

struct Coding {
  char const *name;
  size_t (*size)(size_t count);
  void (*encode)(std::string_view bytes, char *text);
  void (*encodePlainly)(std::string_view bytes, char *text);
  bool (*decode)(std::string_view text, std::string *bytes);
  bool (*decodePlainly)(std::string_view text, std::string *bytes);
};

constexpr char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kHex[] = "0123456789ABCDEF";

// What each byte is as a digit; -1 if it is none.
class Values {
 public:
  explicit Values(std::string_view digits) {
    for (int &value : values_) value = -1;
    for (size_t i = 0; i < digits.size(); i++) {
      values_[static_cast<uint8_t>(digits[i])] = static_cast<int>(i);
    }
  }
  int Of(char digit) const { return values_[static_cast<uint8_t>(digit)]; }

 private:
  int values_[256];
};

Values const kBase64Values(kBase64);
Values const kHexValues(kHex);

uint32_t Byte(std::string_view bytes, size_t place) {
  return static_cast<uint8_t>(bytes[place]);
}

// The bytes are a multiple of three.
void EncodeBase64Plainly(std::string_view bytes, char *text) {
  for (size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t const bits = Byte(bytes, i) << 16 | Byte(bytes, i + 1) << 8 | Byte(bytes, i + 2);
    for (int shift = 18; shift >= 0; shift -= 6) *text++ = kBase64[bits >> shift & 0x3F];
  }
}

bool DecodeBase64Plainly(std::string_view text, std::string *bytes) {
  bytes->resize(text.size() / 4 * 3);
  char *to = bytes->data();
  for (size_t i = 0; i < text.size(); i += 4) {
    uint32_t bits = 0;
    for (size_t k = i; k < i + 4; k++) {
      int const value = kBase64Values.Of(text[k]);
      if (value < 0) return false;
      bits = bits << 6 | static_cast<uint32_t>(value);
    }
    for (int shift = 16; shift >= 0; shift -= 8) *to++ = static_cast<char>(bits >> shift);
  }
  return true;
}

void EncodeHexPlainly(std::string_view bytes, char *text) {
  for (size_t i = 0; i < bytes.size(); i++) {
    *text++ = kHex[Byte(bytes, i) >> 4];
    *text++ = kHex[Byte(bytes, i) & 0xF];
  }
}

bool DecodeHexPlainly(std::string_view text, std::string *bytes) {
  bytes->resize(text.size() / 2);
  for (size_t i = 0; i < text.size(); i += 2) {
    int const high = kHexValues.Of(text[i]);
    int const low = kHexValues.Of(text[i + 1]);
    if (high < 0 || low < 0) return false;
    (*bytes)[i / 2] = static_cast<char>(high << 4 | low);
  }
  return true;
}

constexpr Coding kCodings[] = {
    {"base64", zolt::Base64Size,
     [](std::string_view bytes, char *text) { zolt::EncodeBase64(bytes, text); },
     EncodeBase64Plainly,
     [](std::string_view text, std::string *bytes) { return zolt::DecodeBase64(text, bytes); },
     DecodeBase64Plainly},
    {"hex", zolt::HexSize, [](std::string_view bytes, char *text) { zolt::EncodeHex(bytes, text); },
     EncodeHexPlainly,
     [](std::string_view text, std::string *bytes) { return zolt::DecodeHex(text, bytes); },
     DecodeHexPlainly},
};

std::string RandomBytes(size_t size) {
  std::mt19937 random;
  std::string bytes(size, '\0');
  for (char &byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

void Encode(benchmark::State &state, Coding const &coding, std::string const &bytes, bool ours) {
  std::string text(coding.size(bytes.size()), '\0');
  auto *const encode = ours ? coding.encode : coding.encodePlainly;
  for ([[maybe_unused]] auto _ : state) {
    encode(bytes, text.data());
    benchmark::ClobberMemory();
  }
  std::string back;
  Require(coding.decodePlainly(text, &back) && back == bytes, "bytes did not come back");
}

void Decode(benchmark::State &state, Coding const &coding, std::string const &bytes, bool ours) {
  std::string text(coding.size(bytes.size()), '\0');
  coding.encodePlainly(bytes, text.data());
  auto *const decode = ours ? coding.decode : coding.decodePlainly;
  std::string back;
  for ([[maybe_unused]] auto _ : state) {
    Require(decode(text, &back), "a text was refused");
    benchmark::ClobberMemory();
  }
  Require(back == bytes, "bytes did not come back");
}

using Work = void(benchmark::State &, Coding const &, std::string const &, bool);

void Add(std::string const &name, Coding const &coding, std::string const &bytes, Work *work) {
  for (bool const ours : {true, false}) {
    auto const run = [=, &coding](benchmark::State &state) { work(state, coding, bytes, ours); };
    benchmark::RegisterBenchmark((name + (ours ? ".ours" : ".loop")).c_str(), run)
        ->MinTime(kSeconds);
  }
}

void AddBenchmarks() {
  struct {
    char const *name;
    std::string bytes;
  } const sizes[] = {{"64k", RandomBytes(65536 / 3 * 3)}, {"4m", RandomBytes((4 << 20) / 3 * 3)}};
  for (Coding const &coding : kCodings) {
    for (auto const &[size, bytes] : sizes) {
      Add(std::string(coding.name) + ".encode." + size, coding, bytes, Encode);
      Add(std::string(coding.name) + ".decode." + size, coding, bytes, Decode);
    }
  }
}

}  // namespace

int main() {
  AddBenchmarks();
  RunInterleaved();
}
