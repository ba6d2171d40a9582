#include <string>

#include "zolt41/foundation/endian.h"
#include "zolt41/platform/system/file_beside.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/category_table.h"
#include "zolt41/rolodex/record_walk.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_state.h"
#include "zolt41/rolodex/sequential_writer.h"

using namespace zolt;

namespace {

void SwapWords(char *bytes, uint32_t count) {
  for (uint32_t i = 0; i < count; i++, bytes += 4)
    StoreLittle32(Swapped32(LoadLittle32(bytes)), bytes);
}

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

// Writes the records up to the first that is broken, as WalkRecords has them; gives where they end,
// or 0 after a failure. `broken` says whether something else than an end mark stands there.
uint32_t CopySwapped(DatabaseFile const &file, uint32_t size, SequentialWriter *writer,
                     bool *broken) {
  RecordWindow window(file);
  uint32_t position = kCardArea;
  while (position < size) {
    std::string_view const read = window.At(position, kEntrySize);
    *broken = LoadLittle32(std::string(read).append(kEndMarkSize, '\0').data()) != kEndMark;
    if (!*broken || read.size() < kEntrySize) break;
    std::string const head = SwappedHead(read);
    CardEntry const entry(head.data());
    *broken = !StandsAt(entry, position, size);
    if (*broken) break;
    writer->Add(head);
    auto const end = static_cast<uint32_t>(entry.end());
    if (!CopyBytes(&window, position + kEntrySize, end, writer)) return 0;
    position = end;
  }
  return window.failed() ? 0 : position;
}

}  // namespace

// Into a new file, which takes the old one's place: there is no moment at which a part of the
// numbers are swapped.
bool Rolodex::SwapFile() {
  DatabaseFile &file = state_->file;
  int64_t const size = file.Size();
  if (size < 0 || size > kLargestFile) return false;
  FileBeside beside(file.handle());
  std::string front(kCardArea, '\0');
  if (!beside.good() || file.Read(0, front.data(), kCardArea) != 0) return false;
  front = SwappedFront(front);
  if (LoadLittle32(front.data()) != kRolodexMagic) return false;
  SequentialWriter writer(beside.handle(), 0);
  writer.Add(front);
  bool broken = false;
  uint32_t const end = CopySwapped(file, static_cast<uint32_t>(size), &writer, &broken);
  writer.Add(kStoredEndMark);
  if (end == 0 || !writer.Finish()) return false;
  if (broken && !KeepLost(file, end, static_cast<uint32_t>(size))) return false;
  if (!beside.Commit()) return false;
  ReadCategoryTable(std::string_view(front).substr(kRolodexHead), categories_);
  return RebuildIndex();
}

void Rolodex::Swap() {
  ClearFailure();
  if (state_ && readOnly_ == 0) SwapFile();
}
