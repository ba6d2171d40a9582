#include "zolt41/platform/kernel/thread.h"

#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace zolt {
namespace {

constexpr size_t kStackSize = 256U << 10;

struct Beginning {
  void *(*run)(void *);
  void *argument;
};

void *Begin(void *beginning) {
  Beginning const copy = *static_cast<Beginning *>(beginning);
  delete static_cast<Beginning *>(beginning);
  // Most users may not ask for more than they have.
  setpriority(PRIO_PROCESS, ThisThread(), -20);
  return copy.run(copy.argument);
}

}  // namespace

bool Thread::Start(void *(*run)(void *), void *argument) {
  auto *const beginning = new Beginning{run, argument};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStackSize);
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  // A program with much memory of its own for each thread needs a larger stack.
  bool const started = pthread_create(&native_, &attributes, Begin, beginning) == 0 ||
                       pthread_create(&native_, nullptr, Begin, beginning) == 0;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  pthread_attr_destroy(&attributes);
  if (!started) delete beginning;
  return started;
}

void Thread::Join() const {
  pthread_join(native_, nullptr);
}

uint32_t ThisProcess() {
  return static_cast<uint32_t>(getpid());
}

uint32_t ThisThread() {
  return static_cast<uint32_t>(gettid());
}

bool ThreadLives(uint32_t thread) {
  return syscall(SYS_tkill, thread, 0) == 0 || errno != ESRCH;
}

NotCancelled::NotCancelled() {
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_);
}

NotCancelled::~NotCancelled() {
  pthread_setcancelstate(before_, nullptr);
}

void CallAroundForks(void (*before)(), void (*inParent)(), void (*inChild)()) {
  pthread_atfork(before, inParent, inChild);
}

}  // namespace zolt
