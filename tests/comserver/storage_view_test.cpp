#include "zolt41/comserver/storage_view.h"

#include <tuple>
#include <utility>

#include "tests/comserver/com_fixture.h"
#include "tests/support/stream.h"
#include "zolt41/platform/com/com_alloc.h"

namespace zolt::testing {
namespace {

class StorageTest : public ServerTest {
 protected:
  static ComPtr<IStorage> StorageOf(IUnknown *section) {
    return Ask<IStorage>(section, IID_IStorage);
  }
  static ComPtr<IStorage> Create(ComPtr<IStorage> const &in, char16_t const *name) {
    ComPtr<IStorage> made;
    EXPECT_EQ(in->CreateStorage(name, 0, 0, 0, made.Place()), S_OK);
    return made;
  }
  static HRESULT OpenResult(ComPtr<IStorage> const &in, char16_t const *name) {
    ComPtr<IStorage> storage;
    HRESULT const result = in->OpenStorage(name, nullptr, 0, nullptr, 0, storage.Place());
    EXPECT_EQ(static_cast<bool>(storage), result == S_OK);
    return result;
  }
  static HRESULT StreamResult(ComPtr<IStorage> const &in, char16_t const *name) {
    ComPtr<IStream> stream;
    HRESULT const result = in->OpenStream(name, nullptr, 0, 0, stream.Place());
    EXPECT_EQ(static_cast<bool>(stream), result == S_OK);
    return result;
  }
  // Name, type and size of the next records, at most as many as are asked for.
  static std::string Next(ComPtr<IEnumSTATSTG> const &walk, ULONG count, HRESULT result) {
    STATSTG records[6] = {};
    ULONG fetched = 9;
    EXPECT_EQ(walk->Next(count, records, &fetched), result);
    std::string text;
    for (ULONG i = 0; i < fetched; i++) {
      std::u16string const name = records[i].pwcsName;
      CoTaskMemFree(records[i].pwcsName);
      text += std::string(name.begin(), name.end()) + " " + std::to_string(records[i].type) + " " +
              std::to_string(records[i].cbSize.QuadPart) + ", ";
    }
    EXPECT_EQ(records[fetched].type, 0U) << "no more than it says";
    return text;
  }
  static ComPtr<IEnumSTATSTG> Walk(ComPtr<IStorage> const &storage) {
    ComPtr<IEnumSTATSTG> walk;
    EXPECT_EQ(storage->EnumElements(0, nullptr, 7, walk.Place()), S_OK);
    return walk;
  }
  static void Bytes(char const *name, std::string const &bytes, uint32_t type = REG_BINARY,
                    int32_t section = IdOf("Store")) {
    RegSetValueExA(SectionKey(section, 0), name, 0, type,
                   reinterpret_cast<uint8_t const *>(bytes.data()),
                   static_cast<uint32_t>(bytes.size()));
  }

  ComPtr<IStorage> store_ = StorageOf(Open("Store").get());
};

TEST_F(StorageTest, CreatingWhatIsThereOpensIt) {
  EXPECT_EQ(OpenResult(store_, u"Sub"), STG_E_FILENOTFOUND);
  auto const made = Create(store_, u"Sub");
  EXPECT_EQ(OpenResult(store_, u"Sub"), S_OK);
  EXPECT_EQ(Create(store_, u"SUB").get(), made.get());
  auto const deeper = Create(made, u"Deeper");
  EXPECT_EQ(InUserTree("Store\\Sub\\Deeper", ""), "no value") << "but the key is there";
  EXPECT_EQ(OpenResult(store_, u"Sub\\Deeper"), STG_E_FILENOTFOUND) << "a name is no path";
  Bytes("v", "below", REG_BINARY, IdOf("Deeper", IdOf("Sub", IdOf("Store"))));
  EXPECT_EQ(StreamResult(deeper, u"v"), S_OK);
}

TEST_F(StorageTest, CreatingAStreamKeepsTheBytesOfAnOldOne) {
  Bytes("old", "bytes");
  Bytes("text", std::string("abc\0", 4), REG_SZ);
  std::pair<char16_t const *, std::string> const cases[] = {
      {u"old", "bytes"}, {u"new", ""}, {u"text", std::string("abc\0", 4)}};
  for (auto const &[name, bytes] : cases) {
    ComPtr<IStream> stream;
    ASSERT_EQ(store_->CreateStream(name, STGM_READ | STGM_CREATE, 0, 0, stream.Place()), S_OK);
    EXPECT_EQ(testing::Read(stream, 64), bytes);
  }
  EXPECT_EQ(ReadBytes("new", IdOf("Store")), "");
  EXPECT_EQ(StreamResult(store_, u"absent"), E_FAIL);
}

TEST_F(StorageTest, RefusesBadArgumentsInTheirOrder) {
  auto *const bad = reinterpret_cast<IStorage *>(1);
  SNB const names = reinterpret_cast<SNB>(1);
  ComPtr<IStorage> storage;
  ComPtr<IStream> stream;
  ComPtr<IEnumSTATSTG> walk;
  HRESULT const parameters[] = {store_->OpenStream(u"n", bad, 0, 0, nullptr),
                                store_->OpenStream(u"n", nullptr, 0, 1, stream.Place()),
                                store_->OpenStream(nullptr, nullptr, 0, 0, stream.Place()),
                                store_->CreateStream(u"n", 0, 1, 0, nullptr),
                                store_->CreateStream(u"n", 0, 0, 1, stream.Place()),
                                store_->OpenStorage(u"n", bad, 0, nullptr, 0, storage.Place()),
                                store_->OpenStorage(u"n", nullptr, 0, names, 0, storage.Place()),
                                store_->OpenStorage(u"n", nullptr, 0, nullptr, 1, nullptr),
                                store_->CreateStorage(u"n", 0, 1, 0, storage.Place()),
                                store_->CreateStorage(u"n", 0, 0, 1, nullptr),
                                store_->EnumElements(1, nullptr, 0, walk.Place()),
                                store_->EnumElements(0, bad, 0, walk.Place()),
                                store_->EnumElements(0, nullptr, 0, nullptr),
                                store_->DestroyElement(nullptr)};
  for (HRESULT const result : parameters) EXPECT_EQ(result, STG_E_INVALIDPARAMETER);
  EXPECT_EQ(store_->OpenStream(u"n", nullptr, 0, 0, nullptr), STG_E_INVALIDPOINTER);
  EXPECT_EQ(store_->CreateStorage(u"n", 0, 0, 0, nullptr), STG_E_INVALIDPOINTER);
  EXPECT_FALSE(storage);
  EXPECT_FALSE(stream);
  EXPECT_FALSE(walk);
}

TEST_F(StorageTest, NamesAreBytesOfTheSameNumber) {
  Bytes("\x80\xE9\xFF", "high");
  EXPECT_EQ(StreamResult(store_, u"\u0080\u00E9\u00FF"), S_OK);
  auto const letters = [](size_t count) { return std::u16string(count, u'a'); };
  constexpr HRESULT kBad = STG_E_INVALIDNAME;
  std::tuple<std::u16string, HRESULT, HRESULT, HRESULT> const cases[] = {
      {u"\u0100", kBad, kBad, kBad},
      {u"a\u20AC", kBad, kBad, kBad},
      {u"\xD800", kBad, kBad, kBad},
      {letters(255), STG_E_FILENOTFOUND, S_OK, S_OK},
      {letters(256), STG_E_FILENOTFOUND, S_OK, E_FAIL},
      {letters(260), STG_E_FILENOTFOUND, kBad, E_FAIL},
      {letters(10000), STG_E_FILENOTFOUND, kBad, E_FAIL}};
  for (auto const &[text, open, createStream, createStorage] : cases) {
    char16_t const *const name = text.c_str();
    ComPtr<IStream> stream;
    ComPtr<IStorage> storage;
    EXPECT_EQ(OpenResult(store_, name), open) << text.size();
    EXPECT_EQ(store_->CreateStream(name, 0, 0, 0, stream.Place()), createStream) << text.size();
    EXPECT_EQ(store_->CreateStorage(name, 0, 0, 0, storage.Place()), createStorage) << text.size();
  }
  EXPECT_EQ(store_->CreateStream(u"", 0, 0, 0, ComPtr<IStream>().Place()), S_OK)
      << "the unnamed value";
  EXPECT_EQ(StreamResult(store_, u"\u0100"), STG_E_INVALIDNAME);
  EXPECT_EQ(store_->DestroyElement(u"\u0100"), STG_E_INVALIDNAME);
}

TEST_F(StorageTest, WalksSubkeysThenValues) {
  Create(store_, u"First");
  Create(store_, u"Second");
  Bytes("bytes", "12345");
  Bytes("text", std::string("t\0", 2), REG_SZ);
  auto const walk = Walk(store_);
  EXPECT_EQ(Next(walk, 0, S_OK), "First 1 0, ") << "0 counts as 1";
  ComPtr<IEnumSTATSTG> clone;
  EXPECT_EQ(walk->Clone(clone.Place()), S_OK);
  EXPECT_EQ(Next(walk, 5, S_FALSE), "Second 1 0, bytes 2 5, text 4 2, ");
  EXPECT_EQ(Next(walk, 1, S_FALSE), "");
  EXPECT_EQ(clone->Skip(1), S_OK);
  STATSTG record = {};
  EXPECT_EQ(clone->Next(1, &record, nullptr), S_OK);
  CoTaskMemFree(record.pwcsName);
  EXPECT_EQ(Next(clone, 1, S_OK), "text 4 2, ");
  EXPECT_EQ(clone->Skip(0), S_OK);
  EXPECT_EQ(clone->Skip(1), S_FALSE);
  EXPECT_EQ(walk->Reset(), S_OK);
  EXPECT_EQ(walk->Skip(0x80000000), S_FALSE) << "past the end";
  ULONG fetched = 9;
  EXPECT_EQ(walk->Next(1, nullptr, &fetched), E_INVALIDARG);
  EXPECT_EQ(walk->Clone(nullptr), E_INVALIDARG);
}

TEST_F(StorageTest, AWalkKeepsItsCountWhenTheKeyChanges) {
  for (char const *name : {"a", "b", "c"}) Bytes(name, "");
  auto const walk = Walk(store_);
  store_.Reset();
  Bytes("d", "");
  for (char const *name : {"a", "b"})
    GetUserPrefs()->RemoveValue(static_cast<uint32_t>(IdOf("Store")), name);
  EXPECT_EQ(Next(walk, 3, S_FALSE), "c 2 0, d 2 0, ");
  EXPECT_EQ(walk->Skip(1), S_OK) << "by the old count";
  ComPtr<IEnumSTATSTG> clone;
  EXPECT_EQ(walk->Clone(clone.Place()), S_OK);
  EXPECT_EQ(Next(clone, 1, S_FALSE), "") << "counted anew, it stands past the end";
}

TEST_F(StorageTest, DestroysStoragesOnlyAndSectionsOnThemLiveOn) {
  Bytes("value", "v");
  auto const sub = Create(store_, u"Sub");
  auto const deep = Create(sub, u"Deep");
  EXPECT_EQ(store_->DestroyElement(u"value"), STG_E_ACCESSDENIED);
  EXPECT_EQ(ReadBytes("value", IdOf("Store")), "v");
  EXPECT_EQ(store_->DestroyElement(u"absent"), STG_E_ACCESSDENIED);
  EXPECT_EQ(store_->DestroyElement(u"Sub"), STG_E_ACCESSDENIED) << "it has a storage in it";
  EXPECT_EQ(sub->DestroyElement(u"Deep"), S_OK);
  EXPECT_EQ(OpenResult(sub, u"Deep"), STG_E_FILENOTFOUND);
  ComPtr<IStream> stream;
  EXPECT_EQ(deep->CreateStream(u"s", 0, 0, 0, stream.Place()), E_FAIL);
  ComPtr<IStorage> below;
  EXPECT_EQ(deep->CreateStorage(u"s", 0, 0, 0, below.Place()), E_FAIL);
  EXPECT_EQ(Next(Walk(deep), 1, S_FALSE), "");
  EXPECT_EQ(OpenResult(deep, u"s"), STG_E_FILENOTFOUND);
  EXPECT_EQ(deep->DestroyElement(u"s"), STG_E_ACCESSDENIED);
}

TEST_F(StorageTest, ASystemSectionHasItsStructureInTheUsersTree) {
  auto const system = StorageOf(Open("System", 0, kSystemStore).get());
  Bytes("users", "kept", REG_BINARY, IdOf("System"));
  ComPtr<IStream> stream;
  EXPECT_EQ(system->CreateStream(u"new", 0, 0, 0, stream.Place()), E_FAIL);
  EXPECT_EQ(ReadBytes("new", IdOf("System")), "") << "an empty value of the user's";
  EXPECT_EQ(system->CreateStream(u"users", 0, 0, 0, stream.Place()), E_FAIL);
  EXPECT_EQ(ReadBytes("users", IdOf("System")), "kept");
  auto const id = static_cast<uint32_t>(IdOf("System"));
  GetSystemPrefs()->WriteFree(id, "s", 3, reinterpret_cast<uint8_t const *>("xy"), 2,
                              PrefLevelThis);
  EXPECT_EQ(StreamResult(system, u"s"), S_OK);
  EXPECT_EQ(GetUserPrefs()->Exists(id, "s"), 0);
}

}  // namespace
}  // namespace zolt::testing
