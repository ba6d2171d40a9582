#include "zolt41/platform/com/variant.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "zolt41/platform/com/com_alloc.h"
#include "zolt41/platform/com/ole_storage.h"
#include "zolt41/platform/com/ref_counted.h"

namespace zolt::testing {
namespace {

class Object final : public RefCounted<IUnknown, IID_IUnknown> {
 public:
  ULONG Count() {
    AddRef();
    return Release();
  }
};

template <typename Character>
Character *TaskText(std::basic_string<Character> const &text) {
  auto *const copy = CoTaskMemAlloc((text.size() + 1) * sizeof(Character));
  std::memcpy(copy, text.c_str(), (text.size() + 1) * sizeof(Character));
  return static_cast<Character *>(copy);
}

std::string BytesOf(VARIANT const &variant) {
  return {reinterpret_cast<char const *>(&variant), sizeof variant};
}

TEST(Variant, EveryTypeIsCopiedWhole) {
  for (uint32_t type = 0; type < 0x10000; type++) {
    VARIANT source = {};
    std::memset(&source, 0x5A, sizeof source);
    source.vt = static_cast<VARTYPE>(type);
    bool const object = type == VT_UNKNOWN || type == VT_DISPATCH;
    if (object) source.punkVal = nullptr;
    if (type == VT_BSTR) source.bstrVal = SysAllocStringLen(u"a\0b", 3);
    uint32_t const base = type & ~uint32_t{VT_BYREF};
    bool const simple = base <= 23 && base != VT_VARIANT && base != 15;
    bool const pointer = (type & VT_BYREF) != 0 && base >= VT_I2 && base <= 23 && base != 15;
    bool const known = type == base ? simple : pointer;
    VARIANT copy = {};
    ASSERT_EQ(VariantCopy(&copy, &source), known ? S_OK : DISP_E_BADVARTYPE) << type;
    if (!known) continue;
    if (type == VT_BSTR) {
      EXPECT_NE(copy.bstrVal, source.bstrVal);
      EXPECT_EQ(std::u16string(copy.bstrVal, SysStringLen(copy.bstrVal)),
                std::u16string(u"a\0b", 3));
      EXPECT_EQ(VariantClear(&copy), S_OK);
      EXPECT_EQ(VariantClear(&source), S_OK);
    } else {
      EXPECT_EQ(BytesOf(copy), BytesOf(source)) << type;
      EXPECT_EQ(VariantClear(&copy), S_OK);
    }
    EXPECT_EQ(copy.vt, VT_EMPTY);
  }
}

TEST(Variant, CountsItsObject) {
  auto *const object = new Object;
  object->AddRef();
  VARIANT first = {};
  first.vt = VT_UNKNOWN;
  first.punkVal = object;
  VARIANT second = {};
  EXPECT_EQ(VariantCopy(&second, &first), S_OK);
  EXPECT_EQ(object->Count(), 2U);
  EXPECT_EQ(VariantCopy(&second, &second), S_OK);
  EXPECT_EQ(object->Count(), 2U);
  VARIANT number = {};
  number.vt = VT_I4;
  EXPECT_EQ(VariantCopy(&second, &number), S_OK) << "the target is cleared first";
  EXPECT_EQ(object->Count(), 1U);
  VARIANT wrong = {};
  wrong.vt = VT_LPSTR;
  EXPECT_EQ(VariantCopy(&first, &wrong), DISP_E_BADVARTYPE);
  EXPECT_EQ(object->Count(), 1U) << "and stays as it is if the source is refused";
  EXPECT_EQ(VariantCopy(nullptr, &first), E_INVALIDARG);
  EXPECT_EQ(VariantCopy(&first, nullptr), E_INVALIDARG);
  EXPECT_EQ(VariantClear(nullptr), E_INVALIDARG);
  EXPECT_EQ(VariantClear(&first), S_OK);
}

// Copies and clears both, under the sanitizers; `check` looks at the copy.
template <typename Check>
void CopyAndClear(PROPVARIANT *source, Check check) {
  PROPVARIANT copy = {};
  ASSERT_EQ(PropVariantCopy(&copy, source), S_OK);
  EXPECT_EQ(copy.vt, source->vt);
  EXPECT_EQ(PropVariantClear(source), S_OK);
  check(copy);
  EXPECT_EQ(PropVariantClear(&copy), S_OK);
  EXPECT_EQ(copy.vt, VT_EMPTY);
}

TEST(PropVariant, OwnsTextsBlocksAndObjects) {
  PROPVARIANT value = {};
  value.vt = VT_LPSTR;
  value.pszVal = TaskText<char>("narrow");
  CopyAndClear(&value, [](PROPVARIANT const &copy) { EXPECT_STREQ(copy.pszVal, "narrow"); });

  value.vt = VT_LPWSTR;
  value.pwszVal = TaskText<char16_t>(u"wide");
  CopyAndClear(&value,
               [](PROPVARIANT const &copy) { EXPECT_EQ(std::u16string(copy.pwszVal), u"wide"); });

  value.vt = VT_CLSID;
  value.puuid = static_cast<CLSID *>(CoTaskMemAlloc(sizeof(CLSID)));
  *value.puuid = IID_IStream;
  CopyAndClear(&value, [](PROPVARIANT const &copy) { EXPECT_EQ(*copy.puuid, IID_IStream); });

  value.vt = VT_BLOB;
  value.blob = {6, reinterpret_cast<BYTE *>(TaskText<char>("bytes"))};
  CopyAndClear(&value, [](PROPVARIANT const &copy) {
    EXPECT_STREQ(reinterpret_cast<char *>(copy.blob.pBlobData), "bytes");
  });

  value.vt = VT_CF;
  value.pclipdata = static_cast<CLIPDATA *>(CoTaskMemAlloc(sizeof(CLIPDATA)));
  *value.pclipdata = {4 + 5, 1, reinterpret_cast<BYTE *>(TaskText<char>("clip"))};
  CopyAndClear(&value, [](PROPVARIANT const &copy) {
    EXPECT_STREQ(reinterpret_cast<char *>(copy.pclipdata->pClipData), "clip");
  });

  auto *const object = new Object;
  object->AddRef();
  object->AddRef();
  value.vt = VT_UNKNOWN;
  value.punkVal = object;
  CopyAndClear(&value, [&](PROPVARIANT const &) { EXPECT_EQ(object->Count(), 2U); });
  EXPECT_EQ(object->Release(), 0U);
}

TEST(PropVariant, OwnsTheElementsOfAVector) {
  PROPVARIANT value = {};
  value.vt = VT_VECTOR | VT_VARIANT;
  value.capropvar = {2, static_cast<PROPVARIANT *>(CoTaskMemAlloc(2 * sizeof(PROPVARIANT)))};
  PROPVARIANT inner = {};
  inner.vt = VT_LPWSTR;
  inner.pwszVal = TaskText<char16_t>(u"inner");
  value.capropvar.pElems[0] = inner;
  inner.vt = VT_I4;
  inner.lVal = 7;
  value.capropvar.pElems[1] = inner;
  CopyAndClear(&value, [](PROPVARIANT const &copy) {
    EXPECT_EQ(std::u16string(copy.capropvar.pElems[0].pwszVal), u"inner");
    EXPECT_EQ(copy.capropvar.pElems[1].lVal, 7);
  });

  value.vt = VT_VECTOR | VT_UI2;
  value.caui = {2, reinterpret_cast<uint16_t *>(TaskText<char>("1234"))};
  CopyAndClear(&value, [](PROPVARIANT const &copy) { EXPECT_EQ(copy.caui.pElems[1], 0x3433); });

  value.vt = VT_VECTOR | VT_BSTR;
  value.cabstr = {0x80000000, nullptr};
  CopyAndClear(&value, [](PROPVARIANT const &copy) { EXPECT_EQ(copy.cabstr.pElems, nullptr); });
}

TEST(PropVariant, RefusesWhatItDoesNotKnow) {
  for (VARTYPE const type :
       {VARTYPE{15}, VT_VARIANT, VT_RECORD, VARTYPE{VT_ARRAY | VT_I4}, VARTYPE{VT_VECTOR | VT_BLOB},
        VARTYPE{VT_BYREF | VT_I4}, VARTYPE{0xFFFF}}) {
    PROPVARIANT value = {};
    value.vt = type;
    PROPVARIANT copy = {};
    EXPECT_EQ(PropVariantCopy(&copy, &value), STG_E_INVALIDPARAMETER);
    EXPECT_EQ(PropVariantClear(&value), STG_E_INVALIDPARAMETER);
    EXPECT_EQ(value.vt, VT_EMPTY);
  }
  EXPECT_EQ(FreePropVariantArray(0, nullptr), S_OK);
  EXPECT_EQ(FreePropVariantArray(1, nullptr), E_INVALIDARG);
}

}  // namespace
}  // namespace zolt::testing
