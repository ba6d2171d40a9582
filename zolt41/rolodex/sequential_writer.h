#ifndef ZOLT41_ROLODEX_SEQUENTIAL_WRITER_H_
#define ZOLT41_ROLODEX_SEQUENTIAL_WRITER_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace zolt {

// Writes a file from some position on, in large pieces. After a failure it does nothing more.
class SequentialWriter {
 public:
  // The handle stays the caller's.
  SequentialWriter(uint32_t handle, uint32_t position) : handle_(handle), position_(position) {}

  void Add(std::string_view bytes);
  // All is in the file; false if a write failed.
  bool Finish();
  // Where the next byte goes.
  uint32_t position() const { return position_ + static_cast<uint32_t>(waiting_.size()); }

 private:
  void WriteOut(std::string_view bytes);

  uint32_t handle_;
  uint32_t position_;  // of what waits
  std::string waiting_;
  bool good_ = true;
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_SEQUENTIAL_WRITER_H_
