#ifndef ZOLT41_TESTS_SUPPORT_FAILING_MEMORY_H_
#define ZOLT41_TESTS_SUPPORT_FAILING_MEMORY_H_

#include <cstdlib>
#include <new>

// Counts what this program's own objects, the library's among them, take by malloc, calloc, a
// realloc that grows, and new. The new of a program is replaced by including this, so one file of
// it alone may do that.

// How many more allocations of this thread there is memory for; below 0 there is no end.
extern constinit thread_local int allocationsLeft;
// Only one allocation is refused, and there is memory for those behind it.
extern constinit thread_local bool lackPasses;

namespace {

void *AllocateOrThrow(std::size_t size) {
  void *const memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

// Not inlined: the compiler takes the pair of them for a mismatch.
[[gnu::noinline]] void Free(void *memory) {
  std::free(memory);
}

}  // namespace

// For the other libraries of the program, too, which free what this one took, and the other way.
#pragma GCC visibility push(default)
void *operator new(std::size_t size) {
  return AllocateOrThrow(size);
}
void *operator new[](std::size_t size) {
  return AllocateOrThrow(size);
}
void *operator new(std::size_t size, std::nothrow_t const &) noexcept {
  return std::malloc(size);
}
void *operator new[](std::size_t size, std::nothrow_t const &) noexcept {
  return std::malloc(size);
}
void operator delete(void *memory) noexcept {
  Free(memory);
}
void operator delete[](void *memory) noexcept {
  Free(memory);
}
void operator delete(void *memory, std::size_t) noexcept {
  Free(memory);
}
void operator delete[](void *memory, std::size_t) noexcept {
  Free(memory);
}
#pragma GCC visibility pop

namespace zolt::testing {

enum class Lack { lasts, passes };

// What `work` gives with memory for `count` allocations of this thread, and then none, or none for
// one of them.
template <typename Work>
auto WithMemoryFor(int count, Work const &work, Lack lack = Lack::lasts) {
  struct Enough {
    ~Enough() { allocationsLeft = -1; }
  } const afterwards;
  allocationsLeft = count;
  lackPasses = lack == Lack::passes;
  return work();
}

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_FAILING_MEMORY_H_
