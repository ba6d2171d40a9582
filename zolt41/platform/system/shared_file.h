#ifndef ZOLT41_PLATFORM_SYSTEM_SHARED_FILE_H_
#define ZOLT41_PLATFORM_SYSTEM_SHARED_FILE_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "zolt41/platform/system/last_failure.h"

namespace zolt {

// What every shared file begins with. The magic is written last, so a file that has it is whole.
struct SharedHeader {
  std::atomic<uint64_t> magic;
  uint32_t layout;
  uint32_t size;
  uint8_t bootId[16];
  uint64_t processNamespace;
};
static_assert(sizeof(SharedHeader) == 40);

// A small file that all processes of one user map for as long as they run. It means nothing across
// a restart of the machine: whoever finds nobody else attached makes it anew. Attached processes
// hold a shared lock on the open file, and the one that makes it anew an exclusive one, which it
// turns into a shared one in one step, so nobody comes between.
class SharedFile {
 public:
  struct Format {
    uint64_t magic;
    uint32_t layout;
    uint32_t size;
    uint32_t front;  // how much of it has its place from the start; the rest is for Allocate
  };

  // Who may have made the file: this user alone, or whoever owns the directory that it lies in, for
  // a privileged process that works on another user's home.
  enum class Owner { self, of_directory };

  SharedFile() = default;
  ~SharedFile() { Detach(); }
  SharedFile(SharedFile const &) = delete;
  SharedFile &operator=(SharedFile const &) = delete;

  // Opens or makes the file and maps it. `reset` gets the block when it is made anew: all of it
  // holds what the last run left if `kept` is true, which it never is for a file that has more than
  // its front, else zero bytes; the header is filled in
  // around the call. Fails with denied (no right to it, another user's file, open to others, a
  // link), newer (in use by another layout), locked (the reset takes longer than the wait),
  // full or io. Not safe against a second thread.
  Failure Attach(std::string const &path, Owner owner, Format const &format,
                 std::function<void(void *block, bool kept)> const &reset);

  // Gives bytes behind the front their place: to touch them before is to die if there is no memory.
  // False if there is none now.
  bool Allocate(uint32_t offset, uint32_t size) const;

  // Gives up lock and mapping.
  void Detach();

  // Gives up the lock only: threads that may still look at the block can go on doing so until
  // this is destroyed.
  void Retire();

  // The same, and forgets the block: it stays mapped for as long as the process lives.
  void Abandon();

  bool attached() const { return block_ != nullptr; }
  void *block() const { return block_; }

  // In the child of a fork: takes a lock of its own in the place of the one that it shares with its
  // parent, who could otherwise give it up for both. False if the file is no longer there, which
  // the parent may have removed at its end; the block then has nothing to do with other processes.
  bool ReattachInChild();

  // The file was made by a process whose process ids mean something else than ours. Mutexes in
  // the block must then not be used.
  bool ForeignNamespace() const;

  // The file is still the one at its path.
  bool InPlace() const;

  // Nobody has removed the file or put another in its place. Cheaper than InPlace.
  bool Linked() const;

  // Takes the file for this process alone if no other process is attached; no other can then
  // attach until Share.
  bool TakeAlone();
  void Share();

  // Removes the file from its place. It must have been taken alone: whoever waits to attach then
  // finds it gone and makes a new one.
  void Unlink() const;

 private:
  Failure Fail(Failure failure) const;
  Failure OpenFile();
  Failure CheckOwner() const;
  Failure AttachShared(Format const &format, bool *again);
  Failure Reset(Format const &format, std::function<void(void *, bool)> const &reset);
  SharedHeader *Map(uint32_t size, Failure *failure);

  std::string path_;
  Owner owner_ = Owner::self;
  int descriptor_ = -1;
  void *block_ = nullptr;
  uint32_t size_ = 0;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_SHARED_FILE_H_
