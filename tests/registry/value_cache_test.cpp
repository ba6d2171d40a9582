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
