#ifndef ZOLT41_ROLODEX_REDO_BLOCK_H_
#define ZOLT41_ROLODEX_REDO_BLOCK_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zolt41/rolodex/database_file.h"

namespace zolt {

// What is about to be written to a database, kept behind its end while it is written;
// docs/formats/rolodex.md describes it.

// The block that begins at `start`, with its footer.
std::string RedoBlockOf(uint32_t start, std::span<Piece const> pieces);

// The block that a file ends in, if it is whole and leaves the file a database of this version.
class RedoBlock {
 public:
  explicit RedoBlock(DatabaseFile const &file);
  RedoBlock(RedoBlock const &) = delete;
  RedoBlock &operator=(RedoBlock const &) = delete;

  // False if the file could not be read.
  bool read() const { return read_; }
  bool found() const { return !pieces_.empty(); }
  uint32_t start() const { return start_; }
  std::span<Piece const> pieces() const { return pieces_; }

 private:
  bool Read(DatabaseFile const &file);
  void FindPieces();

  uint32_t start_ = 0;
  std::string block_;
  std::vector<Piece> pieces_;  // of `block_`
  bool read_;
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_REDO_BLOCK_H_
