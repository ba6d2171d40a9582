#include "zolt41/comserver/pref_manager.h"

#include <tuple>

#include "tests/comserver/com_fixture.h"
#include "tests/support/mem_bytes.h"
#include "zolt41/comserver/class_factory.h"
#include "zolt41/comserver/server_exports.h"
#include "zolt41/platform/com/com_alloc.h"

namespace zolt::testing {
namespace {

// The image of a card with one preference, at the top of its store.
std::string CardImage(char const *name, char const *value) {
  CallCard card(CardFormatNone);
  card.Prefs()->WriteStr(0, name, value, PrefLevelThis);
  card.SavePrefs();
  return std::string(56, 'H') + Taken(card.Get());
}

// Saves what it is told to, whatever size it told.
class Source final : public RefCounted<IPersistStreamInit, IID_IPersistStreamInit> {
 public:
  explicit Source(std::string image) : saved(std::move(image)), size(saved.size()) {}

  HRESULT QueryInterface(REFIID iid, void **out) override {
    if (hidden && iid == IID_IPersistStreamInit) {
      *out = nullptr;
      return E_NOINTERFACE;
    }
    return RefCounted::QueryInterface(iid, out);
  }
  HRESULT GetClassID(CLSID *) override { return E_NOTIMPL; }
  HRESULT IsDirty() override { return E_NOTIMPL; }
  HRESULT Load(IStream *) override { return E_NOTIMPL; }
  HRESULT InitNew() override { return E_NOTIMPL; }
  HRESULT GetSizeMax(ULARGE_INTEGER *out) override {
    out->QuadPart = size;
    return sizeResult;
  }
  HRESULT Save(IStream *stream, BOOL clearDirty) override {
    EXPECT_EQ(clearDirty, 0);
    if (!saved.empty()) stream->Write(saved.data(), static_cast<ULONG>(saved.size()), nullptr);
    if (cutTo != UINT64_MAX) stream->SetSize({.QuadPart = cutTo});
    kept = ComPtr(stream);
    return saveResult;
  }

  std::string saved;
  uint64_t size;
  uint64_t cutTo = UINT64_MAX;
  HRESULT sizeResult = S_OK;
  HRESULT saveResult = S_OK;
  bool hidden = false;
  ComPtr<IStream> kept;
};

class ManagerTest : public ServerTest {
 protected:
  ManagerTest() {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(DllGetClassObject(CLSID_PrefManager, IID_IClassFactory, factory.VoidPlace()), S_OK);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IPrefManager, manager_.VoidPlace()), S_OK);
  }

  ComPtr<IStorage> Root() const {
    ComPtr<IStorage> root;
    EXPECT_EQ(manager_->OpenRootStorage(STGM_READ, root.Place()), S_OK);
    return root;
  }
  // The property "v" of the root, as a text of ASCII.
  std::string Value() const {
    auto const properties = Ask<IPropertyStorage>(Root().get(), IID_IPropertyStorage);
    char16_t name[] = u"v";
    PROPSPEC spec = {};
    spec.lpwstr = name;
    PROPVARIANT variant = {};
    variant.vt = VT_BSTR;
    EXPECT_EQ(properties->ReadMultiple(1, &spec, &variant), S_OK);
    std::u16string const wide(variant.bstrVal);
    SysFreeString(variant.bstrVal);
    return {wide.begin(), wide.end()};
  }

  ComPtr<IPrefManager> manager_;
};

TEST_F(ManagerTest, LooksAtTheStoreThatIsSelected) {
  UserPrefs()->SetStr(0, "v", "user");
  SystemPrefs()->SetStr(0, "v", "system");
  EXPECT_EQ(Value(), "user") << "at first";
  auto const first = Root();  // each root is an object of its own
  EXPECT_EQ(manager_->SelectStore(nullptr, 2), S_OK);
  EXPECT_EQ(Value(), "system");
  ComPtr<IUnknown> const other(new Source(CardImage("w", "card")));
  EXPECT_EQ(manager_->SelectStore(other.get(), 0), S_OK);
  EXPECT_EQ(Value(), "user") << "a card falls back to the user's store";
  ComPtr<IUnknown> const source(new Source(CardImage("v", "card")));
  EXPECT_EQ(manager_->SelectStore(source.get(), 0), S_OK);
  EXPECT_EQ(Value(), "card");
  EXPECT_EQ(manager_->SelectStore(nullptr, 1), S_OK);
  EXPECT_EQ(Value(), "user");
}

TEST_F(ManagerTest, RefusesWhatCannotBeSelected) {
  UserPrefs()->SetStr(0, "v", "user");
  SystemPrefs()->SetStr(0, "v", "system");
  ASSERT_EQ(manager_->SelectStore(nullptr, 2), S_OK);
  ComPtr const source(new Source(CardImage("v", "card")));
  EXPECT_EQ(manager_->SelectStore(nullptr, 0), E_INVALIDARG);
  for (int32_t const kind : {1, 2, 7, -1})
    EXPECT_EQ(manager_->SelectStore(source.get(), kind), E_INVALIDARG);
  for (int32_t const kind : {7, 3, -1}) EXPECT_EQ(manager_->SelectStore(nullptr, kind), E_FAIL);
  for (uint64_t const size : {uint64_t{0}, uint64_t{55}, uint64_t{0xFFFFFFFF}, uint64_t{1} << 32}) {
    source->size = size;
    EXPECT_EQ(manager_->SelectStore(source.get(), 0), E_FAIL) << size;
  }
  source->size = 100;
  source->sizeResult = E_NOTIMPL;
  EXPECT_EQ(manager_->SelectStore(source.get(), 0), E_FAIL);
  source->hidden = true;
  EXPECT_EQ(manager_->SelectStore(source.get(), 0), E_FAIL);
  EXPECT_EQ(Value(), "system") << "as it was";
  EXPECT_EQ(source->AddRef(), 2U) << "nothing is kept of it";
  source->Release();
  EXPECT_EQ(manager_->OpenRootStorage(0, nullptr), E_INVALIDARG);
  EXPECT_EQ(manager_->Reserved(0), E_NOTIMPL);
}

TEST_F(ManagerTest, TakesWhatALyingSourceLeaves) {
  std::string const image = CardImage("v", "card");
  UserPrefs()->SetStr(0, "v", "user");
  size_t const size = image.size();
  constexpr uint64_t kUncut = UINT64_MAX;
  // What it saves, the size that it says, the size that it leaves, and what is read then.
  std::tuple<char const *, std::string, uint64_t, uint64_t, char const *> const cases[] = {
      {"all", image, size, kUncut, "card"},
      {"nothing", "", size, kUncut, "user"},
      {"half", image.substr(0, size / 2), size, kUncut, "user"},
      {"more, which moves the block", image + std::string(1 << 20, 'x'), size, kUncut, "card"},
      {"has more room than it needs", image, size + 100000, kUncut, "card"},
      {"says too little", image, 60, kUncut, "user"},
      {"has a head only", image, 56, kUncut, "user"},
      {"cuts the block", image, size, 57, "user"},
      {"cuts it to nothing", image, size, 0, "user"},
      {"garbage", std::string(5000, '\xFF'), 5000, kUncut, "user"},
      {"only the low half counts", image, (uint64_t{5} << 32) + size, kUncut, "card"}};
  for (auto const &[what, saved, said, cutTo, value] : cases) {
    for (HRESULT const result : {S_OK, E_FAIL}) {
      ComPtr const source(new Source(saved));
      source->size = said;
      source->cutTo = cutTo;
      source->saveResult = result;
      EXPECT_EQ(manager_->SelectStore(source.get(), 0), S_OK) << what;
      EXPECT_EQ(source->kept->Write("x", 1, nullptr), S_OK) << "it may keep the stream";
      source->kept.Reset();
      EXPECT_EQ(Value(), value) << what << result;
    }
  }
}

TEST_F(ManagerTest, ACardsRootHasNoStoragesOfItsOwn) {
  ComPtr<IUnknown> const source(new Source(CardImage("v", "card")));
  ASSERT_EQ(manager_->SelectStore(source.get(), 0), S_OK);
  auto const root = Root();
  ComPtr<IStorage> storage;
  EXPECT_EQ(root->OpenStorage(u"None", nullptr, 0, nullptr, 0, storage.Place()),
            STG_E_FILENOTFOUND);
  EXPECT_EQ(root->OpenStorage(u"General", nullptr, 0, nullptr, 0, storage.Place()), E_INVALIDARG);
  EXPECT_EQ(root->CreateStorage(u"None", 0, 0, 0, storage.Place()), E_INVALIDARG);
  uint8_t const bytes[] = "user";
  UserPrefs()->WriteFree(0, "s", REG_BINARY, bytes, 4, PrefLevelThis);
  ComPtr<IStream> stream;
  ASSERT_EQ(root->OpenStream(u"s", nullptr, STGM_READWRITE, 0, stream.Place()), S_OK);
  EXPECT_EQ(stream->Write("card", 4, nullptr), S_OK);
  EXPECT_EQ(ReadBytes("s", 0), "user");
}

TEST_F(ManagerTest, TheFactoryAnswersAndLocksOnce) {
  server_.reset();
  {
    auto const root = Root();
    manager_.Reset();
    EXPECT_EQ(DllCanUnloadNow(), S_FALSE) << "the last object keeps the library";
  }
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
  void *out = &out;
  EXPECT_EQ(DllGetClassObject(IID_IStream, IID_IClassFactory, &out), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(DllGetClassObject(CLSID_PrefManager, IID_IStream, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(DllGetClassObject(CLSID_PrefManager, IID_IClassFactory, nullptr), E_INVALIDARG);
  ComPtr<IClassFactory> factory;
  ASSERT_EQ(DllGetClassObject(CLSID_PrefManager, IID_IUnknown, factory.VoidPlace()), S_OK);
  EXPECT_EQ(DllCanUnloadNow(), S_OK) << "a factory does not count";
  for (BOOL const lock : {1, 1, 0}) EXPECT_EQ(factory->LockServer(lock), S_OK);
  EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
  EXPECT_EQ(factory->LockServer(0), S_OK);
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
  EXPECT_EQ(factory->CreateInstance(factory.get(), IID_IPrefManager, &out), CLASS_E_NOAGGREGATION);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IStream, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, nullptr), E_INVALIDARG);
  EXPECT_EQ(DllCanUnloadNow(), S_OK) << "nothing half-made is left";
}

}  // namespace
}  // namespace zolt::testing
