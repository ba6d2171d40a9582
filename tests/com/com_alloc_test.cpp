#include "zolt41/platform/com/com_alloc.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

namespace zolt::testing {
namespace {

constexpr GUID kId = {0x5ED2DD58, 0x7638, 0x11D3, {0x8F, 0xD3, 0, 0xA0, 0x24, 0x59, 0xFA, 0x0F}};
constexpr char16_t kIdText[] = u"{5ED2DD58-7638-11D3-8FD3-00A02459FA0F}";

uint32_t PrefixOf(BSTR text) {
  uint32_t prefix = 0;
  std::memcpy(&prefix, reinterpret_cast<char *>(text) - 4, 4);
  return prefix;
}

TEST(Bstr, HasItsLengthInBytesBeforeItAndANulBehind) {
  BSTR const text = SysAllocStringLen(u"a\0b", 3);
  EXPECT_EQ(PrefixOf(text), 6U);
  EXPECT_EQ(SysStringLen(text), 3U);
  EXPECT_EQ(std::u16string(text, 4), std::u16string(u"a\0b\0", 4));
  SysFreeString(text);

  BSTR const odd = SysAllocStringByteLen("abc", 3);
  EXPECT_EQ(SysStringByteLen(odd), 3U);
  EXPECT_EQ(SysStringLen(odd), 1U);
  EXPECT_EQ(std::memcmp(odd, "abc\0\0\0", 6), 0) << "a whole character ends it";
  SysFreeString(odd);

  EXPECT_EQ(SysStringLen(nullptr), 0U);
  EXPECT_EQ(SysAllocString(nullptr), nullptr);
  EXPECT_EQ(SysAllocStringLen(nullptr, 0x80000000), nullptr) << "the length in bytes would wrap";
  SysFreeString(nullptr);
}

TEST(Bstr, IsReplacedByATextOfItsOwn) {
  BSTR text = SysAllocString(u"first");
  EXPECT_EQ(SysReAllocStringLen(&text, text + 1, 3), 1);
  EXPECT_EQ(std::u16string(text), u"irs");
  EXPECT_EQ(SysReAllocStringLen(&text, u"x", 0x80000000), 0);
  EXPECT_EQ(std::u16string(text), u"irs") << "kept without memory";
  EXPECT_EQ(SysReAllocString(&text, nullptr), 1);
  EXPECT_EQ(text, nullptr);
  EXPECT_EQ(SysReAllocString(nullptr, u"x"), 0);
}

TEST(GuidText, IsInBracesWithCapitalDigits) {
  LPOLESTR text = nullptr;
  ASSERT_EQ(StringFromCLSID(kId, &text), S_OK);
  EXPECT_EQ(std::u16string(text), kIdText);
  EXPECT_EQ(StringFromGUID2(kId, text, 39), 39);
  EXPECT_EQ(StringFromGUID2(kId, text, 38), 0);
  CoTaskMemFree(text);
  EXPECT_EQ(StringFromCLSID(kId, nullptr), E_POINTER);
}

TEST(GuidText, IsReadOnlyWhole) {
  std::tuple<char16_t const *, HRESULT, GUID> const cases[] = {
      {kIdText, S_OK, kId},
      {u"{5ed2dd58-7638-11d3-8fd3-00a02459fa0f}", S_OK, kId},
      {nullptr, S_OK, GUID_NULL},
      {u"", CO_E_CLASSSTRING, GUID_NULL},
      {u"{5ED2DD58-7638-11D3-8FD3-00A02459FA0F}x", CO_E_CLASSSTRING, GUID_NULL},
      {u"{5ED2DD58-7638-11D3-8FD3-00A02459FA0F ", CO_E_CLASSSTRING, GUID_NULL},
      {u"{5ED2DD58-7638-11D3-8FD3-00A02459FA0G}", CO_E_CLASSSTRING, GUID_NULL},
      {u"5ED2DD58-7638-11D3-8FD3-00A02459FA0F", CO_E_CLASSSTRING, GUID_NULL}};
  for (auto const &[text, result, expected] : cases) {
    GUID id = kId;
    EXPECT_EQ(CLSIDFromString(text, &id), result);
    EXPECT_EQ(id, expected);
  }
}

}  // namespace
}  // namespace zolt::testing
