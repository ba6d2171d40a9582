#include "zolt41/comserver/section_object.h"

#include <tuple>

#include "tests/comserver/com_fixture.h"
#include "tests/support/child.h"
#include "zolt41/notify/transaction.h"

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

TEST_F(SectionTest, ComesWithItsKeysAndTakesAwayItsOwnRegistrationOnly) {
  int32_t const id = IdOf("Fresh");
  auto section = Open("Fresh");
  EXPECT_EQ(InUserTree("Fresh", ""), "no value") << "but the key is there";
  EXPECT_NE(GetUserPrefs()->GetSectionFromID(id), nullptr);
  section.Reset();
  EXPECT_EQ(GetUserPrefs()->GetSectionFromID(id), nullptr);
  section = Open("Fresh");
  RegisterPrefSection(id, "Fresh");
  section.Reset();
  EXPECT_NE(GetUserPrefs()->GetSectionFromID(id), nullptr);
  UnRegisterPrefSection(id, 0);
  EXPECT_EQ(GetUserPrefs()->GetSectionFromID(id), nullptr);
}

TEST_F(SectionTest, RefusesWhatCannotBeOpened) {
  std::tuple<std::string, int32_t, int32_t, HRESULT> const cases[] = {
      {"A", 0, kCardStore, E_INVALIDARG},
      {"A", 0, 3, E_INVALIDARG},
      {"A", 0, -1, E_INVALIDARG},
      {"A", 0x12345678, kUserStore, E_FAIL},
      {"", 0, kUserStore, E_FAIL},
      {std::string(255, 'n') + "!", 0, kUserStore, E_FAIL},
      {std::string(259, 'n'), 0, kUserStore, E_FAIL},
      {std::string(10000, 'n'), 0, kSystemStore, E_FAIL}};
  for (auto const &[name, parent, kind, result] : cases)
    EXPECT_EQ(OpenResult(name.c_str(), parent, kind), result);
  EXPECT_EQ(OpenSection(0, "A", kUserStore, IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(OpenResult("A", 0, kUserStore, IID_IStream), E_NOINTERFACE);
  EXPECT_EQ(GetUserPrefs()->GetSectionFromID(IdOf("A")), nullptr);
  EXPECT_EQ(ServerReferences(), 1) << "nothing is left of those";
}

TEST_F(SectionTest, ARootIsNotRegisteredAndHearsChangesAtTheTop) {
  auto const root = Open(nullptr);
  EXPECT_EQ(GetUserPrefs()->GetSectionFromID(0), nullptr);
  auto *const sink = Connect(root.get());
  BeginPrefsModify(int32_t{0}, PrefLevelUser, 0);
  UserPrefs()->SetStr(0, "v", "x");
  EndPrefsModify();
  EXPECT_TRUE(DeliverUntil([&] { return sink->heard == 1; }));
}

// Its id would be that of "BelowDeeper", which has nothing to do with it.
TEST_F(SectionTest, BelowAnAncestorThatIsGoneNothingIsOpened) {
  auto const unrelated = Open("BelowDeeper");
  auto above = Open("Above");
  auto const below = Open("Below", IdOf("Above"));
  int32_t const id = IdOf("Below", IdOf("Above"));
  above.Reset();
  for (int32_t const parent : {IdOf("Above"), id}) EXPECT_EQ(OpenResult("Deeper", parent), E_FAIL);
  Change(id, "still");
  EXPECT_EQ(ReadBytes("v", id).substr(0, 5), "still");
  above = Open("Above");
  EXPECT_NE(Open("Deeper", id).get(), unrelated.get());
}

TEST_F(SectionTest, TellsInOrderWhatAnotherProcessWritesToTwoSections) {
  auto const user = Open("One");
  auto const system = Open("Two", 0, kSystemStore);
  for (char const name : {'f', 'd', 'l'}) {
    auto *const sink = new Sink;
    sink->name = name;
    sink->deaf = name == 'd';
    Advise(user.get(), sink);
  }
  auto *const other = new Sink;
  other->name = 'o';
  Advise(system.get(), other);
  Child writer([](Child::Pipe &) {
    ServerReference const server;
    ComPtr<IUnknown> const sections[] = {Open("One"), Open("Two"), Open("Elsewhere")};
    for (char const *name : {"One", "Elsewhere", "One", "Two"}) Change(IdOf(name), "w");
    return ::testing::Test::HasFailure() ? 1 : 0;
  });
  EXPECT_TRUE(DeliverUntil([&] { return other->heard == 1; }));
  EXPECT_EQ(Sink::order, "flflo") << "once for each transaction";
  EXPECT_EQ(writer.Wait(), 0);
}

TEST_F(SectionTest, ASinkMayChangeWhoIsConnectedAndReleaseTheSection) {
  auto section = Open("Busy");
  DWORD_PTR cookie = 0;
  ComPtr const late(new Sink);
  ComPtr const last(new Sink);
  ComPtr const leaving(
      new Sink([&](Sink *) { EXPECT_EQ(PointOf(section.get())->Unadvise(cookie), S_OK); }));
  cookie = Advise(section.get(), leaving.get());
  Advise(section.get(), new Sink([&](Sink *) { Advise(section.get(), late.get()); }));
  Advise(section.get(), new Sink([&](Sink *) { section.Reset(); }));
  Advise(section.get(), last.get());
  Change(IdOf("Busy"), "x");
  EXPECT_TRUE(DeliverUntil([&] { return last->heard == 1; }));
  EXPECT_EQ(leaving->heard, 1);
  EXPECT_EQ(late->heard, 0) << "it came later";
  EXPECT_EQ(Sink::living, 3) << "those that are held here";
}

TEST_F(SectionTest, ASinkMayReleaseTheLastReferenceOfAll) {
  auto section = Open("Busy");
  bool done = false;
  Advise(section.get(), new Sink([&](Sink *) {
           server_.reset();
           section.Reset();
           EXPECT_EQ(ServerReferences(), 0);
           done = true;
         }));
  Change(IdOf("Busy"), "x");
  EXPECT_TRUE(DeliverUntil([&] { return done; }));
}

TEST_F(SectionTest, ASinkThatEndsWithItsSectionMayAskItForItsFaces) {
  auto section = Open("Ending");
  IUnknown *const ending = section.get();
  auto *const sink = new Sink;
  bool asked = false;
  sink->atEnd = [&] {
    void *out = &out;
    EXPECT_EQ(ending->QueryInterface(IID_IConnectionPointContainer, &out), E_NOINTERFACE);
    EXPECT_EQ(out, nullptr);
    Ask<IStorage>(ending, IID_IStorage);
    asked = true;
  };
  Advise(ending, sink);
  section.Reset();
  EXPECT_TRUE(asked);
}

TEST_F(SectionTest, ASinkMayWrite) {
  auto const section = Open("Busy");
  int left = 3;
  auto *const sink = new Sink([&](Sink *) {
    if (left-- > 0) Change(IdOf("Busy"), "again");
  });
  Advise(section.get(), sink);
  Change(IdOf("Busy"), "x");
  EXPECT_TRUE(DeliverUntil([&] { return sink->heard == 4; }));
}

TEST_F(SectionTest, IsReopenedAnewWhileItsMessagesAreOnTheirWay) {
  auto section = Open("Flight");
  Connect(section.get());
  for (int i = 0; i < 3; i++) Change(IdOf("Flight"), "x");
  IUnknown *const before = section.get();
  section.Reset();
  section = Open("Flight");
  EXPECT_NE(section.get(), before);
  auto *const sink = Connect(section.get());
  Change(IdOf("Flight"), "y");
  EXPECT_TRUE(DeliverUntil([&] { return sink->heard == 1; }));
  EXPECT_EQ(ServerReferences(), 2) << "the old one has gone by now";
  EXPECT_EQ(Sink::living, 1);
  EXPECT_NE(GetUserPrefs()->GetSectionFromID(IdOf("Flight")), nullptr);
}

TEST_F(SectionTest, TwoApartmentsOpenAndCloseAtOnce) {
  auto const work = [](char const *own) {
    ServerReference const server;
    for (int i = 0; i < 50; i++) {
      auto const alone = Open(own);
      auto const shared = Open("Both");
      auto const id = static_cast<uint32_t>(IdOf(own));
      EXPECT_EQ(GetUserPrefs()->GetStream(id, "none", ComPtr<IStream>().Place(), 0), E_FAIL);
    }
  };
  server_.reset();
  std::thread other(work, "Left");
  work("Right");
  other.join();
}

TEST_F(SectionTest, AChildThatIsForkedMeanwhileOpensSections) {
  // The first use makes the locks, and has them looked after in forks.
  Open("Other");
  ForkMeanwhile([] { Open("Other"); },
                [] {
                  Open("Other");
                  return !::testing::Test::HasFailure();
                });
}

}  // namespace
}  // namespace zolt::testing
