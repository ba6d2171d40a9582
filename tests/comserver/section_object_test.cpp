#include "zolt41/comserver/section_object.h"

#include <thread>

#include "tests/comserver/com_fixture.h"
#include "tests/support/child.h"
#include "zolt41/comserver/sink_array.h"
#include "zolt41/notify/transaction.h"
#include "zolt41/prefs/pref_sections.h"

namespace zolt::testing {
namespace {

using SectionTest = ServerTest;

TEST_F(SectionTest, TwoOpensMeetInOneObject) {
  auto first = Open("Meet");
  auto second = Open("MEET", 0, kSystemStore);
  EXPECT_EQ(first.get(), second.get()) << "one id, one object, whatever the kind";
  auto const container = Ask<IConnectionPointContainer>(first.get(), IID_IConnectionPointContainer);
  EXPECT_EQ(Ask<IUnknown>(container.get(), IID_IUnknown).get(), first.get());
  EXPECT_EQ(container->AddRef(), 4U);
  EXPECT_EQ(first->Release(), 3U);
}

TEST_F(SectionTest, ComesAndGoesWithItsKeys) {
  int32_t const id = IdOf("Fresh");
  auto section = Open("Fresh");
  HKEY key = 0;
  EXPECT_EQ(RegOpenKeyA(SectionKey(0, 0), "Fresh", &key), ERROR_SUCCESS);
  RegCloseKey(key);
  EXPECT_NE(GetUserPrefs()->GetSectionFromID(id), nullptr);
  EXPECT_EQ(ServerReferences(), 2);
  section.Reset();
  EXPECT_EQ(GetUserPrefs()->GetSectionFromID(id), nullptr);
  EXPECT_EQ(ServerReferences(), 1);
}

TEST_F(SectionTest, TakesAwayItsOwnRegistrationOnly) {
  int32_t const id = IdOf("Shared");
  auto section = Open("Shared");
  RegisterPrefSection(id, "Shared");
  section.Reset();
  EXPECT_NE(GetUserPrefs()->GetSectionFromID(id), nullptr);
  UnRegisterPrefSection(id, 0);
  EXPECT_EQ(GetUserPrefs()->GetSectionFromID(id), nullptr);
}

TEST_F(SectionTest, RefusesWhatCannotBeOpened) {
  struct {
    std::string name;
    int32_t parent;
    int32_t kind;
    HRESULT result;
  } const cases[] = {{"A", 0, kCardStore, E_INVALIDARG},
                     {"A", 0, 3, E_INVALIDARG},
                     {"A", 0, -1, E_INVALIDARG},
                     {"A", 0x12345678, kUserStore, E_FAIL},
                     {"", 0, kUserStore, E_FAIL},
                     {std::string(255, 'n') + "!", 0, kUserStore, E_FAIL},
                     {std::string(259, 'n'), 0, kUserStore, E_FAIL},
                     {std::string(10000, 'n'), 0, kSystemStore, E_FAIL}};
  for (auto const &test : cases) {
    void *out = &out;
    EXPECT_EQ(OpenSection(test.parent, test.name.c_str(), test.kind, IID_IUnknown, &out),
              test.result);
    EXPECT_EQ(out, nullptr);
  }
  EXPECT_EQ(OpenSection(0, "A", kUserStore, IID_IUnknown, nullptr), E_POINTER);
  void *out = &out;
  EXPECT_EQ(OpenSection(0, "A", kUserStore, IID_IStream, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(GetUserPrefs()->GetSectionFromID(IdOf("A")), nullptr);
  EXPECT_EQ(ServerReferences(), 1) << "nothing is left of those";
}

TEST_F(SectionTest, ARootIsNotRegisteredAndHearsChangesAtTheTop) {
  auto const root = Open(nullptr);
  EXPECT_EQ(GetUserPrefs()->GetSectionFromID(0), nullptr);
  auto *const sink = new Sink;
  Advise(root.get(), sink);
  int32_t const top = 0;
  BeginPrefsModify(top, PrefLevelUser, 0);
  UserPrefs()->SetStr(0, "v", "x");
  EndPrefsModify();
  EXPECT_TRUE(DeliverUntil([&] { return sink->heard == 1; }));
}

TEST_F(SectionTest, AParentThatIsGoneBringsNothingDown) {
  auto above = Open("Above");
  auto const below = Open("Below", IdOf("Above"));
  int32_t const id = IdOf("Below", IdOf("Above"));
  above.Reset();
  void *out = nullptr;
  EXPECT_EQ(OpenSection(IdOf("Above"), "Deeper", kUserStore, IID_IUnknown, &out), E_FAIL);
  Write(id, "still");
  EXPECT_EQ(ReadBytes("v", id).substr(0, 5), "still");
}

TEST_F(SectionTest, SinksAreToldOnceForEachTransactionInOrder) {
  auto const section = Open("Told");
  auto *const first = new Sink;
  auto *const deaf = new Sink;
  auto *const last = new Sink;
  first->name = 'f';
  last->name = 'l';
  deaf->deaf = true;
  for (Sink *sink : {first, deaf, last}) Advise(section.get(), sink);
  Write(IdOf("Told"), "a");
  ASSERT_TRUE(DeliverUntil([&] { return last->heard == 1; }));
  auto const elsewhere = Open("Elsewhere");
  Write(IdOf("Elsewhere"), "nobody hears");
  Write(IdOf("Told"), "b");
  ASSERT_TRUE(DeliverUntil([&] { return last->heard == 2; }));
  EXPECT_EQ(first->heard, 2);
  EXPECT_EQ(Sink::order, "flfl");
}

TEST_F(SectionTest, TellsWhatAnotherProcessWritesToTwoSections) {
  auto const user = Open("One");
  auto const system = Open("Two", 0, kSystemStore);
  auto *const one = new Sink;
  auto *const two = new Sink;
  Advise(user.get(), one);
  Advise(system.get(), two);
  Child writer([](Child::Pipe &) {
    ServerReference const server;
    ComPtr<IUnknown> const first = Open("One");
    ComPtr<IUnknown> const second = Open("Two");
    for (char const *name : {"One", "One", "Two"}) Write(IdOf(name), "w");
    return ::testing::Test::HasFailure() ? 1 : 0;
  });
  EXPECT_TRUE(DeliverUntil([&] { return one->heard == 2 && two->heard == 1; }));
  EXPECT_EQ(writer.Wait(), 0);
}

// What a sink does while it is being told.
class BusySinkTest : public SectionTest {
 protected:
  // Writes once and waits until the last of the sinks has been told.
  void Tell() {
    auto *const last = new Sink;
    ComPtr<IUnknown> const held(last);
    Advise(section_.get(), last);
    Write(IdOf("Busy"), "x");
    EXPECT_TRUE(DeliverUntil([&] { return done_ || last->heard == 1; }));
  }

  ComPtr<IUnknown> section_ = Open("Busy");
  bool done_ = false;
};

TEST_F(BusySinkTest, UnadvisesItself) {
  DWORD_PTR cookie = 0;
  auto *const sink =
      new Sink([&](Sink *) { EXPECT_EQ(PointOf(section_.get())->Unadvise(cookie), S_OK); });
  ComPtr<IUnknown> const held(sink);
  cookie = Advise(section_.get(), sink);
  Tell();
  EXPECT_EQ(sink->heard, 1);
  EXPECT_EQ(sink->AddRef(), 2U);
  EXPECT_EQ(sink->Release(), 1U);
}

TEST_F(BusySinkTest, AdvisesAnother) {
  auto *const second = new Sink;
  ComPtr<IUnknown> const held(second);
  Advise(section_.get(), new Sink([&](Sink *) { Advise(section_.get(), second); }));
  Tell();
  EXPECT_EQ(second->heard, 0) << "it came later";
}

TEST_F(BusySinkTest, ReleasesTheSection) {
  Advise(section_.get(), new Sink([&](Sink *) { section_.Reset(); }));
  Tell();
  EXPECT_EQ(Sink::living, 0);
}

TEST_F(BusySinkTest, ReleasesTheLastReferenceOfAll) {
  Advise(section_.get(), new Sink([&](Sink *) {
           server_.reset();
           section_.Reset();
           EXPECT_EQ(ServerReferences(), 0);
           done_ = true;
         }));
  Tell();
}

TEST_F(BusySinkTest, Writes) {
  int left = 3;
  auto *const sink = new Sink([&](Sink *) {
    if (left-- > 0) Write(IdOf("Busy"), "again");
  });
  Advise(section_.get(), sink);
  Tell();
  EXPECT_TRUE(DeliverUntil([&] { return sink->heard == 4; }));
}

TEST_F(SectionTest, IsReopenedAnewWhileItsMessagesAreOnTheirWay) {
  auto section = Open("Flight");
  auto *const old = new Sink;
  Advise(section.get(), old);
  for (int i = 0; i < 3; i++) Write(IdOf("Flight"), "x");
  IUnknown *const before = section.get();
  section.Reset();
  section = Open("Flight");
  EXPECT_NE(section.get(), before);
  auto *const sink = new Sink;
  Advise(section.get(), sink);
  Write(IdOf("Flight"), "y");
  EXPECT_TRUE(DeliverUntil([&] { return sink->heard == 1; }));
  EXPECT_EQ(ServerReferences(), 2) << "the old one has gone by now";
  EXPECT_EQ(Sink::living, 1);
  EXPECT_NE(GetUserPrefs()->GetSectionFromID(IdOf("Flight")), nullptr);
}

TEST_F(SectionTest, TwoApartmentsOpenAndCloseAtOnce) {
  auto const work = [](char const *own) {
    for (int i = 0; i < 50; i++) {
      auto const alone = Open(own);
      auto const shared = Open("Both");
      IStream *none = nullptr;
      EXPECT_EQ(GetUserPrefs()->GetStream(static_cast<uint32_t>(IdOf(own)), "none", &none, 0),
                E_FAIL);
    }
  };
  server_.reset();
  std::thread other([&] {
    ServerReference const server;
    work("Left");
  });
  {
    ServerReference const server;
    work("Right");
  }
  other.join();
}

TEST(SinkArray, GrowsByItsStepsAndFillsFreeSlots) {
  Sink *sinks[9];
  for (Sink *&sink : sinks) {
    sink = new Sink;
    sink->AddRef();
  }
  SinkArray array;
  uint32_t const capacities[] = {1, 4, 4, 4, 8, 8, 8, 8, 16};
  for (int i = 0; i < 9; i++) {
    EXPECT_EQ(array.Add(sinks[i]), sinks[i]);
    EXPECT_EQ(array.capacity(), capacities[i]);
    EXPECT_EQ(array.At(static_cast<uint32_t>(i)), sinks[i]);
  }
  EXPECT_TRUE(array.Remove(sinks[1]));
  EXPECT_FALSE(array.Remove(sinks[1]));
  EXPECT_FALSE(array.Remove(nullptr));
  EXPECT_EQ(array.At(1), nullptr);
  sinks[1]->Release();
  sinks[1] = new Sink;
  sinks[1]->AddRef();
  array.Add(sinks[1]);
  EXPECT_EQ(array.At(1), sinks[1]);
  EXPECT_EQ(array.capacity(), 16U);
  array.ReleaseAll();
  EXPECT_EQ(array.capacity(), 0U);
  EXPECT_EQ(Sink::living, 0);
}

}  // namespace
}  // namespace zolt::testing
