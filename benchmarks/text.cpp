// UTF-16 to and from the local code page beside iconv, on the same texts.

#include <benchmark/benchmark.h>
#include <iconv.h>

#include <cstdint>
#include <string>

#include "benchmarks/measure.h"
#include "benchmarks/median_reporter.h"
#include "zolt41/zolt41.h"

namespace {

using namespace zolt::bench;

constexpr double kSeconds = 0.03;

// Opened once; each text begins with the state reset.
class Iconv {
 public:
  Iconv(char const *to, char const *from) : handle_(iconv_open(to, from)) {
    Require(reinterpret_cast<intptr_t>(handle_) != -1, "iconv does not know the code page");
  }
  ~Iconv() { iconv_close(handle_); }
  Iconv(Iconv const &) = delete;
  Iconv &operator=(Iconv const &) = delete;

  // Gives the bytes written.
  size_t Convert(void const *source, size_t size, void *destination, size_t room) {
    auto *from = static_cast<char *>(const_cast<void *>(source));
    auto *to = static_cast<char *>(destination);
    size_t left = room;
    iconv(handle_, nullptr, nullptr, nullptr, nullptr);
    Require(iconv(handle_, &from, &size, &to, &left) == 0, "iconv did not convert a text");
    return room - left;
  }

 private:
  iconv_t handle_;
};

std::u16string Ascii(size_t length) {
  std::u16string text(length, u' ');
  for (size_t i = 0; i < length; i++) text[i] = static_cast<char16_t>(' ' + i % 95);
  return text;
}

// Every eighth character lies beyond ASCII, and every other one of these beyond Latin-1, too.
std::u16string Mixed(size_t length) {
  constexpr char16_t kBeyond[] = u"\u00E9\u20AC\u00FC\u2019\u00DF\u0153\u00A7\u2026";
  std::u16string text = Ascii(length);
  for (size_t i = 5; i < length; i += 8) text[i] = kBeyond[i / 8 % 8];
  return text;
}

std::string Narrowed(std::u16string const &text) {
  std::string bytes(text.size(), '\0');
  Iconv("CP1252", "UTF-16LE").Convert(text.data(), 2 * text.size(), bytes.data(), bytes.size());
  return bytes;
}

void NarrowOurs(benchmark::State &state, std::u16string const &text) {
  std::string bytes(text.size(), '\0');
  auto const count = static_cast<int32_t>(text.size());
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(ConvertUnicodeToLocal(text.data(), bytes.data(), count, '?'));
    benchmark::ClobberMemory();
  }
  Require(bytes == Narrowed(text), "a text was not converted as iconv does");
}

void NarrowTheirs(benchmark::State &state, std::u16string const &text) {
  std::string bytes(text.size(), '\0');
  Iconv converter("CP1252", "UTF-16LE");
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(
        converter.Convert(text.data(), 2 * text.size(), bytes.data(), bytes.size()));
    benchmark::ClobberMemory();
  }
}

void WidenOurs(benchmark::State &state, std::u16string const &text) {
  std::string const bytes = Narrowed(text);
  std::u16string wide(text.size(), u'\0');
  auto const count = static_cast<int32_t>(bytes.size());
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(ConvertLocalToUnicode(bytes.data(), wide.data(), count));
    benchmark::ClobberMemory();
  }
  Require(wide == text, "a text did not come back as it was");
}

void WidenTheirs(benchmark::State &state, std::u16string const &text) {
  std::string const bytes = Narrowed(text);
  std::u16string wide(text.size(), u'\0');
  Iconv converter("UTF-16LE", "CP1252");
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(
        converter.Convert(bytes.data(), bytes.size(), wide.data(), 2 * wide.size()));
    benchmark::ClobberMemory();
  }
}

using Work = void(benchmark::State &, std::u16string const &);

void Add(std::string const &name, std::u16string const &text, Work *work) {
  auto const run = [text, work](benchmark::State &state) { work(state, text); };
  benchmark::RegisterBenchmark(name.c_str(), run)->MinTime(kSeconds);
}

void AddBenchmarks() {
  struct {
    char const *name;
    std::u16string text;
  } const texts[] = {{"short", Ascii(30)}, {"ascii", Ascii(4096)}, {"mixed", Mixed(4096)}};
  for (auto const &[name, text] : texts) {
    Add(std::string("narrow.") + name + ".ours", text, NarrowOurs);
    Add(std::string("narrow.") + name + ".iconv", text, NarrowTheirs);
    Add(std::string("widen.") + name + ".ours", text, WidenOurs);
    Add(std::string("widen.") + name + ".iconv", text, WidenTheirs);
  }
}

}  // namespace

int main() {
  AddBenchmarks();
  RunInterleaved();
}
