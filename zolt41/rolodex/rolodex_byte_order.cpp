#include "zolt41/rolodex/rolodex_byte_order.h"

#include <algorithm>
#include <vector>

#include "zolt41/foundation/endian.h"
#include "zolt41/platform/system/file_beside.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/category_table.h"
#include "zolt41/rolodex/record_walk.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_state.h"
#include "zolt41/rolodex/sequential_writer.h"
#include "zolt41/rolodex/with_memory.h"

namespace zolt {
namespace {

void SwapWords(char *bytes, uint32_t count) {
  for (uint32_t i = 0; i < count; i++, bytes += 4)
    StoreLittle32(Swapped32(LoadLittle32(bytes)), bytes);
}

}  // namespace

std::string SwappedFront(std::string_view front) {
  std::string bytes(front);
  SwapWords(bytes.data(), 2);
  for (uint32_t i = 0; i < kCategoryCount; i++)
    SwapWords(bytes.data() + kRolodexHead + size_t{i} * kCategoryInfoSize + kCategoryNumberOffset,
              1);
  return bytes;
}

// Position, id, size and categories.
std::string SwappedHead(std::string_view head) {
  std::string bytes(head);
  SwapWords(bytes.data(), kNamesOffset / 4);
  return bytes;
}

namespace {

bool CopyRecords(DatabaseFile const &file, RecordChain const &chain, SequentialWriter *writer) {
  RecordWindow window(file);
  return std::ranges::all_of(chain.entries, [&](CardEntry const &entry) {
    writer->Add({entry.bytes(), kEntrySize});
    return CopyBytes(&window, entry.position() + kEntrySize, static_cast<uint32_t>(entry.end()),
                     writer);
  });
}

// Into a new file, which takes the old one's place: there is no moment at which a part of the
// numbers are swapped.
bool ConvertIntoNewFile(DatabaseFile *file, std::string const &front, RecordChain const &chain) {
  FileBeside beside(file->handle());
  if (!beside.good()) return false;
  SequentialWriter writer(beside.handle(), 0);
  writer.Add(front);
  if (!CopyRecords(*file, chain, &writer)) return false;
  writer.Add(kStoredEndMark);
  if (!writer.Finish() || !beside.Commit()) return false;
  file->ForgetCopy();
  return true;
}

// Through a redo block that has all numbers, and is itself in this byte order.
bool ConvertInPlace(DatabaseFile *file, std::string const &front, RecordChain const &chain) {
  if (!EndFile(file, chain)) return false;
  std::vector<Piece> pieces;
  pieces.reserve(chain.entries.size() + 2);
  for (CardEntry const &entry : chain.entries)
    pieces.push_back({entry.position(), entry.part(0, kNamesOffset)});
  std::string_view const bytes = front;
  pieces.push_back({kRolodexHead, bytes.substr(kRolodexHead)});
  // Last, and within what is written as a whole.
  pieces.push_back({0, bytes.substr(0, kRolodexHead)});
  return file->PutPiecesOnDisk(chain.end, pieces);
}

}  // namespace
}  // namespace zolt

using namespace zolt;

bool Rolodex::SwapFile() {
  DatabaseFile &file = state_->file;
  // There is a block if a conversion in place was not finished.
  std::string front(kCardArea, '\0');
  if (!file.Redo() || file.Read(0, front.data(), kCardArea) != 0) return false;
  int64_t const size = file.Size();
  if (size < 0 || size > kLargestFile) return false;
  if (LoadLittle32(front.data()) != kRolodexMagic) {
    front = SwappedFront(front);
    RecordChain const chain = WalkRecords(file, static_cast<uint32_t>(size), true);
    if (LoadLittle32(front.data()) != kRolodexMagic || !chain.read) return false;
    if (chain.broken && !KeepLost(file, chain.end, static_cast<uint32_t>(size))) return false;
    if (!ConvertIntoNewFile(&file, front, chain) && !ConvertInPlace(&file, front, chain)) {
      return false;
    }
    ClearFailure();
  }
  ReadCategoryTable(std::string_view(front).substr(kRolodexHead), categories_);
  return RebuildIndex();
}

void Rolodex::Swap() {
  ClearFailure();
  if (state_ && readOnly_ == 0) WithMemory(false, [this] { return SwapFile(); });
}
