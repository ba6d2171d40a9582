#include "zolt41/prefs/section_index.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

// Sets and erases at random, over ids of which many meet in one place.
TEST(SectionIndex, FindsWhatAMapFinds) {
  constexpr uint32_t kIds = 200;
  static Section sections[kIds][2];
  zolt::SectionIndex index;
  std::map<int32_t, Section *> model;
  std::minstd_rand random(41);
  for (int step = 0; step < 20000; ++step) {
    uint32_t const number = static_cast<uint32_t>(random() % kIds);
    int32_t const id = static_cast<int32_t>(number << (number % 3 * 12));
    Section *const section = &sections[number][random() % 2];
    section->id = id;
    if (random() % 2 == 0) {
      ASSERT_TRUE(index.Set(section));
      model[id] = section;
    } else {
      index.Erase(id);
      model.erase(id);
    }
    for (auto const &[known, newest] : model) ASSERT_EQ(index.Find(known), newest) << step;
    ASSERT_EQ(index.Find(id) != nullptr, model.contains(id)) << step;
  }
  index.Clear();
}
