#ifndef ZOLT41_ROLODEX_FILE_COPY_H_
#define ZOLT41_ROLODEX_FILE_COPY_H_

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace zolt {

// The content of a small file, kept in memory so that a read of it is no call of the system. It is
// taken once the file has been read from so often that this pays, and follows every change.
class FileCopy {
 public:
  static constexpr int64_t kLargest = int64_t{4} * 1024 * 1024;

  // Counts a read; true at the one that makes them enough.
  bool Pays() { return reads_ < kReads && ++reads_ == kReads; }
  bool taken() const { return !bytes_.empty(); }
  void Take(std::vector<char> bytes) { bytes_ = std::move(bytes); }
  // It is not taken again before there were as many reads.
  void Forget();

  // False if there is no copy, or it ends before.
  bool Read(uint32_t position, void *bytes, uint32_t count) const;
  void Write(uint32_t position, std::string_view bytes);
  void Cut(uint32_t size);

 private:
  static constexpr uint32_t kReads = 16;

  std::vector<char> bytes_;
  uint32_t reads_ = 0;
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_FILE_COPY_H_
