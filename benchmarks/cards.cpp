// A card that is read: as the property list that it is, as JSON and as vCard of the same card, and
// as text.

#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <malloc.h>
#include <vf_iface.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "benchmarks/measure.h"
#include "benchmarks/median_reporter.h"
#include "zolt41/zolt41.h"

namespace {

using namespace zolt::bench;

constexpr double kSeconds = 0.1;
constexpr int kKept = 1 << 28;  // bytes
constexpr int kProperties = 20;
constexpr int kFewLines = 1000;
constexpr int kManyLines = 10000;

std::atomic<uint64_t> allocations = 0;

std::string NameOf(int number) {
  return "X-PROPERTY-" + std::to_string(number);
}

std::string ValueOf(int number) {
  return "a text of about thirty bytes " + std::to_string(number);
}

std::string ListOf(PCardStorage *card) {
  char *const list = card->Get();
  std::string bytes(list, GetMemSize(list));
  _DisposeMem(list);
  return bytes;
}

void Fill(PCardStorage *card) {
  for (int i = 0; i < kProperties; i++)
    card->SetStrProp(NameOf(i).c_str(), i % 2 == 0 ? 0x10 : 0x20, 0, ValueOf(i).c_str());
}

std::string JsonOfCard() {
  nlohmann::json card;
  for (int i = 0; i < kProperties; i++) {
    card["properties"].push_back({{"name", NameOf(i)},
                                  {"type", "UNICODE"},
                                  {"flags", {i % 2 == 0 ? "HOME" : "WORK"}},
                                  {"value", ValueOf(i)}});
  }
  return card.dump();
}

// A list is copied and its records are found; a store of preferences is not there in either.
void LoadOurs(benchmark::State &state) {
  PCardStorage filled;
  Fill(&filled);
  std::string const bytes = ListOf(&filled);
  for ([[maybe_unused]] auto _ : state) {
    PCardStorage card;
    card.Set(bytes.data(), static_cast<int32_t>(bytes.size()));
    Require(card.PropCount() == kProperties, "a card was not loaded");
  }
}

void LoadJson(benchmark::State &state) {
  std::string const text = JsonOfCard();
  for ([[maybe_unused]] auto _ : state) {
    auto const card = nlohmann::json::parse(text);
    Require(card["properties"].size() == kProperties, "a card was not parsed");
  }
}

std::string VCardOfCard() {
  std::string card = "BEGIN:VCARD\r\nVERSION:2.1\r\n";
  for (int i = 0; i < kProperties; i++)
    card += NameOf(i) + (i % 2 == 0 ? ";HOME:" : ";WORK:") + ValueOf(i) + "\r\n";
  return card + "END:VCARD\r\n";
}

void LoadVCard(benchmark::State &state) {
  std::string text = VCardOfCard();
  for ([[maybe_unused]] auto _ : state) {
    VF_PARSER_T *parser = nullptr;
    VF_OBJECT_T *card = nullptr;
    bool const parsed = vf_parse_init(&parser, &card) != 0 &&
                        vf_parse_text(parser, text.data(), static_cast<int>(text.size())) != 0;
    Require(vf_parse_end(parser) != 0 && parsed && card != nullptr, "a vCard was not parsed");
    vf_delete_object(card, 1);
  }
}

void Find(benchmark::State &state) {
  PCardStorage card;
  Fill(&card);
  std::string const last = NameOf(kProperties - 1);
  uint64_t const before = allocations;
  for ([[maybe_unused]] auto _ : state) {
    uint32_t const found = card.FindProp(last.c_str(), 0x20, 0, 0, nullptr);
    Require(found == kProperties - 1, "a property was not found");
  }
  Require(allocations == before, "finding a property took memory");
}

void FindJson(benchmark::State &state) {
  auto const card = nlohmann::json::parse(JsonOfCard());
  std::string const last = NameOf(kProperties - 1);
  for ([[maybe_unused]] auto _ : state) {
    bool found = false;
    for (auto const &property : card["properties"]) {
      found = property["name"].get_ref<std::string const &>() == last &&
              property["flags"][0].get_ref<std::string const &>() == "WORK";
      if (found) break;
    }
    Require(found, "a property was not found");
  }
}

enum class Lines { texts, bytes, preferences, longPreferences };

std::string TextOf(Lines lines, int count) {
  bool const isCard = lines == Lines::texts || lines == Lines::bytes;
  std::string text =
      std::string("10.0.0.1\r\n0\r\n\r\n[") + (isCard ? "Card Infos" : "General") + "]\r\n";
  for (int i = 0; i < count; i++) {
    // In the order in which they are written.
    text += NameOf(10 * kManyLines + i);
    if (lines == Lines::texts) text += "=ASCII:HOME:";
    if (lines == Lines::bytes) text += "=DATA::<0123456789ABCDEF>";
    if (lines == Lines::preferences) text += "=";
    // Of one of them the name is stored cut.
    if (lines == Lines::longPreferences) text += i == 0 ? std::string(33, 'n') + "=" : "=";
    if (lines != Lines::bytes) text += ValueOf(i);
    text += "\r\n";
  }
  return text;
}

void Import(benchmark::State &state, std::string const &text) {
  for ([[maybe_unused]] auto _ : state) {
    PCardStorage card;
    Require(ImportCard(&card, text.data(), static_cast<int32_t>(text.size())) == 1 &&
                card.PropCount() > 2,
            "a text was not imported");
  }
}

void AddImports() {
  struct {
    char const *name;
    Lines lines;
  } const kinds[] = {{"texts", Lines::texts},
                     {"bytes", Lines::bytes},
                     {"preferences", Lines::preferences},
                     {"long_preferences", Lines::longPreferences}};
  for (auto const &[name, lines] : kinds) {
    for (int const count : {kFewLines, kManyLines}) {
      std::string const key = std::string("card.import.") + name + "." + std::to_string(count);
      auto const run = [text = TextOf(lines, count)](benchmark::State &state) {
        Import(state, text);
      };
      benchmark::RegisterBenchmark(key.c_str(), run)->MinTime(kSeconds);
    }
  }
}

}  // namespace

// Counts what the library takes, too.
extern "C" void *malloc(size_t size) {
  static auto *const next = reinterpret_cast<void *(*)(size_t)>(dlsym(RTLD_NEXT, "malloc"));
  allocations++;
  return next(size);
}

int main() {
  // What was freed stays with the process, so that the time of a long text is not that of the
  // system, which clears memory.
  mallopt(M_TRIM_THRESHOLD, kKept);
  mallopt(M_MMAP_THRESHOLD, kKept);
  std::string const home = WorkFile("cards-home");
  setenv("ZOLT_HOME", home.c_str(), 1);
  InitZOLT();
  InitPrefs(nullptr);
  benchmark::RegisterBenchmark("card.load.ours", LoadOurs)->MinTime(kSeconds);
  benchmark::RegisterBenchmark("card.load.json", LoadJson)->MinTime(kSeconds);
  benchmark::RegisterBenchmark("card.load.vformat", LoadVCard)->MinTime(kSeconds);
  benchmark::RegisterBenchmark("card.find.ours", Find)->MinTime(kSeconds);
  benchmark::RegisterBenchmark("card.find.json", FindJson)->MinTime(kSeconds);
  AddImports();
  RunInterleaved();
  DisposeZOLT();
}
