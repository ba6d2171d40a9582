#ifndef ZOLT41_ROLODEX_RECORD_WINDOW_H_
#define ZOLT41_ROLODEX_RECORD_WINDOW_H_

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "zolt41/rolodex/database_file.h"

namespace zolt {

class SequentialWriter;

// Reads a file from front to back in large pieces.
class RecordWindow {
 public:
  explicit RecordWindow(DatabaseFile const &file) : file_(file) {}

  // The bytes from `position` on, `count` of them or, at the end of the file, fewer; good until the
  // next call. Empty also after a failure.
  std::string_view At(uint32_t position, uint32_t count);
  bool failed() const { return failed_; }
  // Pieces that are read in the place of what the file has there.
  void set_overlay(std::span<Piece const> overlay) { overlay_ = overlay; }

 private:
  void Load(uint32_t position);

  DatabaseFile const &file_;
  std::span<Piece const> overlay_;
  std::vector<char> bytes_;
  uint32_t position_ = 0;
  uint32_t count_ = 0;
  bool failed_ = false;
};

// Copies the bytes from `from` up to `to`. False if they cannot be read.
bool CopyBytes(RecordWindow *window, uint32_t from, uint32_t to, SequentialWriter *writer);

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_RECORD_WINDOW_H_
