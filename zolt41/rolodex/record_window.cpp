#include "zolt41/rolodex/record_window.h"

#include <algorithm>

#include "zolt41/platform/system/file.h"
#include "zolt41/rolodex/sequential_writer.h"

namespace zolt {
namespace {

constexpr uint32_t kWindow = 256 * 1024;
constexpr uint32_t kCopied = 65536;

}  // namespace

void RecordWindow::Load(uint32_t position) {
  position_ = position;
  auto const wanted = static_cast<uint32_t>(bytes_.size());
  // One failure is kept, although what comes later could be read.
  bool const read = ReadFileAt(file_.handle(), position, bytes_.data(), wanted, &count_) != 0;
  if (!read) count_ = 0;
  failed_ = failed_ || !read;
  for (Piece const &piece : overlay_) {
    uint64_t const from = std::max(position, piece.position);
    uint64_t const to = std::min(uint64_t{position} + count_, piece.position + piece.bytes.size());
    if (from < to)
      piece.bytes.copy(bytes_.data() + (from - position), to - from, from - piece.position);
  }
}

std::string_view RecordWindow::At(uint32_t position, uint32_t count) {
  uint64_t const end = uint64_t{position_} + count_;
  if (position < position_ || uint64_t{position} + count > end) {
    if (bytes_.size() < count) bytes_.resize(std::max(count, kWindow));
    Load(position);
  }
  uint32_t const offset = position - position_;
  return {bytes_.data() + offset, std::min(count, count_ - offset)};
}

bool CopyBytes(RecordWindow *window, uint32_t from, uint32_t to, SequentialWriter *writer) {
  while (from < to) {
    std::string_view const bytes = window->At(from, std::min(to - from, kCopied));
    if (bytes.empty()) return false;
    writer->Add(bytes);
    from += static_cast<uint32_t>(bytes.size());
  }
  return true;
}

}  // namespace zolt
