// The preferences of a card, made of any bytes: they are read, changed, written and read again, and
// by reading never become more than they were.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "zolt41/zolt41.h"

namespace {

void Require(bool held) {
  if (!held) abort();
}

std::string BlobOf(TYUserPrefs *store) {
  char *const blob = store->GetData();
  Require(blob != nullptr);
  std::string bytes(blob, GetMemSize(blob));
  _DisposeMem(blob);
  return bytes;
}

void ReadAll(TYUserPrefs *store, size_t size) {
  std::vector<char> text(size + 1);
  uint32_t section = 0;
  for (int32_t i = 0; char const *name = store->GetIndexedName(i, &section); i++) {
    // Not of every name: a byte 0x80 in one counts as an end, or not, by the side it is on.
    store->Exists(section, name);
    store->GetStr(section, name, text.data());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size) {
  TYUserPrefs store(PrefLevelCard, reinterpret_cast<char const *>(data),
                    static_cast<uint32_t>(size));
  ReadAll(&store, size);
  std::string blob = BlobOf(&store);
  Require(blob.size() <= (size < 8 ? 8 : size));
  // The place of an empty value may change once.
  for (int i = 0; i < 2; i++) {
    TYUserPrefs again(PrefLevelCard, blob.data(), static_cast<uint32_t>(blob.size()));
    std::string const next = BlobOf(&again);
    Require(next.size() == blob.size() && (i == 0 || next == blob));
    blob = next;
  }
  std::string const value(300, 'v');
  std::vector<char> text(size + value.size() + 1);
  store.SetStr(0, "fuzz", value.c_str());
  store.GetStr(0, "fuzz", text.data());
  store.Remove(0, "fuzz");
  return 0;
}
