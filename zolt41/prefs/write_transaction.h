#ifndef ZOLT41_PREFS_WRITE_TRANSACTION_H_
#define ZOLT41_PREFS_WRITE_TRANSACTION_H_

#include <cstdint>
#include <functional>
#include <memory>

#include "zolt41/platform/system/api.h"
#include "zolt41/prefs/pref_level.h"

namespace zolt {

class ChangeSet;
class HiveTransaction;

enum class Commit : int32_t {
  done,
  unchanged,  // all is so already: nothing was written, and nothing is told
  mismatch,   // an expectation does not hold
  // Nothing was written, and ZOLTLastFailure names what it concerns:
  denied,  // no right to it, no such level, or a section that is not open
  locked,  // another process held the hive's lock for the whole of the wait
  full,
  damaged,
  newer,
  timed_out,  // another process held the channel for ZOLTSetLockWait's time, or for a second
  io,
};

// Changes to any number of sections of one store, written all at once or not at all, and told to
// every process that listens, in microseconds. Between the look at what is expected and the
// writing no other program's change comes.
//
// The calls collect; the last one for a value counts. Texts and data are copied. A null name is
// the empty name. Write looks at the sections, so they must be open then, in the store of that
// level that the process has. An object belongs to one thread at a time; different ones may be
// written on different threads, also in a callback of a subscriber, but not while the thread has a
// HiveTransaction open.
//
// Listeners hear section by section, in the order in which the sections were first named: what was
// removed, then what was modified, then what was created, each of at most 128 records. The texts
// that they get are the old and the new one; empty where a value is no text. A standard section is
// told under its own id and under the one that opening it by name gives.
class ZOLT_API Transaction {
 public:
  // `extra` is carried to the listeners, as is the level.
  explicit Transaction(PrefLevel level /* 1 to 4 */, uint32_t extra = 0);
  ~Transaction();  // what was not written is dropped
  Transaction(Transaction const &) = delete;
  Transaction &operator=(Transaction const &) = delete;

  // A text is stored with its NUL. Null is the empty text. One of more than 255 bytes is stored,
  // and reads as absent.
  void SetStr(uint32_t section, char const *name, char const *value);
  void SetFree(uint32_t section, char const *name, uint32_t type, void const *data, uint32_t size);
  void Remove(uint32_t section, char const *name);
  // Removes all values of the section. The sections below it stay.
  void Clear(uint32_t section);

  // What the store itself, not its chain, must hold before the changes: this text to the byte, or
  // with null no value of any type.
  void Expect(uint32_t section, char const *name, char const *text);
  // A value of this type with these bytes.
  void ExpectFree(uint32_t section, char const *name, uint32_t type, void const *data,
                  uint32_t size);

  // Writes what was collected, and forgets it. Waits until all who listen have taken the news, or
  // for as long as EndPrefsModify does; whether they have changes no result. Where the shared
  // memory cannot be had it writes, and nobody hears.
  [[nodiscard]] Commit Write();

  // The same, but first calls `look`, while all is held that keeps other programs from writing to
  // the store: what it reads stays so until it is written. It may call the functions above and read
  // the store; it must not write by other means, nor wait for anybody. What it throws comes
  // through, with nothing written.
  [[nodiscard]] Commit Write(std::function<void()> const &look);

 private:
  struct Collected;

  ZOLT_HIDDEN Commit CheckSections() const;
  ZOLT_HIDDEN Commit CheckExpected(ChangeSet *changes);
  ZOLT_HIDDEN Commit WriteAndAnnounce(std::function<void()> const &look);
  ZOLT_HIDDEN Commit LookAndApply(std::function<void()> const &look, ChangeSet *changes);
  ZOLT_HIDDEN Commit Apply(ChangeSet *changes, HiveTransaction *hive);

  PrefLevel level_;
  uint32_t extra_;
  std::unique_ptr<Collected> collected_;
};

}  // namespace zolt

#endif  // ZOLT41_PREFS_WRITE_TRANSACTION_H_
