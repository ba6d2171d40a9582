#ifndef ZOLT41_ROLODEX_DATABASE_FILE_H_
#define ZOLT41_ROLODEX_DATABASE_FILE_H_

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zolt41/rolodex/file_copy.h"

namespace zolt {

// Bytes for a position.
struct Piece {
  uint32_t position;
  std::string_view bytes;
};

// The file of an open database, with the steps by which its card area is changed: each of them is
// there whole or not at all, whatever ends the process. `end` is where the end mark stands; index
// and trailer are gone by then. After a step that left it open which of the two it is, `broken`
// says so: nothing may be changed any more until the file is opened anew, which settles it.
//
// In the durable mode a step is also on the disk when it is done, and no power cut undoes or tears
// it. ZOLTLastFailure has the reasons of failures.
class DatabaseFile {
 public:
  // The handle becomes the object's.
  DatabaseFile(uint32_t handle, bool durable) : handle_(handle), durable_(durable) {}
  ~DatabaseFile();
  DatabaseFile(DatabaseFile const &) = delete;
  DatabaseFile &operator=(DatabaseFile const &) = delete;

  uint32_t handle() const { return handle_; }
  bool durable() const { return durable_; }
  bool broken() const { return broken_; }
  // A change of several steps was not finished. Gives false.
  bool Break();

  // 0, -8995 if the file ends before, or -1.
  int32_t Read(uint32_t position, void *bytes, uint32_t count) const;
  // The same for one of many reads, for which a small file is kept in memory.
  int32_t ReadBody(uint32_t position, void *bytes, uint32_t count);
  // The file was changed in another way than by this object.
  void ForgetCopy() { copy_.Forget(); }
  // -1 on failure.
  int64_t Size() const;
  // These leave the file as far as they came. A write that changed nothing breaks nothing.
  bool Write(uint32_t position, std::string_view bytes);
  bool Cut(uint32_t size);
  bool Sync();

  // Adds records behind the last one: `records` ends in the new end mark.
  bool Append(uint32_t end, std::string_view records);
  // Makes a card of a free record, by all of its bytes and the head of the rest behind them.
  bool FillFree(uint32_t end, uint32_t position, std::string_view record);
  // Changes bytes of a head, or others that make what was written before them valid.
  bool Put(uint32_t end, uint32_t position, std::string_view bytes);
  // From now on Put does not wait for the disk, until SyncDelayed waits for all of them.
  void Delay() { delayed_ = true; }
  bool SyncDelayed();
  // Changes any bytes, in several places.
  bool PutPieces(uint32_t end, std::span<Piece const> pieces);
  // The same, as in the durable mode.
  bool PutPiecesOnDisk(uint32_t end, std::span<Piece const> pieces);

  // Does again what a step that was ended in the middle had begun. False on failure.
  bool Redo();

 private:
  void TakeCopy();
  enum class Written { all, nothing, some };
  Written TryWrite(uint32_t position, std::string_view bytes);
  bool Barrier() { return !durable_ || Sync(); }
  bool Restore(uint32_t end);
  bool Apply(std::span<Piece const> pieces);

  uint32_t handle_;
  bool durable_;
  bool delayed_ = false;
  bool broken_ = false;
  FileCopy copy_;
};

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_DATABASE_FILE_H_
