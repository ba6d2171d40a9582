#include "zolt41/comserver/whole_value.h"

#include <new>
#include <typeinfo>

#include "zolt41/foundation/mem_block.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/prefs/win_prefs.h"

namespace zolt {
namespace {

uint8_t *Bytes(char *block) {
  return reinterpret_cast<uint8_t *>(block);
}

char *NewBlock(uint32_t size) {
  char *const block = NewMem(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

// Between the size and the bytes the value may grow; then both are asked for again.
char *ReadFromKey(HKEY key, char const *name, uint32_t *size) {
  uint32_t stored = 0;
  int32_t const found = RegQueryValueExA(key, name, nullptr, nullptr, nullptr, &stored);
  if (found == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
  if (found != ERROR_SUCCESS) return nullptr;
  for (;;) {
    char *const block = NewBlock(stored);
    *size = stored;
    int32_t const result = RegQueryValueExA(key, name, nullptr, nullptr, Bytes(block), size);
    if (result == ERROR_SUCCESS) return block;
    _DisposeMem(block);
    if (result == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
    if (result != ERROR_MORE_DATA) return nullptr;
    stored = *size;
  }
}

// A store of another kind belongs to this thread, so nobody comes between.
char *ReadFromStore(TYPrefs *store, uint32_t section, char const *name, uint32_t *size) {
  *size = 0;
  if (store->GetFree(section, name, REG_BINARY, nullptr, *size) == 0) return nullptr;
  char *const block = NewBlock(*size);
  if (store->GetFree(section, name, REG_BINARY, Bytes(block), *size) != 0) {
    return block;
  }
  _DisposeMem(block);
  return nullptr;
}

char *ReadOwn(TYPrefs *store, uint32_t section, char const *name, uint32_t *size) {
  if (typeid(*store) == typeid(WinPrefs)) {
    HKEY const key = static_cast<WinPrefs *>(store)->SectionKey(static_cast<int32_t>(section), 0);
    if (key != 0) return ReadFromKey(key, name, size);
  }
  return ReadFromStore(store, section, name, size);
}

}  // namespace

char *ReadWholeValue(TYPrefs *store, uint32_t section, char const *name, uint32_t *size) {
  FirstFailure failure;
  for (; store != nullptr; store = store->GetParent()) {
    if (char *const block = ReadOwn(store, section, name, size)) return block;
    failure.Note();
  }
  return nullptr;
}

}  // namespace zolt
