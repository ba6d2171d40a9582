#include "zolt41/comserver/property_view.h"

#include <cstring>
#include <tuple>

#include "tests/comserver/com_fixture.h"
#include "zolt41/platform/com/com_alloc.h"

namespace zolt::testing {
namespace {

class PropertyTest : public ServerTest {
 protected:
  PropertyTest() { Reopen(); }

  void Reopen() {
    properties_.Reset();
    properties_ = Ask<IPropertyStorage>(Open("Props").get(), IID_IPropertyStorage);
  }
  static uint32_t Section() { return static_cast<uint32_t>(IdOf("Props")); }
  static void Store(char const *name, char const *text) {
    GetUserPrefs()->SetStr(Section(), name, text);
  }
  static std::string Stored(char const *name) {
    return testing::Read(GetUserPrefs(), name, 0, Section());
  }
  static PROPSPEC Named(char16_t const *name) {
    PROPSPEC spec = {};
    spec.lpwstr = const_cast<char16_t *>(name);
    return spec;
  }
  static PROPSPEC WithId(char const *name) {
    PROPSPEC spec = {};
    spec.ulKind = 7;
    spec.propid = static_cast<PROPID>(SectionNameHash(name));
    return spec;
  }
  static PROPVARIANT Variant(VARTYPE type, int32_t number = 0) {
    PROPVARIANT variant = {};
    variant.vt = type;
    variant.lVal = number;
    if (type == VT_BOOL) variant.boolVal = static_cast<VARIANT_BOOL>(number);
    return variant;
  }
  // Reads a property as that type; numbers as text.
  std::string Read(PROPSPEC const &spec, PROPVARIANT variant) {
    EXPECT_EQ(properties_->ReadMultiple(1, &spec, &variant), S_OK);
    std::string text = std::to_string(variant.vt) + ":";
    if (variant.vt == VT_I4) text += std::to_string(variant.lVal);
    if (variant.vt == VT_BOOL) text += std::to_string(variant.boolVal);
    if (variant.vt == VT_BSTR) {
      for (UINT i = 0; i < SysStringLen(variant.bstrVal); i++)
        text += variant.bstrVal[i] < 0x80 ? static_cast<char>(variant.bstrVal[i]) : '#';
      SysFreeString(variant.bstrVal);
    }
    return text;
  }
  std::string ReadText(PROPSPEC const &spec, char16_t const *other = nullptr) {
    PROPVARIANT variant = Variant(VT_BSTR);
    BSTR const text = SysAllocString(other);
    variant.bstrVal = text;
    std::string const read = Read(spec, variant);
    SysFreeString(text);  // which stayed ours
    return read;
  }
  void Write(char16_t const *name, PROPVARIANT const &variant) {
    PROPSPEC const spec = Named(name);
    EXPECT_EQ(properties_->WriteMultiple(1, &spec, &variant, 2), S_OK);
  }
  void WriteText(BSTR text) {
    PROPVARIANT variant = Variant(VT_BSTR);
    variant.bstrVal = text;
    Write(u"t", variant);
    SysFreeString(text);
  }

  ComPtr<IPropertyStorage> properties_;
};

TEST_F(PropertyTest, TheVariantDecidesHowAValueIsRead) {
  Store("n", "12");
  Store("t", "text");
  Store("y", "yes");
  std::tuple<char16_t const *, PROPVARIANT, char const *> const cases[] = {
      {u"n", Variant(VT_I4, 5), "3:12"},          {u"n", Variant(VT_BOOL, -1), "11:0"},
      {u"t", Variant(VT_I4, 7), "3:7"},           {u"t", Variant(VT_BOOL), "11:-1"},
      {u"y", Variant(VT_BOOL), "11:-1"},          {u"absent", Variant(VT_I4, -9), "3:-9"},
      {u"absent", Variant(VT_BOOL, -1), "11:-1"}, {u"absent", Variant(VT_BOOL, 1), "11:0"},
      {u"absent", Variant(VT_BOOL, 0), "11:0"}};
  for (auto const &[name, variant, read] : cases) EXPECT_EQ(Read(Named(name), variant), read);
  EXPECT_EQ(ReadText(Named(u"n")), "8:12");
  EXPECT_EQ(ReadText(Named(u"absent"), u"default"), "8:default");
  EXPECT_EQ(ReadText(Named(u"absent")), "8:");
  EXPECT_EQ(ReadText(Named(u"absent"), std::u16string(1000, u'd').c_str()),
            "8:" + std::string(255, 'd'));
}

TEST_F(PropertyTest, OtherTypesArePassedOver) {
  Store("n", "12");
  for (uint32_t type = 0; type < 0x10000; type++) {
    if (type == VT_I4 || type == VT_BSTR || type == VT_BOOL) continue;
    PROPVARIANT variant = {};
    std::memset(&variant, 0x5A, sizeof variant);  // pointers that must not be followed
    variant.vt = static_cast<VARTYPE>(type);
    PROPSPEC const spec = Named(u"n");
    ASSERT_EQ(properties_->WriteMultiple(1, &spec, &variant, 0), S_OK);
    ASSERT_EQ(properties_->ReadMultiple(1, &spec, &variant), S_OK);
    ASSERT_EQ(variant.vt, VT_EMPTY) << type;
  }
  EXPECT_EQ(Stored("n"), "12");
}

TEST_F(PropertyTest, WritesTextsOfTheLocalCodePage) {
  Write(u"n", Variant(VT_I4, -2147483647 - 1));
  EXPECT_EQ(Stored("n"), "-2147483648");
  Write(u"b", Variant(VT_BOOL, -1));
  EXPECT_EQ(Stored("b"), "Yes");
  EXPECT_EQ(ReadText(Named(u"b")), "8:Yes");
  Write(u"b", Variant(VT_BOOL, 1));
  EXPECT_EQ(Stored("b"), "No") << "only -1 is true";
  WriteText(SysAllocString(u"\u20ACuro \u4E00"));
  EXPECT_EQ(Stored("t"), "\x80uro ?");
  EXPECT_EQ(ReadText(Named(u"t")), "8:#uro ?");
  WriteText(SysAllocStringLen(u"cut\0off", 7));
  EXPECT_EQ(Stored("t"), "cut");
  WriteText(nullptr);
  EXPECT_EQ(Stored("t"), "");
  WriteText(SysAllocString(std::u16string(255, u'x').c_str()));
  EXPECT_EQ(ReadText(Named(u"t")), "8:" + std::string(255, 'x'));
  WriteText(SysAllocString(std::u16string(256, u'x').c_str()));
  EXPECT_EQ(ReadText(Named(u"t"), u"too long"), "8:too long");
}

TEST_F(PropertyTest, IdsAreThoseOfTheMomentOfOpening) {
  Store("old", "1");
  Reopen();
  Write(u"new", Variant(VT_I4, 2));
  EXPECT_EQ(Read(WithId("OLD"), Variant(VT_I4)), "3:1");
  EXPECT_EQ(Read(Named(u"new"), Variant(VT_I4)), "3:2");
  EXPECT_EQ(Read(WithId("new"), Variant(VT_I4, 9)), "3:9") << "passed over, as it came";
  PROPID const ids[] = {WithId("new").propid, WithId("old").propid};
  LPOLESTR names[2] = {reinterpret_cast<LPOLESTR>(1), reinterpret_cast<LPOLESTR>(1)};
  EXPECT_EQ(properties_->ReadPropertyNames(1, ids, names), S_FALSE);
  EXPECT_EQ(properties_->ReadPropertyNames(2, ids, names), S_OK);
  EXPECT_EQ(names[0], nullptr);
  EXPECT_EQ(std::u16string(names[1]), u"old");
  CoTaskMemFree(names[1]);

  PROPSPEC const gone[] = {WithId("old"), Named(u"never there"), Named(nullptr), Named(u"new")};
  EXPECT_EQ(properties_->DeleteMultiple(4, gone), S_OK);
  EXPECT_EQ(Stored("old") + Stored("new"), "--");
  EXPECT_EQ(Read(WithId("old"), Variant(VT_I4, 9)), "3:9");
  EXPECT_EQ(properties_->ReadPropertyNames(2, ids, names), S_OK) << "the name stays";
  CoTaskMemFree(names[1]);
}

TEST_F(PropertyTest, AnswersNullAndNothing) {
  PROPSPEC spec = Named(u"n");
  PROPVARIANT variant = Variant(VT_I4, 3);
  PROPID const id = 1;
  LPOLESTR name = nullptr;
  HRESULT const pointers[] = {properties_->ReadMultiple(1, nullptr, &variant),
                              properties_->ReadMultiple(0, &spec, nullptr),
                              properties_->WriteMultiple(1, nullptr, &variant, 0),
                              properties_->WriteMultiple(0x80000000, &spec, nullptr, 0),
                              properties_->DeleteMultiple(0x80000000, nullptr),
                              properties_->ReadPropertyNames(0x80000000, &id, nullptr),
                              properties_->ReadPropertyNames(1, nullptr, &name),
                              properties_->Enum(nullptr),
                              properties_->Stat(nullptr)};
  for (HRESULT const result : pointers) EXPECT_EQ(result, STG_E_INVALIDPOINTER);
  EXPECT_EQ(properties_->ReadMultiple(0, &spec, &variant), S_OK);
  EXPECT_EQ(properties_->ReadPropertyNames(0, &id, &name), S_FALSE);
  EXPECT_EQ(Read(Named(nullptr), variant), "3:3");
  spec = Named(u"wide\u0100");
  EXPECT_EQ(properties_->ReadMultiple(1, &spec, &variant), STG_E_INVALIDNAME);
  EXPECT_EQ(properties_->DeleteMultiple(1, &spec), STG_E_INVALIDNAME);
}

TEST_F(PropertyTest, EnumListsValuesOfEveryType) {
  Store("text", "t");
  uint8_t const byte = 0;
  RegSetValueExA(SectionKey(IdOf("Props"), 0), "B\xE9", 0, REG_BINARY, &byte, 1);
  ComPtr<IEnumSTATPROPSTG> walk;
  ASSERT_EQ(properties_->Enum(walk.Place()), S_OK);
  STATPROPSTG records[3] = {};
  ULONG fetched = 9;
  EXPECT_EQ(walk->Next(3, records, &fetched), S_FALSE);
  ASSERT_EQ(fetched, 2U);
  EXPECT_EQ(std::u16string(records[0].lpwstrName), u"text");
  EXPECT_EQ(std::u16string(records[1].lpwstrName), u"B\u00E9");
  EXPECT_EQ(records[1].propid, static_cast<PROPID>(SectionNameHash("B\xE9")));
  EXPECT_EQ(records[1].vt, VT_EMPTY);
  for (ULONG i = 0; i < fetched; i++) CoTaskMemFree(records[i].lpwstrName);
}

TEST_F(PropertyTest, AValueNameOf260BytesMakesASectionUnopenable) {
  Store(std::string(259, 'n').c_str(), "v");
  Reopen();
  EXPECT_EQ(Read(WithId(std::string(259, 'n').c_str()), Variant(VT_BOOL)), "11:0");
  Store(std::string(260, 'm').c_str(), "v");
  properties_.Reset();
  EXPECT_EQ(OpenResult("Props"), E_FAIL);
}

}  // namespace
}  // namespace zolt::testing
