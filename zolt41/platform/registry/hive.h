#ifndef ZOLT41_PLATFORM_REGISTRY_HIVE_H_
#define ZOLT41_PLATFORM_REGISTRY_HIVE_H_

#include <atomic>
#include <bitset>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "zolt41/platform/registry/connection.h"
#include "zolt41/platform/registry/directory_watch.h"
#include "zolt41/platform/registry/generation.h"
#include "zolt41/platform/registry/hive_file.h"
#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/registry/key_index.h"
#include "zolt41/platform/registry/name_lists.h"
#include "zolt41/platform/registry/private_copy.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/registry/value_cache.h"
#include "zolt41/platform/system/home.h"
#include "zolt41/platform/system/timed_mutex.h"

namespace zolt {

// A key by its number, which means something in one file alone; see Hive::Incarnation. The number 0
// is the root of the tree, in every file.
struct HiveKey {
  int64_t id;
  uint64_t incarnation;

  bool operator==(HiveKey const &) const = default;
};

// Names that a walk holds.
struct HeldNames {
  std::shared_ptr<NameStretch const> names;
  StampSource const *source = nullptr;  // null where nothing vouches for them
  uint32_t word = 0;                    // the one that does
  Stamp stamp{};
  HiveKey key{};
};

// One of the two trees: its file, the connections to it and what this process keeps of it. Opened
// at the first use. All functions give a number of registry.h and leave the reason of a failure
// for ZOLTLastFailure, or kStaleKey if the key belongs to a file that has been replaced. Names are
// bytes of the local code page. They may be called from any thread.
//
// Order of locks: the process's write lock, then its read lock, then the mutex shared by processes.
// Who holds the mutex for writing has given the read lock back and does not take it again.
class Hive {
 public:
  enum class Kind { user, machine };

  // The key has to be looked for again by its path.
  static constexpr int32_t kStaleKey = -1;

  Hive(Kind kind, ValueCache &cache);
  ~Hive();

  int32_t FindKey(HiveKey parent, std::string_view name, HiveKey *key);
  // ERROR_ACCESS_DENIED where the tree cannot be written.
  int32_t CreateKey(HiveKey parent, std::string_view name, HiveKey *key, bool *made);
  int32_t DeleteKey(HiveKey parent, std::string_view name);

  // `*type` says what is wanted, see ValueCache::Find, and becomes the value's type. `*size` says
  // what `data` holds and becomes the value's size; `data` may be null. It is written on success
  // only.
  int32_t ReadValue(HiveKey key, std::string_view name, uint32_t *type, void *data, uint32_t *size);
  int32_t WriteValue(HiveKey key, std::string_view name, uint32_t type, void const *data,
                     uint32_t size);
  int32_t DeleteValue(HiveKey key, std::string_view name);

  // The stretch of names that tells what stands at the position, or the last one.
  int32_t NamesAt(HiveKey key, NameLists::Kind kind, uint32_t index, HeldNames *held);
  // Whether names of NamesAt are still those of their key. Takes no lock.
  bool StillGood(HeldNames const &held) const {
    // The stamp vouched for them, so it does as long as it stands.
    return held.source != nullptr && held.source == source_.load(std::memory_order_acquire) &&
           held.source->Read(held.word) == held.stamp && !Stale(held.key) && !OwnTransaction();
  }
  // How many there are, and the length of the longest.
  int32_t CountNames(HiveKey key, NameLists::Kind kind, uint32_t *count, uint32_t *longest);

  // A transaction of the calling thread. The serial tells it from a later one: it may have been
  // lost in a fork.
  int32_t Begin(uint64_t *serial);
  int32_t Commit(uint64_t serial);
  void Rollback(uint64_t serial);

  // Whether the tree can be written, as far as can be told without writing. It was opened before.
  int32_t CheckWritable();

  // Counts the files that this process has met in the hive's place. Takes no lock.
  uint64_t Incarnation() const { return incarnation_.load(std::memory_order_acquire); }

  // Changes whenever the words that vouch for the tree may have changed; for handles on keys that
  // do not exist yet.
  Stamp KeysStamp() const;

  // Leaves a failure of this tree for ZOLTLastFailure.
  void TellFailure(Failure failure);

  // Leaves the reason why the tree could not be opened when that was last tried.
  void ReportFailure();

  HiveStatus Inspect();

  // Closes the files; the next use opens them again, where the environment says then.
  void Leave();

  // The environment names another home than the one that is open.
  bool HomeChanged();

  // The calling thread is between Begin and Commit.
  bool OwnTransaction() const {
    uint64_t const owner = transactionOwner_.load(std::memory_order_relaxed);
    return owner != 0 && IsCallingThread(owner);
  }
  static bool IsCallingThread(uint64_t owner);

  // Around fork. First the write locks of all hives are taken together, since a thread may hold one
  // and want another; then each hive is locked whole and closed; afterwards it is unlocked, or
  // made anew in the child.
  RecursiveMutex &WriteLock() { return writeLock_; }
  void PrepareFork();
  void AfterFork(bool child);

 private:
  enum class State {
    closed,
    shared,   // the user's tree, with words and mutex
    journal,  // the machine's tree
    copy,     // a copy of a tree that we may not lock or write, for reading
    missing,  // no file, and none that we may make
  };

  class Reading;
  class Writing;

  // Opening; the write and the read lock are held.
  Failure Open(bool create);
  Failure OpenUser(bool create);
  Failure OpenMachine(bool create);
  Failure OpenUnderMutex(bool create);
  Failure OpenCopy(Failure writeFailure);
  Failure TakeForMissing();
  Failure MakeFile(std::string const &directory, bool isPublic, bool create, HiveAccess *access);
  Failure AttachWords();
  bool MapMachineWords();
  void Watch(StampSource const &source);
  void SetPath(std::string path);
  void Retire();
  void CountFile();
  void CloseConnections();
  void ForgetCopies();
  void CloseFiles();
  bool NeedsOpening(DirectoryWatch &watch) const;
  bool Moved() const;

  // Reading; the read lock is held, or this thread's transaction is open.
  bool Stale(HiveKey key) const { return key.id != 0 && key.incarnation != Incarnation(); }
  Connection &Readable() { return OwnTransaction() ? writer_ : reader_; }
  bool Vouched(uint32_t word, Stamp *stamp) const;
  int32_t ReadFile(HiveKey key, std::string_view name, uint32_t *type, void *data, uint32_t *size);
  bool ListedNames(HiveKey key, NameLists::Kind kind, uint32_t index, HeldNames *held);
  KeyIndex::Result FindListedKey(int64_t parent, std::string_view name, int64_t *key);
  int32_t LookUpKey(int64_t parent, std::string_view name, int64_t *key);
  void NoticeForeignEdit();

  // Writing; the write lock, and the mutex where there is one, are held.
  template <typename Run>
  int32_t Change(std::initializer_list<uint16_t> words, bool all, Run run);
  template <typename Body>
  int32_t AsTransaction(Body body);
  void KeepWritten(HiveKey key, std::string_view name, uint32_t type, void const *data,
                   uint32_t size);
  void FillWritten();
  Failure OpenWriter();
  void AfterCommit();
  bool IsOpen(uint64_t serial) const;
  void Abandon();
  void EndTransaction();

  // How long to wait for a lock; and what comes of a wait that ended in vain or was over in time.
  uint32_t Patience() const;
  void LosePatience();
  Failure TimedOut();
  void NotTimedOut();
  int32_t Give(Failure failure);

  Kind const kind_;
  uint32_t const index_;
  ValueCache &cache_;

  RecursiveMutex writeLock_;
  std::mutex readLock_;

  // Read without a lock; what they point to is never given back.
  std::atomic<StampSource const *> source_{nullptr};
  std::vector<std::unique_ptr<StampSource>> sources_;
  std::vector<std::unique_ptr<Generation>> oldWords_;
  std::atomic<bool> writable_{false};
  std::atomic<uint64_t> incarnation_{0};

  // Changed with both locks held, so either of them is enough to look.
  State state_ = State::closed;
  std::atomic<uint64_t> openings_{0};
  Failure writeFailure_ = Failure::none;
  Homes homes_{};
  std::string path_;
  Generation::Identity identity_{};  // of the file that copies in this process are good for
  Generation::Identity lastFile_{};  // of the file that was met last
  CopyState copied_{};
  int64_t copyUntil_ = 0;
  CopyState atFork_{};
  std::unique_ptr<Generation> words_;
  Connection reader_;

  // Under the read lock.
  DirectoryWatch readWatch_;
  KeyIndex keys_;
  NameLists lists_;

  // Under the write lock.
  DirectoryWatch writeWatch_;
  Connection writer_;
  std::unique_ptr<Writing> transaction_;
  std::atomic<uint64_t> transactionOwner_{0};
  uint64_t transactionSerial_ = 0;
  Failure transactionFailure_ = Failure::none;
  std::bitset<kValueWords + 1> dirty_;
  std::vector<uint16_t> dirtyList_;
  bool dirtyAll_ = false;
  uint64_t changeSerial_ = 0;
  NameLists ownLists_;
  struct Written {
    int64_t key;
    std::string name;
    uint32_t type;
    std::string data;
    uint32_t size;  // or ValueCache::kAbsent
  };
  std::vector<Written> written_;

  // After a wait in vain, and until as long again has passed, nobody waits that long anew.
  std::atomic<int64_t> impatientUntil_{0};

  std::mutex failureLock_;
  Failure openFailure_ = Failure::none;
  std::string failedPath_;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_HIVE_H_
