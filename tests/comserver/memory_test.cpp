// Components when memory runs out.
#include <cstdlib>
#include <new>
#include <vector>

#include "tests/comserver/com_fixture.h"

namespace {

// How many more allocations of this thread there is memory for; below 0 there is no end.
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
namespace {

using MemoryTest = ServerTest;

// What `work` gives with memory for `count` allocations.
template <typename Work>
HRESULT With(int count, Work const &work) {
  allocationsLeft = count;
  HRESULT const result = work();
  allocationsLeft = -1;
  return result;
}

TEST_F(MemoryTest, AdviseConnectsNothingWithoutIt) {
  for (size_t const before : {size_t{1}, size_t{4}, size_t{8}}) {
    auto const section = Open("Full");
    auto const point = PointOf(section.get());
    for (size_t i = 0; i < before; i++) Advise(section.get(), new Sink);
    ComPtr<IUnknown> const more(new Sink);
    DWORD_PTR cookie = 9;
    EXPECT_EQ(With(0, [&] { return point->Advise(more.get(), &cookie); }), E_OUTOFMEMORY);
    EXPECT_EQ(cookie, 0U);
    EXPECT_EQ(more->AddRef(), 2U) << "it is not held";
    more->Release();
    ComPtr<IEnumConnections> walk;
    EXPECT_EQ(With(0, [&] { return point->EnumConnections(walk.Place()); }), E_OUTOFMEMORY);
    EXPECT_EQ(point->EnumConnections(walk.Place()), S_OK);
    std::vector<CONNECTDATA> connected(before + 1);
    ULONG fetched = 0;
    EXPECT_EQ(walk->Next(static_cast<ULONG>(before) + 1, connected.data(), &fetched), S_FALSE);
    EXPECT_EQ(fetched, before);
    for (ULONG i = 0; i < fetched; i++) connected[i].pUnk->Release();
  }
}

TEST_F(MemoryTest, ASectionIsOpenedWholeOrNotAtAll) {
  int failures = 0;
  for (HRESULT result = E_FAIL; result != S_OK; failures++) {
    ComPtr<IUnknown> section;
    result = With(failures, [&] {
      return OpenSection(0, "Spare", kUserStore, IID_IUnknown, section.VoidPlace());
    });
    if (result == S_OK) break;
    EXPECT_TRUE(result == E_OUTOFMEMORY || result == E_FAIL) << failures << " " << result;
    EXPECT_EQ(section.get(), nullptr);
    EXPECT_EQ(GetUserPrefs()->GetSectionFromID(GetUserPrefs()->GetIDFromString("Spare", 0)),
              nullptr)
        << "a record is left";
  }
  EXPECT_GT(failures, 5);
}

}  // namespace
}  // namespace zolt::testing
