#include "zolt41/rolodex/record_walk.h"

#include <algorithm>

#include "zolt41/foundation/endian.h"
#include "zolt41/rolodex/rolodex_byte_order.h"

namespace zolt {
namespace {

constexpr size_t kFirstRoom = 256;

// What is left of an end mark that was cut is nothing lost.
bool IsCutMark(std::string_view bytes) {
  return bytes.size() < kEndMarkSize &&
         std::ranges::all_of(bytes, [](char byte) { return byte == '\xFF'; });
}

// Room for as many more entries as the rest of the file has if its records are like those so far.
// Moving them again and again would take much of the time of a walk.
void MakeRoom(RecordChain *chain, uint32_t size) {
  CardEntries &entries = chain->entries;
  if (entries.size() < entries.capacity()) return;
  size_t room = kFirstRoom;
  if (size_t const read = chain->end - kCardArea; read > 0) {
    size_t const expected = entries.size() * (size - kCardArea) / read;
    room = std::max(expected + expected / 64, entries.size() * 2);
  }
  entries.reserve(room);
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
    MakeRoom(&chain, size);
    chain.entries.push_back(entry);
    chain.lastId = std::max(chain.lastId, entry.id());
    chain.end += entry.size();
  }
  return chain;
}

bool EndFile(DatabaseFile *file, RecordChain const &chain) {
  if (chain.marked && file->Cut(chain.end + kEndMarkSize)) return true;
  return file->Cut(chain.end) && file->Write(chain.end, kStoredEndMark);
}

}  // namespace zolt
