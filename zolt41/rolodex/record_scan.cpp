#include "zolt41/rolodex/record_scan.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "zolt41/foundation/afs_file.h"
#include "zolt41/foundation/endian.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/card_record.h"
#include "zolt41/rolodex/database_file.h"
#include "zolt41/rolodex/record_walk.h"
#include "zolt41/rolodex/record_window.h"
#include "zolt41/rolodex/redo_block.h"
#include "zolt41/rolodex/rolodex_byte_order.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_index.h"
#include "zolt41/rolodex/stored_index.h"
#include "zolt41/rolodex/with_memory.h"

namespace zolt {
namespace {

constexpr uint32_t kSearched = 65536;

int32_t Refuse(Failure failure) {
  SetFailure(failure, "");
  return -1;
}

class Scan {
 public:
  Scan(DatabaseFile const &file, uint32_t size,
       std::function<void(FoundRecord const &)> const &visit)
      : size_(size), visit_(visit), redo_(file), window_(file) {
    if (redo_.found()) window_.set_overlay(redo_.pieces());
  }

  // By the index of a file that was closed: the heads may still be damaged. False if one is.
  bool ByIndex(RolodexIndex const &index) {
    bool good = true;
    index.ForEach([&](uint32_t slot) {
      CardEntry const &entry = index.at(slot);
      std::string_view const head = window_.At(entry.position(), kEntrySize);
      bool const same = head.size() == kEntrySize &&
                        head.substr(0, kCategoriesOffset) == entry.part(0, kCategoriesOffset);
      good = good && same;
      Tell(entry, same ? CardState::sound : CardState::cut);
    });
    return good;
  }

  // By the records alone, from the front, and behind a broken one by search, which takes those of
  // either byte order. The first are `chained` in a database, in its order.
  void ByRecords(bool chained, bool bigEndian) {
    bool order = bigEndian;  // of the last one
    for (uint32_t position = kCardArea; position < size_;) {
      std::string_view const head = window_.At(position, kEntrySize);
      if (head.size() < kEndMarkSize) break;
      if (chained && LoadLittle32(head.data()) == kEndMark) break;
      bool swapped = order;
      if (IsOwn(head.data(), position, &swapped)) {
        // The file may end in it.
        std::string whole(head);
        whole.resize(kEntrySize);
        CardEntry const entry(swapped ? SwappedHead(whole).data() : whole.data());
        bool const stands = head.size() == kEntrySize && StandsAt(entry, position, size_);
        chained = chained && stands && swapped == bigEndian;
        order = swapped;
        Tell(entry, !stands ? CardState::cut : chained ? CardState::sound : CardState::lost);
        if (stands) {
          position = static_cast<uint32_t>(entry.end());
          continue;
        }
      }
      chained = false;
      position = Search(position + 1);
    }
  }

  bool failed() const { return window_.failed(); }

 private:
  // Whether a number is its own position; `*swapped` has the order to be tried first, and then the
  // one in which it is.
  static bool IsOwn(char const *bytes, uint32_t position, bool *swapped) {
    uint32_t const number = LoadLittle32(bytes);
    uint32_t const other = Swapped32(number);
    if ((*swapped ? other : number) == position) return true;
    *swapped = !*swapped;
    return (*swapped ? other : number) == position;
  }

  // The next place where a number is its own position.
  uint32_t Search(uint32_t from) {
    while (from < size_) {
      std::string_view const bytes = window_.At(from, std::min(size_ - from, kSearched));
      if (bytes.size() < kEntrySize) break;
      size_t const places = bytes.size() - kEndMarkSize + 1;
      for (uint32_t i = 0; i < places; i++) {
        bool swapped = false;
        if (IsOwn(bytes.data() + i, from + i, &swapped)) return from + i;
      }
      from += static_cast<uint32_t>(places);
    }
    return size_;
  }

  void Tell(CardEntry const &entry, CardState state) {
    if (entry.free()) {
      if (state != CardState::cut) visit_({state, false, false, entry, {}});
      return;
    }
    bool whole = entry.size() >= kEntrySize && entry.end() <= size_;
    std::string_view body;
    if (whole) {
      uint32_t const size = entry.size() - kEntrySize;
      body = window_.At(entry.position() + kEntrySize, size);
      whole = body.size() == size && IsWholeList(body);
    }
    // A card that was being saved is there twice in a row of records; opening keeps one of them.
    bool const again = state == CardState::sound && sums_.contains(entry.id());
    if (again && !whole) return;
    if (whole) {
      size_t const sum = std::hash<std::string_view>()(body);
      auto const [first, isNew] = sums_.emplace(entry.id(), sum);
      if (!isNew && first->second == sum) return;
    }
    visit_({whole ? state : CardState::cut, whole, again, entry, body});
  }

  uint32_t size_;
  std::function<void(FoundRecord const &)> const &visit_;
  RedoBlock redo_;
  RecordWindow window_;
  std::unordered_map<uint32_t, size_t> sums_;  // of the lists that were whole, by id
};

// Whether the file begins as a database or, as a piece of one does, with nothing at all.
int32_t ReadFront(DatabaseFile const &file, ScannedFile *scanned, bool *bigEndian) {
  std::string front(kCardArea, '\0');
  if (int32_t const code = file.Read(0, front.data(), kCardArea); code != 0) return code;
  RedoBlock const redo(file);
  for (Piece const &piece : redo.pieces())
    if (piece.position < kCardArea)
      piece.bytes.copy(front.data() + piece.position, kCardArea - piece.position);
  *bigEndian = LoadLittle32(front.data()) == Swapped32(kRolodexMagic);
  if (*bigEndian) front = SwappedFront(front);
  uint32_t const magic = LoadLittle32(front.data());
  if (magic != 0 && magic != kRolodexMagic) return Refuse(Failure::damaged);
  if (LoadLittle32(front.data() + 4) != 0) return Refuse(Failure::newer);
  scanned->database = magic == kRolodexMagic;
  scanned->categories = front.substr(kRolodexHead);
  return 0;
}

int32_t ScanFile(char const *path, std::function<void(FoundRecord const &)> const &visit,
                 ScannedFile *scanned) {
  uint32_t handle = 0;
  if (int32_t const code = AFS_LZOpenFile(path, 1, &handle); code != 0) return code;
  DatabaseFile const file(handle, false);
  bool bigEndian = false;
  if (int32_t const code = ReadFront(file, scanned, &bigEndian); code != 0) return code;
  int64_t const size = file.Size();
  if (size < 0) return -1;
  if (size > kLargestFile) return Refuse(Failure::full);
  Scan scan(file, static_cast<uint32_t>(size), visit);
  StoredIndex stored;
  if (scanned->database && !bigEndian && FindStoredIndex(file, &stored) == 0) {
    CardEntries entries;
    if (!ReadStoredIndex(file, stored, &entries)) return -1;
    RolodexIndex const index(std::move(entries), stored.lastId);
    if (index.Fits(stored.end)) {
      scanned->clean = scan.ByIndex(index);
      return scan.failed() ? -1 : 0;
    }
  }
  scan.ByRecords(scanned->database, bigEndian);
  return scan.failed() ? -1 : 0;
}

}  // namespace

int32_t ScanRolodex(char const *path, std::function<void(FoundRecord const &)> const &visit,
                    ScannedFile *scanned) {
  return WithMemory(int32_t{-1}, [&] { return ScanFile(path, visit, scanned); });
}

}  // namespace zolt
