#include "zolt41/notify/announcement_ring.h"

#include <algorithm>
#include <new>

#include "zolt41/foundation/text_field.h"

namespace zolt {
namespace {

// An announcement is four words, then for each change one word with the lengths of its three texts
// and the texts, filled up to whole words. Positions count words and never go back; both they and
// the numbers go round at 2^32.
constexpr uint32_t kHeadWords = 4;
constexpr uint32_t kMask = Ring::kWords - 1;
constexpr uint32_t kLongestChange = 1 + (255 + 1023 + 1023 + 7) / 8;
constexpr uint32_t kLongest = kHeadWords + kTableRecords * kLongestChange;
static_assert((Ring::kWords & kMask) == 0 && kLongest * 3 <= Ring::kWords);

constexpr uint64_t Pair(uint32_t high, uint32_t low) {
  return uint64_t{high} << 32 | low;
}

constexpr uint32_t High(uint64_t word) {
  return static_cast<uint32_t>(word >> 32);
}

constexpr uint32_t Low(uint64_t word) {
  return static_cast<uint32_t>(word);
}

size_t WordsFor(size_t bytes) {
  return (bytes + 7) / 8;
}

void Encode(ChangeText const &change, std::vector<uint64_t> *words) {
  std::string_view const texts[] = {change.name.substr(0, 255), change.newValue.substr(0, 1023),
                                    change.oldValue.substr(0, 1023)};
  size_t const bytes = texts[0].size() + texts[1].size() + texts[2].size();
  size_t const start = words->size();
  words->resize(start + 1 + WordsFor(bytes));
  (*words)[start] =
      uint64_t{texts[0].size()} | uint64_t{texts[1].size()} << 16 | uint64_t{texts[2].size()} << 32;
  char *to = reinterpret_cast<char *>(words->data() + start + 1);
  for (std::string_view const text : texts) {
    text.copy(to, text.size());
    to += text.size();
  }
}

std::vector<uint64_t> Encode(Announcement const &announcement) {
  AnnouncementHead const &head = announcement.head;
  std::span<ChangeText const> changes = announcement.changes;
  changes = changes.first(std::min<size_t>(changes.size(), kTableRecords));
  std::vector<uint64_t> words = {0, Pair(head.alias, head.section), Pair(head.extra, head.level),
                                 Pair(static_cast<uint32_t>(changes.size()), head.type)};
  for (ChangeText const &change : changes) Encode(change, &words);
  return words;
}

template <size_t size>
bool DecodeText(char const **from, char const *end, uint64_t length, char (&field)[size]) {
  if (length >= size || length > static_cast<uint64_t>(end - *from)) return false;
  FillField({*from, length}, field);
  *from += length;
  return true;
}

}  // namespace

uint32_t LastAnnouncement(Ring const &ring) {
  return High(ring.published.load());
}

void Publish(Ring *ring, Announcement const &announcement) {
  std::vector<uint64_t> words = Encode(announcement);
  uint64_t const published = ring->published.load();
  uint32_t const number = High(published) + 1;
  uint32_t const start = Low(published);
  auto const size = static_cast<uint32_t>(words.size());
  words[0] = Pair(number, size);
  // Told before the first word changes. One that died in here may have gone further than we will,
  // though no further than the longest announcement.
  uint32_t const ahead = ring->reserved.load(std::memory_order_relaxed) - start;
  if (ahead < size || ahead > kLongest) ring->reserved.store(start + size);
  for (uint32_t i = 0; i < size; i++) {
    ring->words[(start + i) & kMask].store(words[i], std::memory_order_release);
  }
  ring->published.store(Pair(number, start + size));
}

void RingReader::StartAtEnd(Ring const &ring) {
  uint64_t const published = ring.published.load(std::memory_order_acquire);
  position_ = Low(published);
  number_ = High(published);
}

RingReader::Result RingReader::Read(Ring const &ring) {
  // In one order with what a writer sees of those who listen.
  uint64_t const published = ring.published.load();
  if (Low(published) == position_) return Result::none;
  try {
    if (Copy(ring, Low(published)) && Decode()) return Result::heard;
  } catch (std::bad_alloc const &) {
    // No memory for it: lost, like one that was overwritten.
  }
  uint32_t const before = number_;
  StartAtEnd(ring);
  missed_ = number_ - before;
  return Result::gap;
}

bool RingReader::Copy(Ring const &ring, uint32_t end) {
  uint64_t const first = ring.words[position_ & kMask].load(std::memory_order_acquire);
  uint32_t const size = Low(first);
  if (size < kHeadWords || size > kLongest || size > end - position_) return false;
  words_.resize(size);
  for (uint32_t i = 0; i < size; i++) {
    words_[i] = ring.words[(position_ + i) & kMask].load(std::memory_order_acquire);
  }
  // What was copied is old if its place was given to a later announcement before all was copied.
  if (ring.reserved.load(std::memory_order_acquire) - position_ > Ring::kWords) return false;
  return words_[0] == Pair(number_ + 1, size);
}

bool RingReader::Decode() {
  head_ = {Low(words_[1]), High(words_[1]), Low(words_[2]), High(words_[2]), Low(words_[3])};
  count_ = High(words_[3]);
  if (count_ > kTableRecords) return false;
  if (records_.size() < count_) records_.resize(count_);
  size_t at = kHeadWords;
  for (uint32_t i = 0; i < count_; i++) {
    if (at >= words_.size()) return false;
    uint64_t const lengths = words_[at++];
    auto const *from = reinterpret_cast<char const *>(words_.data() + at);
    auto const *const start = from;
    auto const *const end = reinterpret_cast<char const *>(words_.data() + words_.size());
    NotificationInfo &record = records_[i];
    if (!DecodeText(&from, end, lengths & 0xFFFF, record.name) ||
        !DecodeText(&from, end, lengths >> 16 & 0xFFFF, record.newValue) ||
        !DecodeText(&from, end, lengths >> 32 & 0xFFFF, record.oldValue)) {
      return false;
    }
    at += WordsFor(static_cast<size_t>(from - start));
  }
  position_ += static_cast<uint32_t>(words_.size());
  number_++;
  return true;
}

}  // namespace zolt
