#include "zolt41/rolodex/record_walk.h"

#include <algorithm>

#include "zolt41/foundation/endian.h"
#include "zolt41/rolodex/rolodex_byte_order.h"

namespace zolt {
namespace {

// What is left of an end mark that was cut is nothing lost.
bool IsCutMark(std::string_view bytes) {
  return bytes.size() < kEndMarkSize &&
         std::ranges::all_of(bytes, [](char byte) { return byte == '\xFF'; });
}

}  // namespace

RecordChain WalkRecords(DatabaseFile const &file, uint32_t size, bool swapped) {
  RecordWindow window(file);
  RecordChain chain;
  while (chain.end < size) {
    std::string_view const head = window.At(chain.end, kEntrySize);
    if (window.failed()) {
      chain.read = false;
      break;
    }
    chain.marked = head.size() >= kEndMarkSize && LoadLittle32(head.data()) == kEndMark;
    if (chain.marked || IsCutMark(head)) break;
    chain.broken = head.size() < kEntrySize;
    if (chain.broken) break;
    CardEntry const entry(swapped ? SwappedHead(head).data() : head.data());
    chain.broken = !StandsAt(entry, chain.end, size);
    if (chain.broken) break;
    chain.entries.push_back(entry);
    chain.end += entry.size();
  }
  return chain;
}

bool EndFile(DatabaseFile *file, RecordChain const &chain) {
  if (chain.marked && file->Cut(chain.end + kEndMarkSize)) return true;
  return file->Cut(chain.end) && file->Write(chain.end, kStoredEndMark);
}

}  // namespace zolt
