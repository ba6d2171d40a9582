#include "zolt41/comserver/storage_view.h"

#include <vector>

#include "tests/comserver/com_fixture.h"
#include "tests/support/stream.h"
#include "zolt41/platform/com/com_alloc.h"
#include "zolt41/prefs/pref_sections.h"

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
  // Name, type and size of a record, which is given back.
  static std::string Told(STATSTG *record) {
    std::string text;
    for (char16_t const *at = record->pwcsName; *at != 0; at++) text += static_cast<char>(*at);
    CoTaskMemFree(record->pwcsName);
    text += " " + std::to_string(record->type) + " " + std::to_string(record->cbSize.QuadPart);
    *record = {};
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
  HKEY key = 0;
  EXPECT_EQ(RegOpenKeyA(SectionKey(IdOf("Store"), 0), "Sub\\Deeper", &key), ERROR_SUCCESS);
  RegCloseKey(key);
  EXPECT_EQ(OpenResult(store_, u"Sub\\Deeper"), STG_E_FILENOTFOUND) << "a name is no path";
  Bytes("v", "below", REG_BINARY, IdOf("Deeper", IdOf("Sub", IdOf("Store"))));
  EXPECT_EQ(StreamResult(deeper, u"v"), S_OK);
}

TEST_F(StorageTest, CreatingAStreamKeepsTheBytesOfAnOldOne) {
  Bytes("old", "bytes");
  Bytes("text", std::string("abc\0", 4), REG_SZ);
  struct {
    char16_t const *name;
    std::string bytes;
  } const cases[] = {{u"old", "bytes"}, {u"new", ""}, {u"text", std::string("abc\0", 4)}};
  for (auto const &test : cases) {
    ComPtr<IStream> stream;
    ASSERT_EQ(store_->CreateStream(test.name, STGM_READ | STGM_CREATE, 0, 0, stream.Place()), S_OK);
    EXPECT_EQ(testing::Read(stream, 64), test.bytes);
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
  struct {
    std::u16string name;
    HRESULT open;
    HRESULT createStream;
    HRESULT createStorage;
  } const cases[] = {{u"\u0100", STG_E_INVALIDNAME, STG_E_INVALIDNAME, STG_E_INVALIDNAME},
                     {u"a\u20AC", STG_E_INVALIDNAME, STG_E_INVALIDNAME, STG_E_INVALIDNAME},
                     {u"\xD800", STG_E_INVALIDNAME, STG_E_INVALIDNAME, STG_E_INVALIDNAME},
                     {letters(255), STG_E_FILENOTFOUND, S_OK, S_OK},
                     {letters(256), STG_E_FILENOTFOUND, S_OK, E_FAIL},
                     {letters(260), STG_E_FILENOTFOUND, STG_E_INVALIDNAME, E_FAIL},
                     {letters(10000), STG_E_FILENOTFOUND, STG_E_INVALIDNAME, E_FAIL}};
  for (auto const &test : cases) {
    char16_t const *const name = test.name.c_str();
    ComPtr<IStream> stream;
    ComPtr<IStorage> storage;
    EXPECT_EQ(OpenResult(store_, name), test.open) << test.name.size();
    EXPECT_EQ(store_->CreateStream(name, 0, 0, 0, stream.Place()), test.createStream)
        << test.name.size();
    EXPECT_EQ(store_->CreateStorage(name, 0, 0, 0, storage.Place()), test.createStorage)
        << test.name.size();
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
  STATSTG records[6] = {};
  ULONG fetched = 9;
  EXPECT_EQ(walk->Next(0, records, &fetched), S_OK) << "0 counts as 1";
  EXPECT_EQ(fetched, 1U);
  EXPECT_EQ(Told(&records[0]), "First 1 0");
  ComPtr<IEnumSTATSTG> clone;
  EXPECT_EQ(walk->Clone(clone.Place()), S_OK);
  EXPECT_EQ(walk->Next(6, records, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 3U);
  EXPECT_EQ(Told(&records[0]), "Second 1 0");
  EXPECT_EQ(Told(&records[1]), "bytes 2 5");
  EXPECT_EQ(Told(&records[2]), "text 4 2");
  EXPECT_EQ(walk->Next(1, records, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 0U);
  EXPECT_EQ(clone->Skip(2), S_OK);
  EXPECT_EQ(clone->Next(1, records, nullptr), S_OK);
  EXPECT_EQ(Told(&records[0]), "text 4 2");
  EXPECT_EQ(clone->Skip(0), S_OK);
  EXPECT_EQ(clone->Skip(1), S_FALSE);
  EXPECT_EQ(walk->Reset(), S_OK);
  EXPECT_EQ(walk->Skip(0x80000000), S_FALSE) << "past the end";
  EXPECT_EQ(walk->Next(1, nullptr, &fetched), E_INVALIDARG);
  EXPECT_EQ(walk->Clone(nullptr), E_INVALIDARG);
}

TEST_F(StorageTest, AWalkKeepsItsCountWhenTheKeyChanges) {
  for (char const *name : {"a", "b", "c"}) Bytes(name, "");
  auto const walk = Walk(store_);
  store_.Reset();
  Bytes("d", "");
  GetUserPrefs()->RemoveValue(static_cast<uint32_t>(IdOf("Store")), "a");
  GetUserPrefs()->RemoveValue(static_cast<uint32_t>(IdOf("Store")), "b");
  STATSTG records[3] = {};
  ULONG fetched = 0;
  EXPECT_EQ(walk->Next(3, records, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 2U);
  EXPECT_EQ(Told(&records[0]), "c 2 0");
  EXPECT_EQ(Told(&records[1]), "d 2 0");
  EXPECT_EQ(records[2].type, 0U);
  EXPECT_EQ(walk->Skip(1), S_OK) << "by the old count";
  ComPtr<IEnumSTATSTG> clone;
  EXPECT_EQ(walk->Clone(clone.Place()), S_OK);
  EXPECT_EQ(clone->Next(1, records, nullptr), S_FALSE) << "counted anew, it stands past the end";
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
  STATSTG record = {};
  EXPECT_EQ(Walk(deep)->Next(1, &record, nullptr), S_FALSE);
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
