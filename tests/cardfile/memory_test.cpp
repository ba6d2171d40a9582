// Cards and their files when memory runs out.

#include "tests/support/failing_memory.h"

#include <gtest/gtest.h>

#include "tests/support/files.h"
#include "tests/support/mem_bytes.h"
#include "zolt41/cardfile/call_card.h"
#include "zolt41/cards/property_format.h"
#include "zolt41/platform/system/last_failure.h"

namespace zolt::testing {
namespace {

constexpr int kMany = 200;
constexpr uint32_t kSection = 7;

std::string SlotOf(std::string name, char offset) {
  name.resize(32);
  return std::string("\7\0\0\0", 4) + name + std::string("\4\0\0\0", 4) + offset +
         std::string(3, '\0');
}

class CardFileMemoryTest : public FileTest, public ::testing::WithParamInterface<Lack> {
 protected:
  CardFileMemoryTest() {
    // Out of order: sorting it takes memory, too.
    std::string const blob = std::string("\1\0\0\0\2\0\0\0", 8) + SlotOf("b", 0) + SlotOf("a", 4) +
                             std::string("B\0\0\0A\0\0\0", 8);
    PCardStorage made;
    for (int i = 0; i < 100; i++) made.AddProp("FN", PropertyAscii, 0, "x", 2);
    made.AddProp("L-BRNDL-TYPREFS", PropertyData, PropertyLocal, blob.data(),
                 static_cast<int32_t>(blob.size()));
    list_ = Taken(made.Get());
  }

  // What the card holds, in its list and its store.
  static std::string Held(CallCard *card) {
    std::string held = Taken(card->Get());
    auto *const store = static_cast<TYUserPrefs *>(card->Prefs());
    for (int32_t i = 0; char const *name = store->GetIndexedName(i, nullptr); i++) {
      char value[64] = "-";
      store->GetStr(kSection, name, value);
      held = held + " " + name + "=" + value;
    }
    return held;
  }

  // A card that has something of its own.
  static std::unique_ptr<CallCard> Filled() {
    auto card = std::make_unique<CallCard>(CardFormatBinary);
    card->AddProp("OLD", PropertyAscii, 0, "y", 2);
    static_cast<TYUserPrefs *>(card->Prefs())->SetStr(kSection, "old", "o");
    card->SavePrefs();
    return card;
  }
  CallCard Whole() const {
    return CallCard(list_.data(), static_cast<int32_t>(list_.size()), CardFormatBinary);
  }

  // Gives `work` memory for more and more allocations, until it is true that it is done.
  template <typename Work>
  void TryUntilDone(Work const &work) {
    int count = 0;
    for (bool done = false; !done && count < kMany; count++) {
      SCOPED_TRACE(count);
      done = work(count);
    }
    EXPECT_GT(count, 3);
    EXPECT_LT(count, kMany);
  }

  template <typename Work>
  static auto WithMemoryFor(int count, Work const &work) {
    return testing::WithMemoryFor(count, work, GetParam());
  }

  std::string list_;
  std::string const path_ = Path("c");
};

TEST_P(CardFileMemoryTest, AFileIsLoadedWholeOrLeftUnread) {
  for (int32_t const format : {CardFormatBinary, CardFormatText}) {
    CallCard whole = Whole();
    ASSERT_EQ(whole.SaveCardAs(format, path_.c_str()), 1);
    std::string const bytes = ContentOf(path_);
    std::string const loaded = Held(&*std::make_unique<CallCard>(path_.c_str()));
    TryUntilDone([&](int count) {
      auto const card = Filled();
      std::string const before = Held(card.get());
      card->SetKey(std::string(32, 'k').c_str());
      card->SetName(path_.c_str());
      bool const done = WithMemoryFor(count, [&] {
        card->Load();
        return ZOLTLastFailure(nullptr, 0) == 0;
      });
      EXPECT_TRUE(Held(card.get()) == (done ? loaded : before));
      if (!done) {
        EXPECT_EQ(ZOLTLastFailure(nullptr, 0), 3);
        EXPECT_EQ(card->GetKey(), std::string(32, 'k'));
        EXPECT_EQ(card->SaveCard(), 0);
      }
      EXPECT_TRUE(ContentOf(path_) == bytes);
      CallCard again(path_.c_str());
      EXPECT_TRUE(Held(&again) == loaded) << "it is not left open";
      return done;
    });
  }
}

TEST_P(CardFileMemoryTest, AListIsTakenWholeOrNot) {
  CallCard whole = Whole();
  std::string const held = Held(&whole);
  EXPECT_NE(held.find(" a=A b=B"), std::string::npos);
  TryUntilDone([&](int count) {
    auto const card = Filled();
    std::string const before = Held(card.get());
    WithMemoryFor(count,
                  [&] { return card->Set(list_.data(), static_cast<int32_t>(list_.size())), 0; });
    bool const done = card->Modified() == 0;
    EXPECT_TRUE(Held(card.get()) == (done ? held : before));
    return done;
  });
}

TEST_P(CardFileMemoryTest, ACopyIsWholeOrNull) {
  CallCard whole = Whole();
  std::string const key(32, 'k');
  WithMemoryFor(0, [&] {
    whole.SetName("n");
    return whole.SetKey(key.c_str()), 0;
  });
  TryUntilDone([&](int count) {
    std::unique_ptr<CallCard> const copy(WithMemoryFor(count, [&] { return whole.Copy(); }));
    if (copy == nullptr) return false;
    EXPECT_TRUE(Held(copy.get()) == Held(&whole));
    EXPECT_EQ(copy->GetKey(), key);
    EXPECT_STREQ(copy->GetName(), "n");
    return true;
  });
}

TEST_P(CardFileMemoryTest, TheFirstSaveGivesItsKeyOrWritesNothing) {
  TryUntilDone([&](int count) {
    std::filesystem::remove(path_);
    CallCard card = Whole();
    card.SetName(path_.c_str());
    bool const saved = WithMemoryFor(count, [&] { return card.SaveCard(); }) != 0;
    std::string const bytes = ContentOf(path_);
    EXPECT_EQ(bytes.empty(), !saved);
    EXPECT_STREQ(card.GetKey(), saved ? bytes.substr(16, 32).c_str() : "");
    return saved;
  });
}

INSTANTIATE_TEST_SUITE_P(All, CardFileMemoryTest, ::testing::Values(Lack::lasts, Lack::passes));

}  // namespace
}  // namespace zolt::testing
