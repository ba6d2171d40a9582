// A card file made of any bytes behind a head, and of any bytes alone: it is loaded, changed, saved
// and loaded again, and what was changed is there.

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "zolt41/zolt41.h"

namespace {

constexpr size_t kHead = 56;

void Require(bool held) {
  if (!held) abort();
}

// A file in memory that is kept for all runs.
std::string const &Path() {
  static std::string const path = "/dev/shm/card-fuzz-" + std::to_string(getpid());
  static bool const removed = std::atexit([] { unlink(Path().c_str()); }) == 0;
  return removed ? path : path;
}

void Write(std::string const &bytes) {
  FILE *const file = std::fopen(Path().c_str(), "wb");
  Require(file != nullptr && std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size());
  std::fclose(file);
}

void LoadAndSave(std::string const &bytes) {
  Write(bytes);
  CallCard card(Path().c_str());
  auto *const prefs = static_cast<TYUserPrefs *>(card.Prefs());
  char *const list = card.Get();
  // Text takes its length four times over in hex, and 16-bit text twice that.
  Require(GetMemSize(list) <= 8 * bytes.size() + 200);
  _DisposeMem(list);
  prefs->SetStr(7, "fuzz", "a preference");
  card.SetStrProp("FUZZ", 0, 0, "a text");
  Require(card.SaveCardAs(CardFormatBinary, Path().c_str()) == 1);
  CallCard loaded(Path().c_str());
  Require(loaded.Format() == CardFormatBinary && loaded.PropCount() == card.PropCount());
  Require(loaded.Selected("FUZZ", CSEquals, "a text") == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size) {
  std::string const bytes(reinterpret_cast<char const *>(data), size);
  LoadAndSave(bytes);
  std::string head = "LN_091296";
  head.resize(kHead);
  LoadAndSave(head + bytes);
  return 0;
}
