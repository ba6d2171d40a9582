#include "zolt41/platform/registry/value_cache.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace zolt {
namespace {

using Result = ValueCache::Result;

class ValueCacheTest : public ::testing::Test {
 protected:
  StampSource Source() const { return {words_.data(), kWordMask, &epoch_}; }

  void Fill(std::string const &name, std::string const &data, uint32_t type = 1,
            uint32_t word = 7) {
    cache_.Fill({0, 5, name}, word, Source().Read(word), type, data.data(),
                static_cast<uint32_t>(data.size()));
  }

  Result Find(std::string const &name, std::string *data = nullptr, uint32_t hive = 0,
              int64_t key = 5) {
    std::array<char, 600> buffer{};
    uint32_t type = ValueCache::kAnyType;
    uint32_t size = sizeof buffer;
    Result const result = cache_.Find({hive, key, name}, Source(), &type, buffer.data(), &size);
    if (result == Result::hit && data != nullptr) data->assign(buffer.data(), size);
    return result;
  }

  std::array<std::atomic<uint64_t>, kValueWords + 1> words_{};
  std::atomic<uint64_t> epoch_{0};
  ValueCache cache_;
};

TEST_F(ValueCacheTest, GivesBackEveryLengthOfNameAndData) {
  for (size_t const name : {0u, 1u, 2u, 3u, 4u, 7u, 8u, 9u, 15u, 16u, 31u, 64u, 255u, 259u}) {
    for (size_t const size : {0u, 1u, 3u, 7u, 8u, 9u, 63u, 64u, 255u, 511u, 512u}) {
      std::string const text(name, static_cast<char>('a' + size % 26));
      std::string data(size, '\0');
      for (size_t i = 0; i < size; i++) data[i] = static_cast<char>(i * 7 + name);
      Fill(text, data);
      std::string found = "?";
      ASSERT_EQ(Find(text, &found), Result::hit) << name << " " << size;
      EXPECT_EQ(found, data);
    }
  }
}

TEST_F(ValueCacheTest, KeepsNothingThatIsTooLong) {
  Fill(std::string(260, 'n'), "x");
  EXPECT_EQ(Find(std::string(260, 'n')), Result::miss);
  Fill("grows", "small");
  Fill("grows", std::string(513, 'x'));
  EXPECT_EQ(Find("grows"), Result::miss) << "the small value is out of date";
}

TEST_F(ValueCacheTest, ForgetsWhenAWordMoves) {
  Fill("a", "1", 1, 10);
  Fill("b", "2", 1, 11);
  words_[10] = 1;
  EXPECT_EQ(Find("a"), Result::miss);
  EXPECT_EQ(Find("b"), Result::hit);
  words_[10] = 2;
  EXPECT_EQ(Find("a"), Result::miss) << "even again, but changed";
  epoch_ = 2;
  EXPECT_EQ(Find("b"), Result::miss);
}

TEST_F(ValueCacheTest, RemembersAbsenceUntilFlushed) {
  cache_.Fill({0, 5, "none"}, 3, Source().Read(3), 0, "", ValueCache::kAbsent);
  EXPECT_EQ(Find("none"), Result::absent);
  Fill("none", "now");
  EXPECT_EQ(Find("none"), Result::hit);
  cache_.Flush(1);
  EXPECT_EQ(Find("none"), Result::hit) << "another hive";
  cache_.Flush(0);
  EXPECT_EQ(Find("none"), Result::miss);
}

TEST_F(ValueCacheTest, CopiesTextOnlyIfItFitsWithItsEnd) {
  struct Case {
    std::string stored;
    uint32_t room;
    Result result;
    uint32_t size;
    std::string data;
  };
  using namespace std::string_literals;
  for (Case const &c :
       {Case{"abc\0"s, 4, Result::hit, 4, "abc\0"s}, Case{"abc"s, 4, Result::hit, 4, "abc\0"s},
        Case{"abc"s, 3, Result::too_small, 4, "####"s},
        Case{"abc\0"s, 3, Result::too_small, 4, "####"s}, Case{""s, 1, Result::hit, 1, "\0###"s},
        Case{""s, 0, Result::too_small, 1, "####"s}}) {
    Fill("t", c.stored);
    std::string buffer = "####";
    uint32_t type = ValueCache::kText;
    uint32_t size = c.room;
    EXPECT_EQ(cache_.Find({0, 5, "t"}, Source(), &type, buffer.data(), &size), c.result);
    EXPECT_EQ(size, c.size);
    EXPECT_EQ(buffer.substr(0, c.data.size()), c.data);
  }
  Fill("t", "abc", 3);
  std::string buffer = "####";
  uint32_t type = ValueCache::kText;
  uint32_t size = 4;
  EXPECT_EQ(cache_.Find({0, 5, "t"}, Source(), &type, buffer.data(), &size), Result::wrong_type);
  EXPECT_EQ(type, 3u);
  EXPECT_EQ(buffer, "####");
}

TEST_F(ValueCacheTest, HoldsAllOfAnyModerateNumber) {
  // With one bucket for each value about one in 25 would be missing for ever, at nearly any size.
  for (int const count : {240, 600, 2500, 10000}) {
    for (int i = 0; i < count; i++) Fill("value" + std::to_string(i), "d");
    int held = 0;
    for (int i = 0; i < count; i++)
      held += Find("value" + std::to_string(i)) == Result::hit ? 1 : 0;
    EXPECT_GE(held, count - count / 200) << count;
  }
}

TEST_F(ValueCacheTest, StaysWithinItsMemory) {
  std::string const data(500, 'd');
  for (int i = 0; i < 60000; i++) Fill("value" + std::to_string(i), data);
  EXPECT_LE(cache_.SlotBytes(), ValueCache::kMaxSlotBytes);
  std::string found;
  EXPECT_EQ(Find("value59999", &found), Result::hit) << "the newest is kept";
  EXPECT_EQ(found, data);
}

TEST_F(ValueCacheTest, NeverMixesTwoValuesUnderAFillingThread) {
  std::atomic<bool> stop{false};
  std::thread filler([&] {
    for (uint32_t i = 0; i < 200000; i++) {
      // Each value is one letter throughout, and its length belongs to the letter.
      uint32_t const kind = i % 26;
      Fill(i % 3 == 0 ? "y" : "x", std::string(8 + kind * 16, static_cast<char>('a' + kind)));
    }
    stop = true;
  });
  while (!stop) {
    std::string found;
    if (Find("x", &found) != Result::hit) continue;
    ASSERT_GE(found.size(), 8u);
    ASSERT_EQ(found, std::string(8 + static_cast<size_t>(found[0] - 'a') * 16, found[0]));
  }
  filler.join();
}

}  // namespace
}  // namespace zolt
