#include "zolt41/comserver/connection_point.h"

#include "tests/comserver/com_fixture.h"

namespace zolt::testing {
namespace {

class ConnectionTest : public ServerTest {
 protected:
  // What is left of the walk.
  static std::vector<IUnknown *> Rest(IEnumConnections *walk) {
    std::vector<IUnknown *> sinks;
    CONNECTDATA connection = {};
    while (walk->Next(1, &connection, nullptr) == S_OK) {
      EXPECT_EQ(connection.dwCookie, reinterpret_cast<DWORD_PTR>(connection.pUnk));
      sinks.push_back(connection.pUnk);
      connection.pUnk->Release();
    }
    return sinks;
  }
  ComPtr<IEnumConnections> Walk() const {
    ComPtr<IEnumConnections> walk;
    EXPECT_EQ(point_->EnumConnections(walk.Place()), S_OK);
    return walk;
  }
  std::vector<IUnknown *> Connected() const { return Rest(Walk().get()); }
  Sink *Connect() const { return ServerTest::Connect(section_.get()); }

  ComPtr<IConnectionPointContainer> Container() const {
    return Ask<IConnectionPointContainer>(section_.get(), IID_IConnectionPointContainer);
  }

  ComPtr<IUnknown> section_ = Open("Points");
  ComPtr<IConnectionPoint> point_ = PointOf(section_.get());
};

TEST_F(ConnectionTest, TheOnePointIsFoundByItsInterface) {
  auto const container = Container();
  ComPtr<IConnectionPoint> none;
  EXPECT_EQ(container->FindConnectionPoint(IID_IStream, none.Place()), CONNECT_E_NOCONNECTION);
  EXPECT_FALSE(none);
  ComPtr<IEnumConnectionPoints> walk;
  ASSERT_EQ(container->EnumConnectionPoints(walk.Place()), S_OK);
  IConnectionPoint *points[2] = {};
  ULONG fetched = 9;
  EXPECT_EQ(walk->Next(2, points, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 1U);
  EXPECT_EQ(points[0], point_.get());
  EXPECT_EQ(points[0]->Release(), 3U) << "the container, the walk and the test hold it";
  IID iid = {};
  EXPECT_EQ(point_->GetConnectionInterface(&iid), S_OK);
  EXPECT_EQ(iid, IID_IPropertyNotifySink);
  ComPtr<IConnectionPointContainer> back;
  EXPECT_EQ(point_->GetConnectionPointContainer(back.Place()), S_OK);
  EXPECT_EQ(back.get(), container.get());
}

TEST_F(ConnectionTest, NullIsAnswered) {
  auto const container = Container();
  DWORD_PTR cookie = 9;
  CONNECTDATA connection = {};
  auto const walk = Walk();
  HRESULT const pointers[] = {container->FindConnectionPoint(IID_IPropertyNotifySink, nullptr),
                              container->EnumConnectionPoints(nullptr),
                              point_->GetConnectionInterface(nullptr),
                              point_->GetConnectionPointContainer(nullptr),
                              point_->Advise(section_.get(), nullptr),
                              point_->Advise(nullptr, &cookie),
                              point_->EnumConnections(nullptr),
                              walk->Next(1, nullptr, nullptr),
                              walk->Clone(nullptr)};
  for (HRESULT const result : pointers) EXPECT_EQ(result, E_POINTER);
  EXPECT_EQ(cookie, 0U);
  EXPECT_EQ(walk->Next(2, &connection, nullptr), E_INVALIDARG);
  EXPECT_EQ(walk->Next(0, &connection, nullptr), E_INVALIDARG);
}

TEST_F(ConnectionTest, ASlotIsUsedAgainAndASinkMayHearTwice) {
  std::vector<IUnknown *> sinks(9);
  for (IUnknown *&sink : sinks) sink = Connect();
  EXPECT_EQ(Connected(), sinks) << "as they came, however the room grew";
  EXPECT_EQ(point_->Unadvise(reinterpret_cast<DWORD_PTR>(sinks[1])), S_OK);
  EXPECT_EQ(Sink::living, 8);
  for (DWORD_PTR const none : {0U, 1U}) EXPECT_EQ(point_->Unadvise(none), CONNECT_E_NOCONNECTION);
  DWORD_PTR cookie = 0;
  EXPECT_EQ(point_->Advise(sinks[8], &cookie), S_OK);
  sinks[1] = sinks[8];
  EXPECT_EQ(Connected(), sinks);
  EXPECT_EQ(point_->Unadvise(cookie), S_OK);
  sinks.erase(sinks.begin() + 1);
  EXPECT_EQ(Connected(), sinks);
}

TEST_F(ConnectionTest, AWalkIsASnapshotWithRulesOfItsOwn) {
  EXPECT_EQ(Walk()->Skip(1), S_FALSE) << "over nothing";
  Sink *sinks[3];
  for (Sink *&sink : sinks) sink = Connect();
  auto const walk = Walk();
  Connect();
  EXPECT_EQ(walk->Skip(2), S_OK);
  EXPECT_EQ(Rest(walk.get()), std::vector<IUnknown *>{sinks[2]});
  for (ULONG const count : {ULONG{5}, ULONG{0}, ULONG{0x80000000}, ULONG{0xFFFFFFFF}}) {
    EXPECT_EQ(walk->Skip(count), S_FALSE) << "from the end";
    EXPECT_EQ(Rest(walk.get()), std::vector<IUnknown *>{sinks[2]}) << "stands on the last";
  }
  EXPECT_EQ(walk->Reset(), S_OK);
  EXPECT_EQ(walk->Skip(1), S_OK);
  ComPtr<IEnumConnections> clone;
  EXPECT_EQ(walk->Clone(clone.Place()), S_OK);
  EXPECT_EQ(Rest(clone.get()).size(), 3U) << "a clone begins anew";

  CONNECTDATA connections[3] = {};
  ULONG fetched = 9;
  EXPECT_EQ(walk->Next(0, connections, &fetched), S_OK);
  EXPECT_EQ(fetched, 0U);
  EXPECT_EQ(walk->Next(3, connections, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 2U);
  for (ULONG i = 0; i < fetched; i++) connections[i].pUnk->Release();
  EXPECT_EQ(walk->Next(0, connections, &fetched), S_FALSE) << "at the end";
}

TEST_F(ConnectionTest, APointKeptPastItsSectionTakesNoMoreSinks) {
  Sink *const sink = Connect();
  section_.Reset();
  EXPECT_EQ(ServerReferences(), 1);
  DWORD_PTR cookie = 9;
  ComPtr<IConnectionPointContainer> container;
  EXPECT_EQ(point_->GetConnectionPointContainer(container.Place()), E_UNEXPECTED);
  EXPECT_EQ(point_->Advise(sink, &cookie), E_UNEXPECTED);
  EXPECT_EQ(cookie, 0U);
  EXPECT_EQ(Connected(), std::vector<IUnknown *>{sink});
  EXPECT_EQ(point_->Unadvise(reinterpret_cast<DWORD_PTR>(sink)), S_OK);
  EXPECT_EQ(Sink::living, 0);
}

}  // namespace
}  // namespace zolt::testing
