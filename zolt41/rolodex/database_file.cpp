#include "zolt41/rolodex/database_file.h"

#include <algorithm>
#include <utility>

#include "zolt41/foundation/afs_file.h"
#include "zolt41/foundation/afs_results.h"
#include "zolt41/platform/system/file.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/redo_block.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/with_memory.h"

namespace zolt {
namespace {

constexpr int32_t kRefused = -1;

// Bytes of one such unit are written as a whole, or not at all.
bool WrittenAsOne(uint32_t position, size_t count, uint32_t unit) {
  return position / unit == (position + count - 1) / unit;
}

}  // namespace

DatabaseFile::~DatabaseFile() {
  AFS_CloseFile(handle_);
}

int32_t DatabaseFile::Read(uint32_t position, void *bytes, uint32_t count) const {
  uint32_t done = 0;
  if (copy_.Read(position, bytes, count)) return 0;
  if (ReadFileAt(handle_, position, bytes, count, &done) == 0) return kRefused;
  return done < count ? kAfsEndedEarly : 0;
}

int32_t DatabaseFile::ReadBody(uint32_t position, void *bytes, uint32_t count) {
  if (!copy_.taken() && copy_.Pays()) TakeCopy();
  return Read(position, bytes, count);
}

void DatabaseFile::TakeCopy() {
  int64_t const size = Size();
  if (size <= 0 || size > FileCopy::kLargest) return;
  std::vector<char> bytes(static_cast<size_t>(size));
  if (Read(0, bytes.data(), static_cast<uint32_t>(size)) == 0) copy_.Take(std::move(bytes));
}

int64_t DatabaseFile::Size() const {
  return SizeOfFile(handle_);
}

DatabaseFile::Written DatabaseFile::TryWrite(uint32_t position, std::string_view bytes) {
  uint32_t done = 0;
  auto const count = static_cast<uint32_t>(bytes.size());
  bool const whole = WriteFileAt(handle_, position, bytes.data(), count, &done) != 0;
  copy_.Write(position, bytes.substr(0, done));
  if (whole && done == count) return Written::all;
  if (whole) SetFailure(Failure::full, "");
  return done == 0 ? Written::nothing : Written::some;
}

bool DatabaseFile::Write(uint32_t position, std::string_view bytes) {
  return TryWrite(position, bytes) == Written::all;
}

bool DatabaseFile::Cut(uint32_t size) {
  copy_.Cut(size);
  return ResizeFile(handle_, size) != 0;
}

bool DatabaseFile::Sync() {
  return FlushFileBuffers(handle_) != 0;
}

bool DatabaseFile::SyncDelayed() {
  delayed_ = false;
  return Barrier();
}

bool DatabaseFile::Break() {
  broken_ = true;
  return false;
}

// Takes back what stands behind the end mark.
bool DatabaseFile::Restore(uint32_t end) {
  if (broken_) return false;
  FirstFailure first;
  first.Note();
  return Cut(end + kEndMarkSize) ? false : Break();
}

bool DatabaseFile::Put(uint32_t end, uint32_t position, std::string_view bytes) {
  Piece const piece = {position, bytes};
  uint32_t const unit = durable_ ? kSector : kWholeWrite;
  if (!WrittenAsOne(position, bytes.size(), unit)) return PutPieces(end, {&piece, 1});
  switch (TryWrite(position, bytes)) {
    case Written::all:
      return delayed_ || Barrier() ? true : Break();
    case Written::nothing:
      return false;
    case Written::some:
      // Nothing but a block can still make it whole.
      if (!PutPieces(end, {&piece, 1})) return Break();
      ClearFailure();
      return true;
  }
  return false;
}

bool DatabaseFile::Append(uint32_t end, std::string_view records) {
  // The end mark stays until its place becomes the position of the first new record.
  auto const newEnd = static_cast<uint32_t>(end + records.size() - kEndMarkSize);
  bool const written = Write(end + kEndMarkSize, records.substr(kEndMarkSize)) && Barrier();
  return written && Put(newEnd, end, records.substr(0, kEndMarkSize)) ? true : Restore(end);
}

bool DatabaseFile::FillFree(uint32_t end, uint32_t position, std::string_view record) {
  constexpr uint32_t kCommitted = kCategoriesOffset - kIdOffset;
  return Write(position + kCategoriesOffset, record.substr(kCategoriesOffset)) && Barrier() &&
         Put(end, position + kIdOffset, record.substr(kIdOffset, kCommitted));
}

bool DatabaseFile::Apply(std::span<Piece const> pieces) {
  return std::ranges::all_of(pieces, [this](Piece const &p) { return Write(p.position, p.bytes); });
}

bool DatabaseFile::PutPieces(uint32_t end, std::span<Piece const> pieces) {
  uint32_t const start = end + kEndMarkSize;
  std::string const block = WithMemory(std::string(), [&] { return RedoBlockOf(start, pieces); });
  if (block.empty()) return false;
  if (block.size() > kLargestFile - start) {
    SetFailure(Failure::full, "");
    return false;
  }
  if (!Write(start, block) || !Barrier()) return Restore(end);
  // From here on the file holds the change, done or to be done.
  return Apply(pieces) && Barrier() && Cut(start) ? true : Break();
}

bool DatabaseFile::PutPiecesOnDisk(uint32_t end, std::span<Piece const> pieces) {
  bool const durable = std::exchange(durable_, true);
  bool const put = PutPieces(end, pieces);
  durable_ = durable;
  return put;
}

bool DatabaseFile::Redo() {
  RedoBlock const block(*this);
  if (!block.found()) return block.read();
  // On the disk before the block goes, for it may have been the power that ended the step.
  return Apply(block.pieces()) && Sync() && Cut(block.start());
}

}  // namespace zolt
