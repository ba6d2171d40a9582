#include "zolt41/cards/card_prefs.h"

#include "tests/prefs/prefs_fixture.h"
#include "tests/support/format_page.h"
#include "tests/support/mem_bytes.h"

namespace zolt::testing {
namespace {

// Name, in 32 bytes, of a slot.
std::string Padded(std::string name) {
  name.resize(32);
  return name;
}

std::string Text(TYUserPrefs *store, uint32_t section, char const *name) {
  char buffer[4096] = "-";
  return store->GetStr(section, name, buffer) != 0 ? buffer : "-";
}

std::string Listed(TYUserPrefs *store) {
  std::string text;
  uint32_t section = 0;
  for (int32_t i = 0; char const *name = store->GetIndexedName(i, &section); i++)
    text += std::to_string(section) + ":" + name + "=" + Text(store, section, name) + " ";
  return text;
}

class CardPrefsTest : public ::testing::Test {
 protected:
  void Load(std::string const &blob) {
    store_.SetData(blob.data(), static_cast<uint32_t>(blob.size()));
  }
  std::string Blob() { return Taken(store_.GetData()); }
  void Reload() { Load(Blob()); }

  TYUserPrefs store_{PrefLevelCard, nullptr, 0};
};

TEST_F(CardPrefsTest, BytesOfAStore) {
  EXPECT_EQ(Blob(), FromHex("0100000000000000"));
  store_.SetStr(0x474E524C, "AutoOpen", "Yes");
  EXPECT_EQ(Blob(), FromHex(ExampleOf("preference_blob.md")));
  store_.Clear();
  store_.SetStr(2, "b", "");
  store_.SetStr(0x80000001, "Z", "\xE9");
  store_.SetStr(2, "Alpha", "1");
  EXPECT_EQ(Listed(&store_), "2147483649:Z=\xE9 2:Alpha=1 2:b= ");
  EXPECT_EQ(Blob(), FromHex("01000000 03000000 01000080") + Padded("Z") +
                        FromHex("04000000 00000000 02000000") + Padded("Alpha") +
                        FromHex("04000000 04000000 02000000") + Padded("b") +
                        FromHex("02000000 08000000 E9000000 31000000 0000"));
  std::string const blob = Blob();
  store_.SetModified(0);
  Load(blob);
  EXPECT_EQ(Blob(), blob);
  EXPECT_EQ(store_.GetModified(), 0);
}

TEST_F(CardPrefsTest, ValuesMoveOutWhenTheyGrowAndArePackedAgain) {
  store_.SetStr(1, "a", "four");
  store_.SetStr(1, "b", "keep");
  Reload();
  size_t const size = Blob().size();
  store_.SetStr(1, "A", "two");  // in its place, under the name first written
  EXPECT_EQ(Blob().size(), size - 2);
  store_.SetStr(1, "a", "longer than it was");
  store_.SetStr(1, "a", "even longer than it was before");
  store_.SetStr(1, "b", "longer, too");
  EXPECT_EQ(Listed(&store_), "1:a=even longer than it was before 1:b=longer, too ");
  store_.Remove(1, "a");
  store_.SetStr(1, "c", "takes the place that is free");
  EXPECT_EQ(Listed(&store_), "1:b=longer, too 1:c=takes the place that is free ");
  Reload();
  EXPECT_EQ(Listed(&store_), "1:b=longer, too 1:c=takes the place that is free ");
}

TEST_F(CardPrefsTest, ChangesAreMarked) {
  store_.Remove(1, "none");
  EXPECT_EQ(store_.GetModified(), 0);
  store_.SetStr(1, "n", "v");
  EXPECT_EQ(store_.GetModified(), 1);
  store_.SetModified(0);
  store_.Remove(1, "N");
  EXPECT_EQ(store_.GetModified(), 1);
  EXPECT_EQ(store_.Exists(1, "n"), 0);
  EXPECT_EQ(store_.GetIndexedName(-1, nullptr), nullptr);
}

TEST_F(CardPrefsTest, ANameOfOver31CharactersIsStoredCutAndNeverFound) {
  std::string const name(40, 'n');
  store_.SetStr(1, name.c_str(), "1");
  store_.SetStr(1, name.c_str(), "2");
  EXPECT_EQ(store_.Count(), 2);
  EXPECT_EQ(Text(&store_, 1, name.c_str()), "-");
  EXPECT_STREQ(store_.GetIndexedName(0, nullptr), name.substr(0, 31).c_str());
}

TEST_F(CardPrefsTest, ABigEndianTableBecomesALittleEndianOne) {
  std::string const pool = FromHex("0041 0000");  // is not swapped
  Load(FromHex("00000000 00000001 00000005") + Padded("n") + FromHex("00000004 00000000") + pool);
  EXPECT_EQ(store_.Exists(5, "N"), 1);
  EXPECT_EQ(Blob(), FromHex("01000000 01000000 05000000") + Padded("n") +
                        FromHex("04000000 00000000") + pool);
}

TEST_F(CardPrefsTest, ForeignTablesAreCheckedAndSorted) {
  auto const slot = [](char section, std::string const &name, std::string const &place) {
    return std::string(1, section) + FromHex("000000") + Padded(name) + FromHex(place);
  };
  std::string const unsorted = FromHex("01000000 03000000") + slot(1, "b", "04000000 00000000") +
                               slot(2, "x", "04000000 04000000") +
                               slot(1, "A", "04000000 08000000") +
                               FromHex("6200 0000 7800 0000 6100 0000");
  Load(unsorted);
  EXPECT_EQ(Listed(&store_), "2:x=x 1:A=a 1:b=b ");

  // Values outside the pool, an empty one, one without its end, one of an odd size; a name without
  // its NUL.
  Load(FromHex("01000000 06000000") + slot(9, "far", "04000000 FFFFFFFF") +
       slot(8, "long", "FFFFFFFF 00000000") + slot(7, "none", "00000000 00000000") +
       slot(6, "noend", "02000000 00000000") + slot(5, "odd", "03000000 00000000") +
       slot(4, std::string(32, 'n'), "02000000 00000000") + FromHex("6200 78 00000000"));
  EXPECT_EQ(Listed(&store_),
            "9:far=- 8:long=- 7:none=- 6:noend=b 5:odd=b 4:" + std::string(31, 'n') + "=b ");
  EXPECT_EQ(store_.Exists(7, "none"), 1);
  store_.SetStr(7, "none", "now written");
  store_.SetStr(9, "far", "near");
  EXPECT_EQ(Text(&store_, 7, "none") + Text(&store_, 9, "far"), "now writtennear");
  Reload();
  EXPECT_EQ(Text(&store_, 9, "far"), "near");

  std::string const empty = slot(7, "lost", "00000000 09000000");
  Load(FromHex("01000000 01000000") + empty);
  EXPECT_EQ(Blob().substr(8), empty) << "copied as it stands";
  EXPECT_EQ(Text(&store_, 7, "lost"), "-");
  store_.SetStr(7, "lost", "found");
  Reload();
  EXPECT_EQ(Listed(&store_), "7:lost=found ");
}

TEST_F(CardPrefsTest, ValuesThatShareTheirBytesDoNotMultiplyThem) {
  constexpr uint32_t kSlots = 100;
  std::string blob = FromHex("01000000 64000000");
  for (uint32_t i = 0; i < kSlots; i++) {
    // Each begins a byte behind the one before and leads to the end of 1,000.
    std::string place(8, '\0');
    place[0] = static_cast<char>((1000 - i) & 0xFF);
    place[1] = static_cast<char>((1000 - i) >> 8);
    place[4] = static_cast<char>(i);
    blob += FromHex("01000000") + Padded("n" + std::to_string(1000 + i)) + place;
  }
  Load(blob + std::string(1000, 'x'));
  EXPECT_EQ(store_.Count(), static_cast<int32_t>(kSlots));
  EXPECT_NE(Text(&store_, 1, "n1000"), "-");
  EXPECT_EQ(Text(&store_, 1, "n1001"), "-");
  EXPECT_EQ(Blob().size(), blob.size() + 1000);
}

TEST_F(CardPrefsTest, BytesThatCannotHoldTheirTableGiveAnEmptyStore) {
  std::string const good =
      FromHex("01000000 01000000 01000000") + Padded("n") + FromHex("04000000 00000000 61000000");
  for (size_t size = 0; size < good.size(); size++) {
    store_.SetStr(3, "old", "x");
    Load(good.substr(0, size));
    EXPECT_EQ(Listed(&store_), size < 52 ? "" : "1:n=- ") << size;
  }
  for (char const *count : {"02000000", "FFFFFFFF", "00000080"}) {
    Load(FromHex("01000000") + FromHex(count) + good.substr(8));
    EXPECT_EQ(store_.Count(), 0);
  }
  for (size_t bit = 0; bit < 8 * good.size(); bit++) {
    std::string flipped = good;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << bit % 8));
    Load(flipped);
    Listed(&store_);
    store_.SetStr(1, "n", "a longer text");
    EXPECT_EQ(Text(&store_, 1, "n"), "a longer text");
  }
}

using CardInChainTest = PrefsTest;

TEST_F(CardInChainTest, ATextThatNoBufferHoldsFallsToTheUser) {
  TYUserPrefs card(PrefLevelCard, nullptr, 0);
  UserPrefs()->SetStr(kSection, "T", "user's");
  card.SetStr(kSection, "T", std::string(255, '7').c_str());
  EXPECT_EQ(Read(&card, "T"), std::string(255, '7'));
  std::string const longText(3000, '7');
  card.SetStr(kSection, "T", longText.c_str());
  EXPECT_EQ(Read(&card, "T"), "user's");
  int32_t number = 0;
  card.ReadNum(kSection, "T", &number, 5, 0);
  EXPECT_EQ(card.IsDiffStr(kSection, "T", "user's", ""), 0);
  EXPECT_EQ(Text(&card, kSection, "T"), longText);
}

}  // namespace
}  // namespace zolt::testing
