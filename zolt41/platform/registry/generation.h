#ifndef ZOLT41_PLATFORM_REGISTRY_GENERATION_H_
#define ZOLT41_PLATFORM_REGISTRY_GENERATION_H_

#include <cstdint>
#include <span>
#include <string>

#include "zolt41/platform/registry/stamp.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/platform/system/robust_mutex.h"
#include "zolt41/platform/system/shared_file.h"

namespace zolt {

// The words that tell every process which of its copies of a hive's values are still good, and the
// mutex under which the hive is opened, written, checkpointed and closed. They lie in the file
// user.sync beside the hive; docs/registry.md tells the protocol.
//
// A word is even while what it guards is at rest, and odd while somebody changes it. Before a
// writer makes words odd it notes which; so after a writer that died, whoever gets the mutex next
// can make them even again. A reader never waits for a word.
class Generation {
 public:
  // The file that the words speak of, and its log.
  struct Identity {
    uint64_t device;
    uint64_t inode;
    uint64_t log;  // the inode of the log, 0 if there is none

    bool operator==(Identity const &) const = default;
  };

  // See SharedFile::Attach for the failures.
  Failure Attach(std::string const &path);
  void Detach() { file_.Detach(); }
  void Retire() { file_.Retire(); }
  void ReattachInChild() { file_.ReattachInChild(); }
  bool attached() const { return file_.attached(); }
  bool ForeignNamespace() const { return file_.ForeignNamespace(); }
  bool InPlace() const { return file_.InPlace(); }
  bool Linked() const { return file_.Linked(); }
  bool TakeAlone() { return file_.TakeAlone(); }
  void Share() { file_.Share(); }

  // Takes the mutex, and mends what an owner that died left behind. False after the wait.
  [[nodiscard]] bool Lock(uint32_t milliseconds);
  void Unlock();

  // Somebody is in the middle of a change, or died there.
  bool ChangeNoted() const;

  StampSource Words() const;

  // Under the mutex: the words of `indexes` (or, if there are more than can be noted or `all` is
  // set, the epoch) are noted and made odd, and afterwards even and unnoted. To be called in
  // pairs around a commit, whether or not it succeeds.
  void BeginChange(std::span<uint16_t const> indexes, bool all);
  void EndChange();

  // Under the mutex: every copy of every process is out of date.
  void FlushAll();

  // Under the mutex: what hive the words speak of. All zero at first.
  Identity identity() const;
  void SetIdentity(Identity const &identity);

  // The state of the log after our last commit; another state with no change noted means that a
  // foreign program wrote the hive. Written under the mutex.
  uint64_t LogState() const;
  void SetLogState(uint64_t state);

  // Under the mutex: counts a commit; true if it is time to checkpoint the log.
  bool CountCommit();
  // Under the mutex: tells how a checkpoint went. One that a reader held back is tried again after
  // twice as many commits.
  void Checkpointed(bool whole);

 private:
  struct Block;
  Block *block() const;
  void Mend();

  SharedFile file_;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_GENERATION_H_
