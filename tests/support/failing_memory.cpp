#include <malloc.h>

#include <cstddef>

// Of failing_memory.h, which would replace the new of every program if it were included here.
constinit thread_local int allocationsLeft = -1;
constinit thread_local bool lackPasses = false;

namespace {

bool TakeOne() {
  bool const taken = allocationsLeft != 0;
  if (allocationsLeft > 0 || (!taken && lackPasses)) allocationsLeft--;
  return taken;
}

}  // namespace

// The linker gives these for the functions that they are named for (--wrap).
extern "C" {

void *__real_malloc(size_t size);
void *__real_calloc(size_t count, size_t size);
void *__real_realloc(void *memory, size_t size);

void *__wrap_malloc(size_t size) {
  return TakeOne() ? __real_malloc(size) : nullptr;
}

void *__wrap_calloc(size_t count, size_t size) {
  return TakeOne() ? __real_calloc(count, size) : nullptr;
}

// What does not grow is never refused.
void *__wrap_realloc(void *memory, size_t size) {
  bool const grows = memory == nullptr || size > malloc_usable_size(memory);
  return !grows || TakeOne() ? __real_realloc(memory, size) : nullptr;
}

}  // extern "C"
