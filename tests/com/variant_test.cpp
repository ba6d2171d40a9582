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
    if (type == VT_UNKNOWN || type == VT_DISPATCH) source.punkVal = nullptr;
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
      EXPECT_EQ(VariantClear(&source), S_OK);
    } else {
      EXPECT_EQ(BytesOf(copy), BytesOf(source)) << type;
    }
    EXPECT_EQ(VariantClear(&copy), S_OK);
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

// Of a type whose value is a pointer.
PROPVARIANT Of(VARTYPE type, void *pointer) {
  PROPVARIANT value = {};
  value.vt = type;
  value.byref = pointer;
  return value;
}

PROPVARIANT BlobOf(std::string const &text) {
  PROPVARIANT value = Of(VT_BLOB, nullptr);
  value.blob = {static_cast<ULONG>(text.size() + 1), reinterpret_cast<BYTE *>(TaskText(text))};
  return value;
}

CLIPDATA *ClipOf(std::string const &text) {
  auto *const clip = static_cast<CLIPDATA *>(CoTaskMemAlloc(sizeof(CLIPDATA)));
  *clip = {static_cast<ULONG>(4 + text.size() + 1), 1, reinterpret_cast<BYTE *>(TaskText(text))};
  return clip;
}

// Under the sanitizers; each is copied and cleared as an element, which is a value by itself too.
TEST(PropVariant, OwnsTextsBlocksAndObjects) {
  auto *const object = new Object;
  object->AddRef();
  object->AddRef();
  PROPVARIANT elements[] = {Of(VT_LPSTR, TaskText<char>("narrow")),
                            Of(VT_LPWSTR, TaskText<char16_t>(u"wide")),
                            Of(VT_CLSID, TaskText<char>("sixteen bytes!!")),
                            BlobOf("bytes"),
                            Of(VT_CF, ClipOf("clip")),
                            Of(VT_UNKNOWN, object)};
  PROPVARIANT source = {};
  source.vt = VT_VECTOR | VT_VARIANT;
  source.capropvar = {6, elements};
  PROPVARIANT copy = {};
  ASSERT_EQ(PropVariantCopy(&copy, &source), S_OK);
  EXPECT_EQ(FreePropVariantArray(6, elements), S_OK);
  EXPECT_EQ(elements[0].vt, VT_EMPTY);
  EXPECT_EQ(object->Count(), 2U);
  ASSERT_EQ(copy.capropvar.cElems, 6U);
  PROPVARIANT const *const copies = copy.capropvar.pElems;
  EXPECT_STREQ(copies[0].pszVal, "narrow");
  EXPECT_EQ(std::u16string(copies[1].pwszVal), u"wide");
  EXPECT_STREQ(reinterpret_cast<char *>(copies[2].puuid), "sixteen bytes!!");
  EXPECT_STREQ(reinterpret_cast<char *>(copies[3].blob.pBlobData), "bytes");
  EXPECT_STREQ(reinterpret_cast<char *>(copies[4].pclipdata->pClipData), "clip");
  EXPECT_EQ(copies[5].punkVal, object);
  EXPECT_EQ(PropVariantClear(&copy), S_OK);
  EXPECT_EQ(object->Release(), 0U);
}

TEST(PropVariant, CopiesVectorsOfPlainElements) {
  PROPVARIANT source = {};
  source.vt = VT_VECTOR | VT_UI2;
  source.caui = {2, reinterpret_cast<uint16_t *>(TaskText<char>("1234"))};
  PROPVARIANT copy = {};
  ASSERT_EQ(PropVariantCopy(&copy, &source), S_OK);
  EXPECT_EQ(PropVariantClear(&source), S_OK);
  EXPECT_EQ(copy.caui.pElems[1], 0x3433);
  EXPECT_EQ(PropVariantClear(&copy), S_OK);

  source.vt = VT_VECTOR | VT_BSTR;
  source.cabstr = {0x80000000, nullptr};
  ASSERT_EQ(PropVariantCopy(&copy, &source), S_OK);
  EXPECT_EQ(PropVariantClear(&copy), S_OK) << "there are none";
}

TEST(PropVariant, RefusesWhatItDoesNotKnow) {
  for (VARTYPE const type :
       {VARTYPE{15}, VT_VARIANT, VT_RECORD, VARTYPE{VT_ARRAY | VT_I4}, VARTYPE{VT_VECTOR | VT_BLOB},
        VARTYPE{VT_BYREF | VT_I4}, VARTYPE{0xFFFF}}) {
    PROPVARIANT value = {};
    value.vt = type;
    PROPVARIANT copy = {};
    EXPECT_EQ(PropVariantCopy(&copy, &value), STG_E_INVALIDPARAMETER);
    PROPVARIANT vector = {};
    vector.vt = VT_VECTOR | VT_VARIANT;
    vector.capropvar = {1, &value};
    EXPECT_EQ(PropVariantCopy(&copy, &vector), STG_E_INVALIDPARAMETER) << "as an element";
    EXPECT_EQ(PropVariantClear(&value), STG_E_INVALIDPARAMETER);
    EXPECT_EQ(value.vt, VT_EMPTY);
  }
  PropVariantInit(nullptr);
  VariantInit(nullptr);
  EXPECT_EQ(FreePropVariantArray(0, nullptr), S_OK);
  EXPECT_EQ(FreePropVariantArray(1, nullptr), E_INVALIDARG);
}

}  // namespace
}  // namespace zolt::testing
