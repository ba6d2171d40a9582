#ifndef ZOLT41_PLATFORM_SYSTEM_LARGE_PAGES_H_
#define ZOLT41_PLATFORM_SYSTEM_LARGE_PAGES_H_

#include <cstddef>
#include <vector>

namespace zolt {

// Memory that lies on large pages where it takes more than one, so that jumping about in it costs
// less. Throws std::bad_alloc. It is given back with the same size.
void *TakeLargePages(size_t size);
void GiveLargePages(void *memory, size_t size);

// Takes the memory of a container in this way.
template <typename T>
class LargePages {
 public:
  using value_type = T;

  LargePages() = default;
  template <typename U>
  explicit LargePages(LargePages<U> const & /*other*/) {}

  T *allocate(size_t count) { return static_cast<T *>(TakeLargePages(count * sizeof(T))); }
  void deallocate(T *memory, size_t count) { GiveLargePages(memory, count * sizeof(T)); }
  bool operator==(LargePages const &) const = default;
};

template <typename T>
using LargeVector = std::vector<T, LargePages<T>>;

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_LARGE_PAGES_H_
