#ifndef ZOLT41_PLATFORM_REGISTRY_HIVE_GUARDS_H_
#define ZOLT41_PLATFORM_REGISTRY_HIVE_GUARDS_H_

#include "zolt41/platform/registry/hive.h"

namespace zolt {

// The right to read a hive's file, for as long as this lives. In the calling thread's own
// transaction it is had already.
class Hive::Reading {
 public:
  explicit Reading(Hive &hive) : hive_(hive) {}
  ~Reading();
  Reading(Reading const &) = delete;
  Reading &operator=(Reading const &) = delete;

  // Opens the hive if need be. With `opening`, one that was missing is looked for again. None with
  // `missing` true: there is no file, so there is nothing to read.
  Failure Enter(bool opening, bool *missing);

 private:
  Hive &hive_;
  std::unique_lock<std::mutex> read_;
  Generation *held_ = nullptr;
};

// The right to write it. In the calling thread's own transaction it is had already.
class Hive::Writing {
 public:
  explicit Writing(Hive &hive) : hive_(hive) {}
  ~Writing();
  Writing(Writing const &) = delete;
  Writing &operator=(Writing const &) = delete;

  Failure Enter();

 private:
  Failure OpenForWriting();

  Hive &hive_;
  std::unique_lock<RecursiveMutex> write_;
  Generation *held_ = nullptr;
};

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_REGISTRY_HIVE_GUARDS_H_
