#include "zolt41/comserver/server_refs.h"

#include <atomic>

#include "zolt41/library/library.h"
#include "zolt41/platform/com/fork_order.h"

namespace zolt {
namespace {

constexpr char kTree[] = "SOFTWARE:Veltrane:Tessaly:5.0";

constinit std::atomic<int32_t> references = 0;

// Either the whole, or nothing of it.
void Start() {
  InitZOLT();
  try {
    InitPrefs(kTree);
  } catch (...) {
    DisposeZOLT();
    throw;
  }
}

std::recursive_mutex *MakeServerLock() {
  CallBeforeHivesAroundForks([] { ServerLock().lock(); }, [] { ServerLock().unlock(); },
                             [] { RenewInChild(&ServerLock()); });
  return new std::recursive_mutex;
}

}  // namespace

std::recursive_mutex &ServerLock() {
  // Never destroyed: components may still be released while the process ends.
  static auto *const lock = MakeServerLock();
  return *lock;
}

int32_t TakeServerReference() {
  std::lock_guard const guard(ServerLock());
  if (references == 0) Start();
  return ++references;
}

int32_t ReleaseServerReference() {
  std::lock_guard const guard(ServerLock());
  int32_t const count = --references;
  if (count == 0) DisposeZOLT();
  return count;
}

int32_t ServerReferences() {
  return references;
}

}  // namespace zolt
