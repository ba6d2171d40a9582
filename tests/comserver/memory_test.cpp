// Components when memory runs out.

#include <mutex>

#include "tests/comserver/com_fixture.h"
#include "tests/support/failing_memory.h"
#include "zolt41/library/library.h"
#include "zolt41/library/pref_tree.h"
#include "zolt41/notify/subscriber_list.h"
#include "zolt41/platform/system/last_failure.h"

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
    EXPECT_EQ(result, E_FAIL) << failures;
    EXPECT_EQ(section.get(), nullptr);
    EXPECT_EQ(GetUserPrefs()->GetSectionFromID(IdOf("Spare")), nullptr) << "a record is left";
    std::lock_guard const guard(SubscriberList::The().lock());
    EXPECT_TRUE(SubscriberList::The().noneLives()) << failures << ": a subscriber is left";
  }
  EXPECT_GT(failures, 5);
}

// With a start of the library in it, behind an end; a step in between, since that takes a thousand.
TEST_F(MemoryTest, ASectionOpensInAllTreesAndTheLibraryAnewOrNot) {
  server_.reset();
  bool failed = true;
  for (int before = 0; failed; before += before < 40 ? 1 : 17) {
    failed = false;
    for (Lack const lack : {Lack::passes, Lack::lasts}) {
      ComPtr<IUnknown> section;
      auto const open = [&] {
        return OpenSection(0, "Spare", kUserStore, IID_IUnknown, section.VoidPlace());
      };
      HRESULT const result = WithMemoryFor(before, open, lack);
      if (result == S_OK) {
        EXPECT_EQ(GetUserPrefs()->GetSectionFromID(IdOf("Spare"))->access, 0xFFU) << before;
        continue;
      }
      failed = true;
      EXPECT_EQ(result, E_FAIL) << before;
      EXPECT_EQ(section.get(), nullptr);
      EXPECT_EQ(ServerReferences(), 0);
    }
  }
}

TEST_F(MemoryTest, AFailedStartLeavesNoStores) {
  server_.reset();
  bool started = false;
  for (int before = 0; !started; before += 7) {
    InitZOLT();
    try {
      started = WithMemoryFor(before, [] { return InitPrefs(nullptr), true; });
    } catch (std::bad_alloc const &) {
      for (WinPrefs const *store :
           {GetUserPrefs(), GetSystemPrefs(), GetSharedUserPrefs(), GetSharedSystemPrefs()})
        EXPECT_EQ(store, nullptr) << before;
    }
    DisposeZOLT();
  }
}

TEST_F(MemoryTest, ATreeIsSetWithAllItsStoresOrNot) {
  WinPrefs *const user = GetUserPrefs();
  bool set = false;
  for (int before = 1; !set; before++) {
    WithMemoryFor(
        before, [] { return SetPrefTree("Other:Tree"), 0; }, Lack::passes);
    set = GetUserPrefs() != user;
    EXPECT_EQ(ZOLTLastFailure(nullptr, 0) == 0, set) << before;
    for (WinPrefs const *store : {GetSystemPrefs(), GetSharedUserPrefs(), GetSharedSystemPrefs()})
      EXPECT_NE(store, nullptr) << before;
    ResetPrefTree();
    EXPECT_EQ(GetUserPrefs(), user);
  }
}

TEST_F(MemoryTest, ATakenChangeNeedsNone) {
  struct Ear : CPrefNotify {
    void OnKeyCreated() override { records = changedRecords.GetSize(); }
    int32_t records = 0;
  };
  auto *const ear = new Ear;
  ear->AddNotificationKey(0, static_cast<uint32_t>(kGeneral), 0);
  AddNotificationObject(ear);
  Change(kGeneral, "x");
  EXPECT_EQ(WithMemoryFor(0, ZOLTDeliver), 1);
  EXPECT_EQ(ear->records, 1);
  Drop(ear);
}

}  // namespace
}  // namespace zolt::testing
