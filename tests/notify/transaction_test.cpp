#include "zolt41/notify/transaction.h"

#include <chrono>
#include <tuple>

#include "tests/notify/listener.h"

namespace zolt::testing {
namespace {

using Lines = std::vector<std::string>;

constexpr auto kAudioId = static_cast<uint32_t>(kAudio);
constexpr auto kGeneralId = static_cast<uint32_t>(kGeneral);

class TransactionTest : public PrefsTest {
 protected:
  TransactionTest() {
    ear_->AddNotificationID(kAudio, 0, 0);
    AddNotificationObject(ear_);
  }
  ~TransactionTest() override { Drop(ear_); }
  Lines Heard() {
    ZOLTDeliver();
    return std::exchange(ear_->heard, {});
  }

  Listener *ear_ = new Listener();
};

TEST_F(TransactionTest, TellsTheChangesBetweenBeginAndEnd) {
  WinPrefs *const store = GetUserPrefs();
  store->SetStr(kAudioId, "Early", "thrown away by Begin");
  BeginPrefsCreate(kAudio, 4, 77);
  store->SetStr(kAudioId, "Volume", "70");
  store->SetStr(kAudioId, "Volume", "70");
  store->SetFree(kAudioId, "Mask", REG_BINARY, reinterpret_cast<uint8_t const *>("x"), 1);
  store->RemoveValue(kAudioId, "Volume");
  auto const start = std::chrono::steady_clock::now();
  EndPrefsCreate();
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
  EXPECT_EQ(Heard(), (Lines{"created 41554449 4 77 Volume=>70 Mask=> Volume=>"}));

  // An unknown path begins nothing, so what follows joins the table that was told.
  BeginPrefsModify("Tree:NoSuchSection", 0, 0);
  store->SetStr(kAudioId, "Late", "1");
  EndPrefsModify();
  EXPECT_EQ(Heard(), (Lines{"created 41554449 4 77 Volume=>70 Mask=> Volume=> Late=>1"}));

  for (char const *path : {"Audio", "Conferencing:Audio", R"(a:b\c\audio)"}) {
    BeginPrefsModify(path, 1, 2);
    store->SetStr(kAudioId, "Path", path);
    EndPrefsModify();
  }
  EXPECT_EQ(Heard(), (Lines{"modified 41554449 1 2 Path=>Audio",
                            "modified 41554449 1 2 Path=Audio>Conferencing:Audio",
                            "modified 41554449 1 2 Path=Conferencing:Audio>a:b\\c\\audio"}));
  BeginPrefsModify(kGeneral, 0, 0);
  store->SetStr(kGeneralId, "Other", "section");
  EndPrefsModify();
  BeginPrefsRemove(kAudio, 0, 0);
  EndPrefsRemove();
  EXPECT_EQ(Heard(), Lines{}) << "another section, and no change at all";
}

TEST_F(TransactionTest, KeepsTheFirst128RecordsAndCutsTheirTexts) {
  WinPrefs *const store = GetUserPrefs();
  BeginPrefsModify(kAudio, 0, 0);
  store->SetStr(kAudioId, std::string(300, 'n').c_str(), std::string(2000, 't').c_str());
  for (int i = 0; i < 129; i++)
    store->SetFree(kAudioId, std::to_string(i).c_str(), REG_BINARY, nullptr, 0);
  EndPrefsModify();
  ear_->then = [&](Listener *ear) {
    ASSERT_EQ(ear->changedRecords.GetSize(), 128);
    EXPECT_EQ(ear->Record(0).name, std::string(255, 'n'));
    EXPECT_EQ(ear->Record(0).newValue, std::string(1023, 't'));
    EXPECT_STREQ(ear->Record(127).name, "126");
  };
  EXPECT_EQ(Heard().size(), 1U);
}

TEST_F(TransactionTest, OneWriteTellsRemovedThenModifiedThenCreatedOfEachSection) {
  Listener *const all = ListenToAll();
  Transaction first(PrefLevelUser, 5);
  first.SetStr(kAudioId, "A", "1");
  first.SetFree(kAudioId, "B", REG_BINARY, "xy", 2);
  first.Expect(kAudioId, "A", nullptr);
  ASSERT_EQ(first.Write(), Commit::done);
  EXPECT_EQ(first.Write(), Commit::unchanged) << "what was written is forgotten";

  Transaction second(PrefLevelUser);
  second.SetStr(kAudioId, "New", "n");
  second.SetStr(kGeneralId, "G", "g");
  second.Remove(kAudioId, "b");
  second.SetStr(kAudioId, "A", "2");
  second.SetStr(kAudioId, "Never", "there");
  second.Remove(kAudioId, "never");
  second.Expect(kAudioId, "a", "1");
  second.ExpectFree(kAudioId, "B", REG_BINARY, "xy", 2);
  ASSERT_EQ(second.Write(), Commit::done);
  Lines const expected = {"created 41554449 4 5 A=>1 B=>", "removed 41554449 4 0 b=>",
                          "modified 41554449 4 0 A=1>2", "created 41554449 4 0 New=>n",
                          "created 474E524C 4 0 G=>g"};
  ZOLTDeliver();
  // The subscriber has one type for all that waits; the one that hears all has each its own.
  EXPECT_EQ(ear_->heard.size(), 4U);
  ear_->heard.clear();
  EXPECT_EQ(all->heard, expected);
  Drop(all);
}

TEST_F(TransactionTest, WritesAllOrNothing) {
  std::tuple<Commit, PrefLevel, uint32_t, char const *> const cases[] = {
      {Commit::mismatch, PrefLevelUser, kAudioId, "not this"},
      {Commit::mismatch, PrefLevelUser, kAudioId, nullptr},
      {Commit::denied, PrefLevelCard, kAudioId, "1"},
      {Commit::denied, PrefLevelThis, kAudioId, "1"},
      {Commit::denied, PrefLevelUser, 0x12345678, "1"},
      {Commit::unchanged, PrefLevelUser, kAudioId, "1"}};
  GetUserPrefs()->SetStr(kAudioId, "A", "1");
  for (auto const &[result, level, section, expected] : cases) {
    Transaction transaction(level);
    transaction.SetStr(kAudioId, "A", result == Commit::unchanged ? "1" : "2");
    transaction.SetStr(section, "A", result == Commit::unchanged ? "1" : "2");
    transaction.Expect(section, "A", expected);
    EXPECT_EQ(transaction.Write(), result);
    EXPECT_EQ(Read(GetUserPrefs(), "A", 0, kAudioId), "1");
  }
  EXPECT_EQ(Heard(), Lines{});
}

TEST_F(TransactionTest, TenThousandChangesComeWholeAndClearRemovesThemAll) {
  Transaction write(PrefLevelUser);
  for (int i = 0; i < 10000; i++) write.SetStr(kAudioId, std::to_string(i).c_str(), "v");
  ASSERT_EQ(write.Write(), Commit::done);
  Transaction clear(PrefLevelUser);
  clear.Clear(kAudioId);
  clear.SetStr(kAudioId, "7", "kept");
  ASSERT_EQ(clear.Write(), Commit::done);
  int32_t records = 0;
  ear_->then = [&](Listener *ear) { records += ear->changedRecords.GetSize(); };
  // 78 announcements of 128 and one of 16; of the second write 79 again and one for the change.
  EXPECT_EQ(Heard().size(), 159U);
  EXPECT_EQ(records, 20000);
  EXPECT_EQ(Read(GetUserPrefs(), "7", 0, kAudioId), "kept");
  EXPECT_EQ(GetUserPrefs()->Exists(kAudioId, "9999"), 0);
}

TEST_F(TransactionTest, AStandardSectionIsToldUnderItsNameToo) {
  // As a component client opens them.
  WinPrefs *const store = GetUserPrefs();
  auto const general = static_cast<uint32_t>(SectionNameHash("General"));
  auto const audio = static_cast<uint32_t>(SectionNameHash("ConferencingAudio"));
  store->RegisterSection(static_cast<int32_t>(general), "general");
  auto *const named = new Listener();
  for (uint32_t const id : {general, audio, kGeneralId}) named->AddNotificationKey(0, id, 0);
  AddNotificationObject(named);
  for (uint32_t const section : {kGeneralId, general, kAudioId}) {
    Transaction transaction(PrefLevelUser);
    transaction.SetStr(section, "V", std::to_string(section).c_str());
    ASSERT_EQ(transaction.Write(), Commit::done);
  }
  ZOLTDeliver();
  EXPECT_EQ(named->heard.size(), 5U) << "two each way for General, one for Audio";
  Transaction mixed(PrefLevelUser);
  for (char const *value : {"first", "last"}) {
    mixed.SetStr(kGeneralId, "M", value);
    mixed.SetStr(general, "m", value);
  }
  mixed.SetStr(kGeneralId, "M", "the one that counts");
  ASSERT_EQ(mixed.Write(), Commit::done);
  EXPECT_EQ(Read(GetUserPrefs(), "M"), "the one that counts");
  ZOLTDeliver();
  EXPECT_EQ(named->heard.size(), 7U) << "one section, whatever it was called";
  Drop(named);
}

}  // namespace
}  // namespace zolt::testing
