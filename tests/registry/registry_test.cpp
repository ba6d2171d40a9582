#include "zolt41/platform/registry/registry.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/support/key.h"
#include "tests/support/temp_home.h"
#include "zolt41/platform/registry/hive_status.h"

namespace zolt::testing {
namespace {

using namespace std::string_literals;

class RegistryTest : public ::testing::TestWithParam<HKEY> {
 protected:
  TempHome home_;
};

INSTANTIATE_TEST_SUITE_P(BothTrees, RegistryTest,
                         ::testing::Values(HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE));

TEST_P(RegistryTest, KeepsEveryNameAndValueExactly) {
  Key const key(GetParam());
  std::vector<std::string> names = {"", "Volume", "a.b\\c:d\ne%s", "\x80\x81\xE9\xFF", " blank "};
  for (size_t const size : {259U, 260U, 10000U, 16383U}) names.emplace_back(size, 'n');
  std::vector<std::string> values = {"", "70\0"s, "a\0b\0"s};
  for (size_t const size : {256U, 257U, 1023U, 1024U, 1000000U}) values.emplace_back(size, '\xFF');
  for (std::string const &name : names) {
    for (std::string const &value : values) {
      ASSERT_EQ(key.SetBytes(name, 77, value), ERROR_SUCCESS) << name.size();
      EXPECT_EQ(key.GetBytes(name), value) << name.size() << " " << value.size();
      EXPECT_EQ(key.GetBytes(name), value) << "from the cache";
    }
  }
  EXPECT_EQ(key.SetBytes(std::string(16384, 'o'), 1, "x"), ERROR_INVALID_PARAMETER);
  EXPECT_EQ(key.ValueNames().size(), 6u) << "a walk into 260 bytes ends before a longer name";
}

TEST_P(RegistryTest, NamesCompareWithoutAsciiCaseAndKeepTheirFirstSpelling) {
  Key const key(GetParam());
  ASSERT_EQ(key.Set("Volume", "1"), ERROR_SUCCESS);
  ASSERT_EQ(key.Set("VOLUME", "2"), ERROR_SUCCESS);
  EXPECT_EQ(key.Get("volume"), "2");
  ASSERT_EQ(key.Set("\xE9", "small"), ERROR_SUCCESS);
  EXPECT_EQ(key.Get("\xC9"), "!2") << "letters beyond ASCII are told apart";
  EXPECT_EQ(key.ValueNames(), (std::vector<std::string>{"Volume", "\xE9"}));
  Key const same(GetParam(), "TEST");
  EXPECT_EQ(same.Get("vOLUME"), "2");
}

TEST_P(RegistryTest, TextIsReadInOneStep) {
  Key const key(GetParam());
  std::tuple<uint32_t, std::string, int32_t, uint32_t> const cases[] = {
      {1, std::string(255, 'x') + '\0', ERROR_SUCCESS, 256},
      {1, std::string(256, 'x') + '\0', ERROR_MORE_DATA, 257},
      {1, std::string(255, 'x'), ERROR_SUCCESS, 256},
      {1, std::string(256, 'x'), ERROR_MORE_DATA, 257},
      {1, "", ERROR_SUCCESS, 1},
      {4, "\1\0\0\0"s, ERROR_UNSUPPORTED_TYPE, 0}};
  for (auto const &[type, stored, result, expected] : cases) {
    ASSERT_EQ(key.SetBytes("v", type, stored), ERROR_SUCCESS);
    for (int from = 0; from < 2; from++) {
      std::string buffer(300, '#');
      uint32_t size = 256;
      EXPECT_EQ(ZOLTQueryText(key.handle, "v", buffer.data(), &size), result) << stored.size();
      EXPECT_TRUE(size == expected || result == ERROR_UNSUPPORTED_TYPE) << size;
      EXPECT_EQ(buffer.find('\0'), result == ERROR_SUCCESS ? size - 1 : std::string::npos);
    }
  }
  EXPECT_EQ(LastFailure(), 0) << "none of these is a failure of the store";
}

TEST_P(RegistryTest, QueryGivesTypeAndSizeAndRefusesASmallBuffer) {
  Key const key(GetParam());
  ASSERT_EQ(key.SetBytes("v", 5, "12345678"), ERROR_SUCCESS);
  uint32_t type = 0;
  uint32_t size = 0;
  EXPECT_EQ(RegQueryValueExA(key.handle, "v", nullptr, &type, nullptr, &size), ERROR_SUCCESS);
  EXPECT_EQ(type, 5u);
  EXPECT_EQ(size, 8u);
  std::string buffer = "########";
  size = 7;
  auto *data = reinterpret_cast<uint8_t *>(buffer.data());
  EXPECT_EQ(RegQueryValueExA(key.handle, "v", nullptr, nullptr, data, &size), ERROR_MORE_DATA);
  EXPECT_EQ(size, 8u);
  EXPECT_EQ(buffer, "########");
  EXPECT_EQ(RegQueryValueExA(key.handle, "v", nullptr, nullptr, data, nullptr),
            ERROR_INVALID_PARAMETER);
}

TEST_P(RegistryTest, WalksInTheOrderOfFirstWriting) {
  Key const key(GetParam());
  for (char const *name : {"b", "a", "c", "A", "d"}) key.Set(name, "x");
  EXPECT_EQ(key.ValueNames(), (std::vector<std::string>{"b", "a", "c", "d"}));
  RegDeleteValueA(key.handle, "B");
  EXPECT_EQ(key.ValueNames(), (std::vector<std::string>{"a", "c", "d"})) << "positions shift";
  key.Set("b", "again");
  EXPECT_EQ(key.ValueNames().back(), "b");
  char name[1];
  uint32_t length = 1;
  EXPECT_EQ(RegEnumValueA(key.handle, 0, name, &length, nullptr, nullptr, nullptr, nullptr),
            ERROR_MORE_DATA);
  EXPECT_EQ(RegDeleteValueA(key.handle, "none"), ERROR_FILE_NOT_FOUND);
}

TEST_P(RegistryTest, WalksAcrossStretchesOfNamesAndCountsThem) {
  Key const key(GetParam());
  // Subkeys and the length of the longest one's name, and so of values.
  using Counts = std::array<uint32_t, 4>;
  auto const counts = [&key] {
    Counts c = {9, 9, 9, 9};
    EXPECT_EQ(RegQueryInfoKeyA(key.handle, nullptr, nullptr, nullptr, &c[0], &c[1], nullptr, &c[2],
                               &c[3], nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    return c;
  };
  EXPECT_EQ(counts(), (Counts{0, 0, 0, 0}));
  HiveTransaction transaction(GetParam());
  ASSERT_EQ(transaction.Begin(), ERROR_SUCCESS);
  std::vector<std::string> names;
  for (int i = 0; i < 20000; i++) key.Set(names.emplace_back("v" + std::to_string(i)), "x");
  key.Set(names.emplace_back(""), "unnamed");
  key.Set(std::string(300, '\xE9'), "");
  EXPECT_EQ(counts(), (Counts{0, 0, 20002, 300})) << "more than one stretch, in a transaction";
  ASSERT_EQ(transaction.Commit(), ERROR_SUCCESS);
  EXPECT_EQ(key.ValueNames(), names) << "up to one of more than 260 bytes";
  Key const below(key.handle, "B\xFCro");
  EXPECT_EQ(counts(), (Counts{1, 4, 20002, 300}));
  EXPECT_EQ(RegQueryInfoKeyA(12345, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                             nullptr, nullptr, nullptr, nullptr),
            ERROR_INVALID_HANDLE);
}

TEST_P(RegistryTest, WhatATransactionWroteLastIsWhatIsRead) {
  Key const key(GetParam());
  std::string const large(2000, 'L');
  HiveTransaction transaction(GetParam());
  ASSERT_EQ(transaction.Begin(), ERROR_SUCCESS);
  for (char const *name : {"Spelled", "gone", "back"}) key.Set(name, "1");
  key.Set("SPELLED", "2");
  key.Set("grown", "small");
  key.SetBytes("grown", 3, large);
  key.Set("shrunk", large);
  key.Set("shrunk", "small");
  for (char const *name : {"GONE", "back"}) RegDeleteValueA(key.handle, name);
  key.Set("back", "2");
  EXPECT_EQ(key.ValueNames(), (std::vector<std::string>{"Spelled", "grown", "shrunk", "back"}));
  ASSERT_EQ(transaction.Commit(), ERROR_SUCCESS);
  EXPECT_EQ(key.GetAll({"Spelled", "spelled", "shrunk", "gone", "back"}), "2 2 small !2 2");
  EXPECT_EQ(key.GetBytes("grown"), large);
}

TEST_P(RegistryTest, KeysComeAndGo) {
  Key const key(GetParam());
  HKEY child = 0;
  uint32_t disposition = 0;
  auto const create = [&](uint32_t access = KEY_READ | KEY_WRITE) {
    return RegCreateKeyExA(key.handle, "Child\\with:signs", 0, nullptr, 0, access, nullptr, &child,
                           &disposition);
  };
  auto const write = [](HKEY to) {
    return RegSetValueExA(to, "v", 0, 1, reinterpret_cast<uint8_t const *>("1"), 2);
  };
  char text[16];
  uint32_t size = sizeof text;
  ASSERT_EQ(create(), ERROR_SUCCESS);
  EXPECT_EQ(disposition, 1u);
  HKEY grandchild = 0;
  ASSERT_EQ(RegCreateKeyA(child, "g", &grandchild), ERROR_SUCCESS);
  ASSERT_EQ(write(child), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyA(key.handle, "Child\\with:signs"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(RegDeleteKeyA(child, "G"), ERROR_SUCCESS);
  EXPECT_EQ(RegDeleteKeyA(key.handle, "Child\\with:signs"), ERROR_SUCCESS);
  EXPECT_EQ(ZOLTQueryText(child, "v", text, &size), ERROR_FILE_NOT_FOUND);
  HKEY const old = child;
  ASSERT_EQ(create(), ERROR_SUCCESS);
  EXPECT_EQ(disposition, 1u);
  EXPECT_EQ(write(old), ERROR_KEY_DELETED);
  EXPECT_EQ(ZOLTQueryText(child, "v", text, &size), ERROR_FILE_NOT_FOUND);
  ASSERT_EQ(create(KEY_READ), ERROR_SUCCESS);
  EXPECT_EQ(disposition, 2u);
  EXPECT_EQ(write(child), ERROR_ACCESS_DENIED);
}

TEST_P(RegistryTest, OpensPathsAndNamesWithBackslashes) {
  Key const key(GetParam());
  Key const a(key.handle, "a");
  Key const c(a.handle, "c");
  HKEY found = 0;
  EXPECT_EQ(RegOpenKeyA(GetParam(), "test\\A\\C", &found), ERROR_SUCCESS);
  EXPECT_EQ(RegOpenKeyA(GetParam(), "test\\none", &found), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(OpenOneKey(GetParam(), "test\\a", KEY_READ, &found), ERROR_FILE_NOT_FOUND);
  Key const odd(key.handle, "a\\b");
  EXPECT_EQ(RegOpenKeyA(GetParam(), "test\\A\\B", &found), ERROR_FILE_NOT_FOUND);
  EXPECT_EQ(RegOpenKeyA(key.handle, "a\\b", &found), ERROR_SUCCESS);
  EXPECT_EQ(OpenOneKey(key.handle, "A\\B", KEY_READ, &found), ERROR_SUCCESS);
  EXPECT_EQ(RegSetValueExA(found, "v", 0, REG_SZ, nullptr, 0), ERROR_ACCESS_DENIED) << "to read";
  std::string const longest(255, 'k');
  EXPECT_EQ(RegCreateKeyA(key.handle, longest.c_str(), &found), ERROR_SUCCESS);
  EXPECT_EQ(RegCreateKeyA(key.handle, (longest + "k").c_str(), &found), ERROR_INVALID_PARAMETER);
}

TEST_P(RegistryTest, AClosedHandleIsNoticed) {
  HKEY first = 0;
  ASSERT_EQ(RegCreateKeyA(GetParam(), "First", &first), ERROR_SUCCESS);
  ASSERT_EQ(RegCloseKey(first), ERROR_SUCCESS);
  HKEY second = 0;
  ASSERT_EQ(RegCreateKeyA(GetParam(), "Second", &second), ERROR_SUCCESS);
  EXPECT_NE(first, second);
  uint8_t const one[] = {'1', 0};
  for (HKEY const bad : {first, HKEY{0}, HKEY{1}, HKEY{0x80000007}, ~HKEY{0}}) {
    EXPECT_EQ(RegSetValueExA(bad, "v", 0, 1, one, 2), ERROR_INVALID_HANDLE);
    EXPECT_EQ(RegCloseKey(bad), ERROR_INVALID_HANDLE);
  }
}

TEST_P(RegistryTest, ATransactionIsAllOrNothing) {
  Key const key(GetParam());
  Key const other(GetParam(), "Other");
  key.Set("kept", "1");
  {
    HiveTransaction lost(GetParam());
    ASSERT_EQ(lost.Begin(), ERROR_SUCCESS);
    EXPECT_EQ(HiveTransaction(GetParam()).Begin(), ERROR_INVALID_PARAMETER);
    key.Set("kept", "2");
    other.Set("new", "2");
    RegDeleteKeyA(GetParam(), "Other");
    EXPECT_EQ(key.Get("kept") + other.Get("new"), "2!2") << "it sees its own changes";
  }
  EXPECT_EQ(key.Get("kept") + other.Get("new"), "1!2");
  EXPECT_EQ(other.Set("new", "3"), ERROR_SUCCESS) << "the key is still there";
}

}  // namespace
}  // namespace zolt::testing
