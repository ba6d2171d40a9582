#ifndef ZOLT41_PLATFORM_SYSTEM_CODEPAGE_TABLE_H_
#define ZOLT41_PLATFORM_SYSTEM_CODEPAGE_TABLE_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace zolt {

// One single-byte code page: what its bytes mean, which byte a character has, and which bytes are
// the two cases of one letter. The lower half of every page is ASCII.
class CodePage {
 public:
  using UpperHalf = std::array<char16_t, 128>;

  // `upperHalf` holds the characters of the bytes 0x80 to 0xFF, each character once.
  constexpr CodePage(uint32_t number, UpperHalf const &upperHalf);

  constexpr uint32_t Number() const { return number_; }
  constexpr char16_t CharacterOf(char byte) const { return characters_[Index(byte)]; }

  // The byte of `character`, or `missing` if the page does not have it.
  constexpr char ByteOf(char16_t character, char missing) const {
    if (character == 0) return 0;
    uint8_t const byte = bytes_[blockOf_[character >> 8]][character & 0xFF];
    return byte == 0 ? missing : static_cast<char>(byte);
  }
  constexpr bool Has(char16_t character) const { return ByteOf(character, 0) != 0 || !character; }

  // The byte of the small letter if `byte` is a capital whose small letter the page has; else the
  // byte itself.
  constexpr uint8_t Fold(char byte) const { return folded_[Index(byte)]; }

 private:
  // The characters of one page lie in at most this many rows of 256; block 0 is an empty row.
  static constexpr size_t kBlocks = 8;

  static constexpr uint8_t Index(char byte) { return static_cast<uint8_t>(byte); }
  constexpr void EnterCharacters(UpperHalf const &upperHalf);
  constexpr void EnterBytes();
  constexpr void EnterFolds();

  uint32_t number_;
  std::array<char16_t, 256> characters_{};
  std::array<uint8_t, 256> blockOf_{};
  std::array<std::array<uint8_t, 256>, kBlocks> bytes_{};
  std::array<uint8_t, 256> folded_{};
};

// The page of that number, or null if it is not known here. Knows 1250 to 1254, 1257, 437, 850,
// 866, 28591 and 28605.
CodePage const *FindCodePage(uint32_t number);

// The pages of local (ANSI) and of OEM text, chosen at the first use.
CodePage const &LocalPage();
CodePage const &OemPage();

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_CODEPAGE_TABLE_H_
