#ifndef ZOLT41_TESTS_SUPPORT_FAILING_MEMORY_H_
#define ZOLT41_TESTS_SUPPORT_FAILING_MEMORY_H_

#include <cstdlib>
#include <new>

// Replaces the allocation functions of the program, so one file of it alone may include this.

namespace {

// How many more allocations there is memory for; below 0 there is no end.
thread_local int allocationsLeft = -1;

void *Allocate(std::size_t size) noexcept {
  if (allocationsLeft == 0) return nullptr;
  if (allocationsLeft > 0) allocationsLeft--;
  return std::malloc(size);
}

void *AllocateOrThrow(std::size_t size) {
  void *const memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

// Not inlined: the compiler takes the pair of them for a mismatch.
[[gnu::noinline]] void Free(void *memory) {
  std::free(memory);
}

}  // namespace

void *operator new(std::size_t size) {
  return AllocateOrThrow(size);
}
void *operator new[](std::size_t size) {
  return AllocateOrThrow(size);
}
void *operator new(std::size_t size, std::nothrow_t const &) noexcept {
  return Allocate(size);
}
void *operator new[](std::size_t size, std::nothrow_t const &) noexcept {
  return Allocate(size);
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

namespace zolt::testing {

// What `work` gives with memory for `count` allocations of this thread.
template <typename Work>
auto WithMemoryFor(int count, Work const &work) {
  allocationsLeft = count;
  auto const result = work();
  allocationsLeft = -1;
  return result;
}

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_SUPPORT_FAILING_MEMORY_H_
