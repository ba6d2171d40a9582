// Components when memory runs out.

#include <mutex>

#include "tests/comserver/com_fixture.h"
#include "tests/support/failing_memory.h"
#include "zolt41/notify/subscriber_list.h"

namespace zolt::testing {
namespace {

using MemoryTest = ServerTest;

TEST_F(MemoryTest, AdviseConnectsNothingWithoutIt) {
  for (size_t const before : {size_t{1}, size_t{4}, size_t{8}}) {
    auto const section = Open("Full");
    auto const point = PointOf(section.get());
    for (size_t i = 0; i < before; i++) Advise(section.get(), new Sink);
    ComPtr<IUnknown> const more(new Sink);
    DWORD_PTR cookie = 9;
    EXPECT_EQ(WithMemoryFor(0, [&] { return point->Advise(more.get(), &cookie); }), E_OUTOFMEMORY);
    EXPECT_EQ(cookie, 0U);
    EXPECT_EQ(more->AddRef(), 2U) << "it is not held";
    more->Release();
    ComPtr<IEnumConnections> walk;
    EXPECT_EQ(WithMemoryFor(0, [&] { return point->EnumConnections(walk.Place()); }),
              E_OUTOFMEMORY);
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
    result = WithMemoryFor(failures, [&] {
      return OpenSection(0, "Spare", kUserStore, IID_IUnknown, section.VoidPlace());
    });
    if (result == S_OK) break;
    EXPECT_TRUE(result == E_OUTOFMEMORY || result == E_FAIL) << failures << " " << result;
    EXPECT_EQ(section.get(), nullptr);
    EXPECT_EQ(GetUserPrefs()->GetSectionFromID(IdOf("Spare")), nullptr) << "a record is left";
    std::lock_guard const guard(SubscriberList::The().lock());
    EXPECT_TRUE(SubscriberList::The().noneLives()) << failures << ": a subscriber is left";
  }
  EXPECT_GT(failures, 5);
}

}  // namespace
}  // namespace zolt::testing
