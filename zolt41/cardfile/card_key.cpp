#include "zolt41/cardfile/card_key.h"

#include <array>
#include <cstring>

#include "zolt41/foundation/mem_block.h"
#include "zolt41/platform/system/machine_id.h"

namespace zolt {
namespace {

constexpr int kCharactersOfSource = 4;
constexpr int kBitsOfCharacter = 6;

// An address in 32 bits. It differs from one process to the next in its upper half, too.
uint32_t Address(void const *place) {
  auto const address = reinterpret_cast<uintptr_t>(place);
  return static_cast<uint32_t>(address ^ address >> 32);
}

uint32_t AddressOfNewBlock() {
  char *const block = NewMem(10);
  uint32_t const address = Address(block);
  _DisposeMem(block);
  return address;
}

// The remainder of a negative number is negative: characters below '!' come up, too.
void PutCharacters(uint32_t source, char *place) {
  for (int i = 0; i < kCharactersOfSource; i++) {
    int32_t const digit = (static_cast<int32_t>(source) >> i * kBitsOfCharacter) % 90;
    place[i] = static_cast<char>(digit + 33);
  }
}

// A NUL would end the key before its time: then the next number is taken.
void PutWholeCharacters(uint32_t source, char *place) {
  do {
    PutCharacters(source++, place);
  } while (std::memchr(place, '\0', kCharactersOfSource) != nullptr);
}

}  // namespace

void MakeCardKey(char (&key)[kCardKeySize]) {
  uint32_t freeClusters = 0;
  GetDiskFreeSpaceA(nullptr, nullptr, nullptr, &freeClusters, nullptr);
  std::array<char, 32> user{};
  uint32_t size = user.size();
  GetUserNameA(user.data(), &size);
  std::array<uint32_t, 2> userWords{};
  std::memcpy(userWords.data(), user.data(), sizeof userWords);
  std::array const sources = {AddressOfNewBlock(), Address(key), GetTickCount(),
                              freeClusters,        userWords[0], userWords[1]};
  std::memset(key, 0, sizeof key);
  char *place = key;
  for (uint32_t const source : sources) {
    PutWholeCharacters(source, place);
    place += kCharactersOfSource;
  }
}

}  // namespace zolt
