#include "zolt41/platform/registry/hives.h"

#include <pthread.h>

#include <new>

#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/system/timed_mutex.h"

namespace zolt {
namespace {

std::atomic<Hives *> made{nullptr};

void PrepareFork() {
  Hives *hives = made.load(std::memory_order_acquire);
  if (hives == nullptr) return;
  std::lock(hives->user.WriteLock(), hives->machine.WriteLock());
  hives->user.PrepareFork();
  hives->machine.PrepareFork();
  hives->cache.FillLock().lock();
  hives->handles.Lock().lock();
}

void InParent() {
  Hives *hives = made.load(std::memory_order_acquire);
  if (hives == nullptr) return;
  hives->handles.Lock().unlock();
  hives->cache.FillLock().unlock();
  hives->machine.AfterFork(false);
  hives->user.AfterFork(false);
}

void InChild() {
  Hives *hives = made.load(std::memory_order_acquire);
  if (hives == nullptr) return;
  RenewInChild(&hives->handles.Lock());
  RenewInChild(&hives->cache.FillLock());
  hives->machine.AfterFork(true);
  hives->user.AfterFork(true);
}

Hives *Make() {
  auto *hives = new Hives();
  made.store(hives, std::memory_order_release);
  pthread_atfork(PrepareFork, InParent, InChild);
  return hives;
}

}  // namespace

Hives &TheHives() {
  static Hives *const hives = Make();
  return *hives;
}

void LeaveHives() {
  Hives *hives = made.load(std::memory_order_acquire);
  if (hives == nullptr) return;
  hives->user.Leave();
  hives->machine.Leave();
}

}  // namespace zolt
