#include "zolt41/rolodex/stored_index.h"

#include <string>

#include "zolt41/foundation/endian.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/sequential_writer.h"

namespace zolt {
namespace {

constexpr uint32_t kEmptyFile = kCardArea + kEndMarkSize + kIndexHead + kTrailerSize;
constexpr int32_t kRefused = -1;

std::string TrailerOf(uint32_t offset, uint32_t size) {
  std::string trailer(kTrailerSize, '\0');
  StoreLittle32(offset, trailer.data());
  StoreLittle32(size, trailer.data() + 4);
  StoreLittle32(kRolodexMagic, trailer.data() + kTrailerMagicOffset);
  return trailer;
}

}  // namespace

int32_t FindStoredIndex(DatabaseFile const &file, StoredIndex *stored) {
  int64_t const size = file.Size();
  if (size < 0) return kRefused;
  if (size < kEmptyFile || size > kLargestFile) return kNotClosed;
  auto const trailerAt = static_cast<uint32_t>(size) - kTrailerSize;
  char trailer[kTrailerSize];
  if (int32_t const code = file.Read(trailerAt, trailer, sizeof trailer); code != 0) return code;
  if (LoadLittle32(trailer + kTrailerMagicOffset) != kRolodexMagic) return kNotClosed;
  uint32_t const offset = LoadLittle32(trailer);
  uint32_t const indexSize = LoadLittle32(trailer + 4);
  bool const fits = offset >= kCardArea + kEndMarkSize && indexSize >= kIndexHead &&
                    uint64_t{offset} + indexSize == trailerAt;
  if (!fits) return kNotClosed;
  char start[kEndMarkSize + kIndexHead];
  uint32_t const end = offset - kEndMarkSize;
  if (int32_t const code = file.Read(end, start, sizeof start); code != 0) return code;
  uint32_t const count = LoadLittle32(start + kEndMarkSize);
  if (LoadLittle32(start) != kEndMark || IndexSize(count) != indexSize) return kNotClosed;
  *stored = {end, count, LoadLittle32(start + kEndMarkSize + 4)};
  return 0;
}

bool ReadStoredIndex(DatabaseFile const &file, StoredIndex const &stored, CardEntries *entries) {
  entries->resize(stored.count);
  uint32_t const from = stored.end + kEndMarkSize + kIndexHead;
  auto const size = static_cast<uint32_t>(stored.count * sizeof(CardEntry));
  return file.Read(from, entries->data(), size) == 0;
}

bool WriteStoredIndex(DatabaseFile *file, uint32_t end, RolodexIndex const &index) {
  if (end + kEndMarkSize + IndexSize(index.count()) + kTrailerSize > kLargestFile) {
    SetFailure(Failure::full, "");
    return false;
  }
  uint32_t const start = end + kEndMarkSize;
  SequentialWriter writer(file->handle(), start);
  file->ForgetCopy();
  char head[kIndexHead];
  StoreLittle32(index.count(), head);
  StoreLittle32(index.lastId(), head + 4);
  writer.Add({head, sizeof head});
  index.ForEach([&](uint32_t slot) { writer.Add({index.at(slot).bytes(), kEntrySize}); });
  if (!writer.Finish() || (file->durable() && !file->Sync())) return false;
  uint32_t const trailerAt = writer.position();
  return file->Write(trailerAt, TrailerOf(start, trailerAt - start)) &&
         file->Cut(trailerAt + kTrailerSize) && file->Sync();
}

std::string EmptyDatabase() {
  std::string bytes(kEmptyFile - kTrailerSize, '\0');
  StoreLittle32(kRolodexMagic, bytes.data());
  StoreLittle32(kEndMark, bytes.data() + kCardArea);
  return bytes + TrailerOf(kCardArea + kEndMarkSize, kIndexHead);
}

}  // namespace zolt
