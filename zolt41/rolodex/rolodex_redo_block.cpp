#include <utility>

#include "zolt41/foundation/endian.h"
#include "zolt41/rolodex/redo_block.h"
#include "zolt41/rolodex/rolodex_format.h"

namespace zolt {
namespace {

void AddNumber(uint32_t number, std::string *bytes) {
  char stored[4];
  StoreLittle32(number, stored);
  bytes->append(stored, sizeof stored);
}

uint64_t LoadLittle64(char const *bytes) {
  return LoadLittle32(bytes) | uint64_t{LoadLittle32(bytes + 4)} << 32;
}

// Of eight bytes at a time; the last ones are filled up with 0.
uint64_t SumOf(std::string_view bytes) {
  uint64_t sum = bytes.size();
  auto const take = [&](uint64_t word) {
    sum = (sum ^ word) * 0x9E3779B97F4A7C15;
    sum ^= sum >> 32;
  };
  while (bytes.size() >= 8) {
    take(LoadLittle64(bytes.data()));
    bytes.remove_prefix(8);
  }
  char last[8] = {};
  bytes.copy(last, sizeof last);
  take(LoadLittle64(last));
  return sum;
}

// Whether a piece is magic and version as they have to be.
bool IsFront(uint32_t position, std::string_view bytes) {
  return position == 0 && bytes.size() == kRolodexHead &&
         LoadLittle32(bytes.data()) == kRolodexMagic && LoadLittle32(bytes.data() + 4) == 0;
}

}  // namespace

std::string RedoBlockOf(uint32_t start, std::span<Piece const> pieces) {
  std::string block;
  size_t size = kRedoFooterSize;
  for (Piece const &piece : pieces) size += kRedoPieceHead + piece.bytes.size();
  block.reserve(size);
  for (Piece const &piece : pieces) {
    AddNumber(piece.position, &block);
    AddNumber(static_cast<uint32_t>(piece.bytes.size()), &block);
    block += piece.bytes;
  }
  auto const length = static_cast<uint32_t>(block.size());
  AddNumber(start, &block);
  AddNumber(length, &block);
  uint64_t const sum = SumOf(block);
  AddNumber(static_cast<uint32_t>(sum), &block);
  AddNumber(static_cast<uint32_t>(sum >> 32), &block);
  AddNumber(kRedoMagic, &block);
  return block;
}

RedoBlock::RedoBlock(DatabaseFile const &file) : read_(Read(file)) {
  if (!block_.empty()) FindPieces();
}

bool RedoBlock::Read(DatabaseFile const &file) {
  int64_t const size = file.Size();
  if (size < 0) return false;
  if (size < kCardArea + kEndMarkSize + kRedoFooterSize || size > kLargestFile) return true;
  auto const fileSize = static_cast<uint32_t>(size);
  char footer[kRedoFooterSize];
  if (file.Read(fileSize - kRedoFooterSize, footer, sizeof footer) != 0) return false;
  if (LoadLittle32(footer + kRedoMagicOffset) != kRedoMagic) return true;
  start_ = LoadLittle32(footer + kRedoStartOffset);
  uint64_t const end = uint64_t{start_} + LoadLittle32(footer + kRedoSizeOffset) + kRedoFooterSize;
  if (start_ < kCardArea + kEndMarkSize || end != fileSize) return true;
  block_.resize(fileSize - start_);
  return file.Read(start_, block_.data(), fileSize - start_) == 0;
}

void RedoBlock::FindPieces() {
  std::string_view const block = block_;
  size_t const size = block.size() - kRedoFooterSize;
  char const *const stored = block.data() + size + kRedoSumOffset;
  if (LoadLittle64(stored) != SumOf(block.substr(0, size + kRedoSumOffset))) return;
  std::vector<Piece> pieces;
  for (std::string_view rest = block.substr(0, size); !rest.empty();) {
    if (rest.size() < kRedoPieceHead) return;
    uint32_t const position = LoadLittle32(rest.data());
    uint32_t const length = LoadLittle32(rest.data() + 4);
    rest.remove_prefix(kRedoPieceHead);
    uint64_t const end = uint64_t{position} + length;
    if (length > rest.size() || end > start_ - kEndMarkSize) return;
    if (position < kRolodexHead && !IsFront(position, rest.substr(0, length))) return;
    pieces.push_back({position, rest.substr(0, length)});
    rest.remove_prefix(length);
  }
  pieces_ = std::move(pieces);
}

}  // namespace zolt
