#include "zolt41/prefs/list_enum_prefs.h"

#include <memory>
#include <tuple>

#include "tests/notify/listener.h"
#include "tests/prefs/prefs_fixture.h"
#include "zolt41/prefs/enum_prefs.h"

namespace zolt::testing {
namespace {

constexpr int32_t kLists = 501;

class Numbers : public ListEnumData {
 public:
  explicit Numbers(ListEnumType type, std::initializer_list<int32_t> numbers) : ListEnumData(type) {
    for (int32_t const number : numbers) {
      auto item = std::make_unique<int32_t>(number);
      if (GetList()->AddItem(item.get()) != ZOLTXList::kNone) static_cast<void>(item.release());
    }
  }

  std::vector<int32_t> Items() {
    std::vector<int32_t> items;
    for (int32_t i = 0; i < GetCount(); i++)
      items.push_back(*static_cast<int32_t *>(GetList()->GetItem(static_cast<uint32_t>(i))));
    return items;
  }
};

class ListEnumPrefsTest : public PrefsTest {
 protected:
  ListEnumPrefsTest() : list_(UserPrefs()->GetListEnum(0, kLists, "Lists", "L")) {}
  ~ListEnumPrefsTest() override { list_->Release(); }
  void Store(std::initializer_list<char const *> names) {
    for (char const *name : names)
      UserPrefs()->SetStr(kLists, name, *name == '\0' ? "unnamed" : name);
  }
  void WriteTexts(std::initializer_list<char const *> texts) {
    StringListEnumData data;
    for (char const *text : texts) data.AddString(text);
    EXPECT_EQ(list_->WriteList(&data), 1);
  }

  // The names of all values of the section, each with a blank behind it.
  static std::string Names() {
    std::string names;
    CEnumPrefs *const walk = UserPrefs()->GetEnum(0, kLists, "Lists");
    while (walk->Next() != -1) names += std::string(walk->GetName()) + " ";
    walk->Release();
    return names;
  }
  static std::string Texts(StringListEnumData const &data) {
    std::string texts;
    char text[300];
    for (int32_t i = 0; i < data.GetCount(); i++) {
      data.ReadString(i, text, sizeof text);
      texts += std::string(text) + " ";
    }
    return texts;
  }

  CListEnumPrefs *list_;
};

TEST_F(ListEnumPrefsTest, LengthEndsAtTheFirstGapAndTrimmingGoesBehindIt) {
  Store({"L0", "L1", "L3"});
  EXPECT_EQ(list_->GetNumberOfValues(), 2);
  StringListEnumData data;
  data.AddString("before");
  list_->ReadList(&data);
  EXPECT_EQ(Texts(data), "before L0 L1 ");
  list_->LimitNumberOfValues(2);
  EXPECT_EQ(Names(), "L0 L1 ");
}

TEST_F(ListEnumPrefsTest, ValuesOfOtherTypesCountAndStay) {
  Store({"L0"});
  UserPrefs()->SetFree(kLists, "L1", REG_BINARY, nullptr, 0);
  EXPECT_EQ(list_->GetNumberOfValues(), 2);
  StringListEnumData data;
  list_->ReadList(&data);
  EXPECT_EQ(data.GetCount(), 2);
  EXPECT_EQ(data.ReadString(1, nullptr, 0), 0);
  list_->LimitNumberOfValues(0);
  EXPECT_EQ(Names(), "L1 ");
}

TEST_F(ListEnumPrefsTest, TrimmingTakesWhatParsesAsTheStemAndANumber) {
  Store({"", "L", "LL5", "l5", "L7x", "L 8", "L+9", "L-3", "L-", "L+-4", "Lx", "L1", "L2147483648",
         "L-99999999999"});
  list_->LimitNumberOfValues(2);
  EXPECT_EQ(Names(), " L LL5 l5 L-3 L- L+-4 Lx L1 L-99999999999 ");
  ClearPrefSection(kLists, 0);
  // A percent sign is plain text, and white space matches any.
  Store({"a%d0", "a%d2", "a12", "a%%d3", "t\t5", "t5", "t  6", "tt 7"});
  for (char const *stem : {"a%d", "t "})
    CListEnumPrefs(kLists, "Lists", 0, GetUserPrefs(), stem).LimitNumberOfValues(1);
  EXPECT_EQ(Names(), "a%d0 a12 a%%d3 tt 7 ");
}

TEST_F(ListEnumPrefsTest, NamesThatAWalkDoesNotSeeHideNoItems) {
  std::string const foreign(300, 'n');
  std::string const item = "L9" + foreign;
  Store({"L0", foreign.c_str(), "L1", item.c_str(), "L2"});
  WriteTexts({"one"});
  EXPECT_EQ(list_->GetNumberOfValues(), 1);
  EXPECT_EQ(InUserTree("Lists", "L2"), "no value");
  EXPECT_EQ(UserPrefs()->Exists(kLists, foreign.c_str()), 1);
  EXPECT_NE(UserPrefs()->Exists(kLists, item.c_str()), 1);
}

TEST_F(ListEnumPrefsTest, WritingTellsWhatWentThenWhatChangedThenWhatIsNew) {
  Store({"L0", "L1", "L2"});
  Listener listener;
  listener.AddNotificationAll();
  AddNotificationObject(&listener);
  WriteTexts({"L0", "new"});
  WriteTexts({"L0", "new", "more", "yet"});
  WriteTexts({});
  ZOLTDeliver();
  RemoveNotificationObject(&listener);
  EXPECT_EQ(listener.heard, (std::vector<std::string>{
                                "removed 000001F5 4 0 L2=>",
                                "modified 000001F5 0 0 L1=L1>new",
                                "created 000001F5 0 0 L2=>more L3=>yet",
                                "removed 000001F5 4 0 L0=> L1=> L2=> L3=>",
                            }));
}

TEST_F(ListEnumPrefsTest, NumbersAndBooleansComeBack) {
  Numbers numbers(ListEnumNumber, {-2147483647 - 1, 0, 2147483647});
  list_->WriteList(&numbers);
  EXPECT_EQ(InUserTree("Lists", "L0"), "-2147483648");
  Numbers read(ListEnumNumber, {});
  list_->ReadList(&read);
  EXPECT_EQ(read.Items(), numbers.Items());
  EXPECT_EQ(list_->IsDiffList(&numbers), 0);

  Numbers flags(ListEnumBool, {0, 7});
  list_->WriteList(&flags);
  EXPECT_EQ(InUserTree("Lists", "L1"), "Yes");
  Numbers readFlags(ListEnumBool, {});
  list_->ReadList(&readFlags);
  EXPECT_EQ(readFlags.Items(), (std::vector<int32_t>{0, 1}));
  EXPECT_EQ(list_->IsDiffList(&flags), 1);  // 7 is not 1
}

TEST_F(ListEnumPrefsTest, ItemsOfATypeThatIsNoneStayTheClients) {
  static int32_t number = 7;
  Numbers data(static_cast<ListEnumType>(3), {});
  EXPECT_NE(data.GetList()->AddItem(&number), ZOLTXList::kNone);
}

TEST_F(ListEnumPrefsTest, DifferencesOfTexts) {
  WriteTexts({"one", "two", "three"});
  WriteTexts({"one", "", "three"});
  std::tuple<std::vector<char const *>, int32_t, int32_t> const cases[] = {
      {{"one", "", "three"}, 0, 1}, {{"one", "", "Three"}, 1, 1}, {{"one", ""}, 1, 1}};
  for (auto const &[texts, asList, asTexts] : cases) {
    StringListEnumData data;
    for (char const *text : texts) data.AddString(text);
    EXPECT_EQ(list_->IsDiffList(static_cast<ListEnumData *>(&data)), asList);
    EXPECT_EQ(list_->IsDiffList(&data), asTexts);
  }
  WriteTexts({"one"});
  StringListEnumData data;
  data.AddString("one");
  EXPECT_EQ(list_->IsDiffList(&data), 0);
  StringListEnumData longText;
  longText.AddString(std::string(300, 'x').c_str());
  EXPECT_EQ(list_->IsDiffList(&longText), 1);
}

TEST_F(ListEnumPrefsTest, ItemsFallBackAndTheLengthDoesNot) {
  Store({"L0"});
  SystemPrefs()->SetStr(kLists, "L1", "of the machine");
  char text[256];
  EXPECT_EQ(list_->ReadStr(1, text, "none"), 1);
  EXPECT_STREQ(text, "of the machine");
  EXPECT_EQ(list_->GetNumberOfValues(), 1);
}

TEST_F(ListEnumPrefsTest, NamesEndAt255Bytes) {
  std::string const stem(253, 's');
  CListEnumPrefs list(kLists, "Lists", 0, GetUserPrefs(), stem.c_str());
  for (int32_t i = 0; i < 98; i++) list.WriteNum(i + 2, i);
  EXPECT_EQ(list.WriteNum(0, 1), 1);
  EXPECT_EQ(list.WriteNum(1, 1), 1);
  EXPECT_EQ(list.WriteNum(100, 1), 0);
  EXPECT_EQ(list.GetNumberOfValues(), 100);
  char text[256];
  int32_t number = 0;
  EXPECT_EQ(list.ReadStr(100, text, "none"), 0);
  EXPECT_STREQ(text, "none");
  EXPECT_EQ(list.ReadNum(100, &number, 5), 0);
  EXPECT_EQ(number, 5);
}

TEST(ListEnumDataTest, TextsAreInsertedAndReadIntoWhatHasRoom) {
  StringListEnumData data;
  EXPECT_EQ(data.AddString("b"), 1);
  EXPECT_EQ(data.InsertString(0, "abc"), 1);
  EXPECT_EQ(data.InsertString(9, "last"), 1);
  EXPECT_EQ(data.InsertString(-1, "never"), 0);
  EXPECT_EQ(data.AddString(nullptr), 0);
  EXPECT_EQ(data.GetCount(), 3);
  char text[5] = "....";
  EXPECT_EQ(data.ReadString(0, text, 3), 3);
  EXPECT_STREQ(text, "....");
  EXPECT_EQ(data.ReadString(0, text, 4), 3);
  EXPECT_STREQ(text, "abc");
  EXPECT_EQ(data.ReadString(2, nullptr, 0), 4);
  EXPECT_EQ(data.ReadString(3, text, 5), 0);
  EXPECT_EQ(data.ReadString(-1, text, 5), 0);
}

}  // namespace
}  // namespace zolt::testing
