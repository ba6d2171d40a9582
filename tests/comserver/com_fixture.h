#ifndef ZOLT41_TESTS_COMSERVER_COM_FIXTURE_H_
#define ZOLT41_TESTS_COMSERVER_COM_FIXTURE_H_

#include <optional>

#include "tests/notify/listener.h"
#include "tests/prefs/prefs_fixture.h"
#include "zolt41/comserver/section_map.h"
#include "zolt41/comserver/server_refs.h"
#include "zolt41/platform/com/com_ptr.h"
#include "zolt41/platform/com/ole_storage.h"
#include "zolt41/platform/com/ref_counted.h"
#include "zolt41/prefs/write_transaction.h"

namespace zolt::testing {

// Counts what it hears, and itself.
class Sink final : public RefCounted<IPropertyNotifySink, IID_IPropertyNotifySink> {
 public:
  explicit Sink(std::function<void(Sink *)> then = [](Sink *) {}) : then_(std::move(then)) {
    living++;
  }

  HRESULT QueryInterface(REFIID iid, void **out) override {
    if (out != nullptr) *out = nullptr;
    return deaf ? E_NOINTERFACE : RefCounted::QueryInterface(iid, out);
  }
  HRESULT OnChanged(DISPID id) override {
    EXPECT_EQ(id, -1);
    heard++;
    order += name;
    then_(this);
    return E_FAIL;  // which nobody looks at
  }
  HRESULT OnRequestEdit(DISPID) override {
    ADD_FAILURE() << "is never called";
    return S_OK;
  }

  int heard = 0;
  bool deaf = false;
  char name = '.';
  std::function<void()> atEnd = [] {};
  static inline int living = 0;
  static inline std::string order;  // the names of those that heard

 private:
  ~Sink() override {
    living--;
    atEnd();
  }

  std::function<void(Sink *)> then_;
};

// The library as components start it, in a home of its own. At the end nobody may hold it.
class ServerTest : public ::testing::Test {
 protected:
  ServerTest() { Sink::order.clear(); }
  ~ServerTest() override {
    EXPECT_EQ(Sink::living, 0);
    server_.reset();
    // Sections to which messages are still on their way end with these.
    EXPECT_TRUE(DeliverUntil([] { return ServerReferences() == 0; }));
  }
  template <typename Interface>
  static ComPtr<Interface> Ask(IUnknown *object, REFIID iid) {
    ComPtr<Interface> face;
    EXPECT_EQ(object->QueryInterface(iid, face.VoidPlace()), S_OK);
    return face;
  }
  static ComPtr<IUnknown> Open(char const *name, int32_t parent = 0, int32_t kind = kUserStore) {
    ComPtr<IUnknown> section;
    EXPECT_EQ(OpenSection(parent, name, kind, IID_IUnknown, section.VoidPlace()), S_OK);
    return section;
  }

  // A null pointer is left where none can be opened.
  static HRESULT OpenResult(char const *name, int32_t parent = 0, int32_t kind = kUserStore,
                            REFIID iid = IID_IUnknown) {
    void *out = &out;
    HRESULT const result = OpenSection(parent, name, kind, iid, &out);
    EXPECT_EQ(out, nullptr);
    return result;
  }
  static ComPtr<IConnectionPoint> PointOf(IUnknown *section) {
    auto const container = Ask<IConnectionPointContainer>(section, IID_IConnectionPointContainer);
    ComPtr<IConnectionPoint> point;
    EXPECT_EQ(container->FindConnectionPoint(IID_IPropertyNotifySink, point.Place()), S_OK);
    return point;
  }
  static DWORD_PTR Advise(IUnknown *section, IUnknown *sink) {
    DWORD_PTR cookie = 0;
    EXPECT_EQ(PointOf(section)->Advise(sink, &cookie), S_OK);
    return cookie;
  }
  static Sink *Connect(IUnknown *section) {
    auto *const sink = new Sink;
    Advise(section, sink);
    return sink;
  }
  static int32_t IdOf(char const *name, int32_t parent = 0) {
    return GetUserPrefs()->GetIDFromString(name, parent);
  }

  // A value of a section, written as one transaction.
  static void Change(int32_t section, char const *value) {
    static int serial = 0;
    std::string const text = value + std::to_string(serial++);
    Transaction transaction(PrefLevelUser);
    transaction.SetStr(static_cast<uint32_t>(section), "v", text.c_str());
    EXPECT_EQ(transaction.Write(), Commit::done);
  }
  static std::string ReadBytes(char const *name, int32_t section) {
    uint32_t size = 0;
    auto const id = static_cast<uint32_t>(section);
    if (GetUserPrefs()->GetFree(id, name, 3, nullptr, size) == 0) return "-";
    std::string bytes(size, '\0');
    GetUserPrefs()->GetFree(id, name, 3, reinterpret_cast<uint8_t *>(bytes.data()), size);
    return bytes;
  }

  TempHome home_;
  std::optional<ServerReference> server_{std::in_place};
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_COMSERVER_COM_FIXTURE_H_
