#include "zolt41/interchange/preference_additions.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/support/mem_bytes.h"

namespace zolt::testing {
namespace {

// Names around the longest that is stored whole, so that many are stored as the same.
TEST(PreferenceAdditionsTest, GiveWhatOneAfterTheOtherGives) {
  std::mt19937 random(1);
  for (int run = 0; run < 200; run++) {
    TYUserPrefs plain(PrefLevelCard, nullptr, 0);
    TYUserPrefs together(PrefLevelCard, nullptr, 0);
    PreferenceAdditions additions;
    for (int i = 0; i < 60; i++) {
      std::string name(29 + random() % 4, "aA"[random() % 2]);
      name += "abc"[random() % 3];
      uint32_t const section = random() % 2 == 0 ? 7 : 0xFFFFFFFF;
      std::string const value = std::to_string(i);
      plain.SetStr(section, name.c_str(), value.c_str());
      additions.Set(section, name, value);
    }
    additions.PutInto(&together);
    ASSERT_EQ(Taken(together.GetData()), Taken(plain.GetData())) << run;
  }
}

}  // namespace
}  // namespace zolt::testing
