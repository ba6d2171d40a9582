// A card text made of any bytes: it is read to some end, and the card that comes of it can be
// written and read again.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "zolt41/zolt41.h"

namespace {

constexpr char kProperties[] = "\n\n\n[Card Infos]\n";
constexpr char kPreferences[] = "\n\n\n[General]\n";
// The text of a property is as long as its 16-bit value in hex, its name and a few words.
constexpr size_t kGrowth = 100;

void Start() {
  std::string home = std::filesystem::temp_directory_path() / "zolt41-fuzz-XXXXXX";
  if (mkdtemp(home.data()) == nullptr) abort();
  setenv("ZOLT_HOME", home.c_str(), 1);
  InitZOLT();
  InitPrefs(nullptr);
  // What is needed of it is in memory.
  std::filesystem::remove_all(home);
}

std::string TextOf(PCardStorage *card) {
  uint32_t size = 0;
  void *const block = ExportCard(card, &size);
  if (block == nullptr) abort();
  std::string text(static_cast<char const *>(GlobalLock(block)), size);
  GlobalFree(block);
  return text;
}

void Read(PCardStorage *card, std::string const &text) {
  ImportCard(card, text.data(), static_cast<int32_t>(text.size()));
}

void Check(std::string const &text) {
  zolt::CheckCardText(
      text.data(), static_cast<int32_t>(text.size()), [](void *, zolt::CardTextFinding const &) {},
      nullptr);
}

void ReadAndWrite(std::string const &text) {
  Check(text);
  PCardStorage card;
  Read(&card, text);
  std::string const written = TextOf(&card);
  if (written.size() > kGrowth * (text.size() + 10)) abort();
  PCardStorage again;
  Read(&again, written);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size) {
  [[maybe_unused]] static bool const started = (Start(), true);
  std::string const bytes(reinterpret_cast<char const *>(data), size);
  ReadAndWrite(bytes);
  ReadAndWrite(kProperties + bytes);
  ReadAndWrite(kPreferences + bytes);
  return 0;
}
