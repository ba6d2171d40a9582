// The database beside a model of it over random operations: the same results, and the same bytes.

#include "tests/rolodex/model.h"

#include <gtest/gtest.h>
#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "tests/support/temp_home.h"
#include "zolt41/cardfile/call_card.h"

namespace zolt::testing {
namespace {

constexpr size_t kNowhere = static_cast<size_t>(-1);

std::string Number(uint32_t number) {
  std::string bytes(4, '\0');
  PutNumber(&bytes, 0, number);
  return bytes;
}

std::array<uint32_t, 4> Bits(Categories const &list) {
  std::array<uint32_t, 4> set{};
  if (list[0] == 255) set.fill(0xFFFFFFFF);
  for (size_t i = 1; list[0] != 255 && i <= list[0]; i++)
    if (list[i] < 128) set[list[i] / 32] |= 1U << list[i] % 32;
  return set;
}

Categories List(std::array<uint32_t, 4> const &set) {
  Categories list = {0};
  for (unsigned char i = 0; i < 128; i++)
    if ((set[i / 32] >> i % 32 & 1) != 0) list.push_back(i);
  list[0] = static_cast<unsigned char>(list.size() - 1);
  return list[0] == 128 ? Categories{255} : list;
}

}  // namespace

std::string Model::Head::Bytes() const {
  std::string bytes = Number(position) + Number(id) + Number(size);
  for (uint32_t const word : set) bytes += Number(word);
  for (std::string name : names) {
    name.resize(32);
    bytes += name;
  }
  return bytes;
}

Model::Model() : file_(10248, '\0'), end_(10248) {
  PutNumber(&file_, 0, 0x526F6C6F);
}

size_t Model::Find(uint32_t id) const {
  for (size_t i = 0; i < heads_.size(); i++)
    if (id != 0 && heads_[i].id == id) return i;
  return kNowhere;
}

void Model::Write(size_t position, std::string const &bytes) {
  file_.resize(std::max(file_.size(), position + bytes.size()));
  file_.replace(position, bytes.size(), bytes);
}

void Model::Add(uint32_t id, std::string const &body, std::array<uint32_t, 4> const &set,
                Names const &names) {
  auto const s = static_cast<uint32_t>(body.size());
  size_t best = kNowhere;
  uint32_t extra = 0x7FFFFFFF;
  for (size_t i = 0; i < heads_.size(); i++) {
    uint32_t const f = heads_[i].size;
    if (heads_[i].id != 0) continue;
    if (f == s + 124) {
      best = i;
      extra = 0;
      break;
    }
    if (f > s + 248 && f - s - 124 < extra) {
      best = i;
      extra = f - s - 124;
    }
  }
  Head head = {end_, id, s + 124, set, names};
  for (std::string &name : head.names) name.resize(std::min<size_t>(name.size(), 31));
  if (best == kNowhere) {
    heads_.push_back(head);
    end_ += head.size;
  } else {
    head.position = heads_[best].position;
    if (extra != 0) {
      heads_.insert(heads_.begin() + static_cast<ptrdiff_t>(best), heads_[best]);
      heads_[best + 1].position += s + 124;
      heads_[best + 1].size = extra;
      WriteHead(heads_[best + 1]);
    }
    heads_[best] = head;
  }
  WriteHead(head);
  Write(head.position + 124, body);
  dirty_ = true;
}

uint32_t Model::Create(CardContent const &card) {
  Add(++lastId_, card.body, Bits(card.categories), card.names);
  return lastId_;
}

bool Model::Delete(uint32_t id) {
  size_t i = Find(id);
  if (i == kNowhere) return false;
  heads_[i].id = 0;
  if (i > 0 && heads_[i - 1].id == 0) i--;
  while (i + 1 < heads_.size() && heads_[i + 1].id == 0) {
    heads_[i].size += heads_[i + 1].size;
    heads_.erase(heads_.begin() + static_cast<ptrdiff_t>(i) + 1);
  }
  WriteHead(heads_[i]);
  return dirty_ = true;
}

bool Model::Save(uint32_t id, std::string const &body) {
  size_t const i = Find(id);
  if (i == kNowhere) return false;
  Head const old = heads_[i];
  Delete(id);
  Add(id, body, old.set, old.names);
  return true;
}

bool Model::SetNames(uint32_t id, std::array<std::optional<std::string>, 3> const &names) {
  size_t const i = Find(id);
  if (i == kNowhere) return false;
  for (size_t name = 0; name < 3; name++)
    if (names[name]) heads_[i].names[name] = names[name]->substr(0, 31);
  WriteHead(heads_[i]);
  return dirty_ = true;
}

bool Model::SetCategories(uint32_t id, Categories const &set) {
  size_t const i = Find(id);
  if (i == kNowhere) return false;
  heads_[i].set = Bits(set);
  WriteHead(heads_[i]);
  return dirty_ = true;
}

bool Model::Apply(Categories const &add, Categories const &remove, Categories const &filter) {
  bool changed = false;
  for (Head &head : heads_) {
    if (head.id == 0) continue;
    std::array<uint32_t, 4> const old = head.set;
    bool passes = true;
    for (size_t i = 0; i < 4; i++) passes = passes && (old[i] & Bits(filter)[i]) == Bits(filter)[i];
    for (size_t i = 0; passes && i < 4; i++)
      head.set[i] = (old[i] & ~Bits(remove)[i]) | Bits(add)[i];
    if (head.set == old) continue;
    WriteHead(head);
    changed = dirty_ = true;
  }
  return changed;
}

uint32_t Model::SelectLabel(std::vector<uint32_t> const &ids, std::string const &label,
                            uint32_t category) {
  uint32_t const bit = 1U << category % 32;
  uint32_t count = 0;
  for (Head &head : heads_)
    if (head.id != 0) head.set[category / 32] &= ~bit;
  for (uint32_t const id : ids) {
    size_t const i = Find(id);
    if (i == kNowhere || strcasecmp(heads_[i].names[0].c_str(), label.c_str()) != 0) continue;
    heads_[i].set[category / 32] |= bit;
    count++;
  }
  return count;
}

bool Model::Compact(int32_t force) {
  uint64_t bytes[2] = {};
  size_t records[2] = {};
  for (Head const &head : heads_) {
    bytes[head.id != 0] += head.size;
    records[head.id != 0]++;
  }
  bool const pays = ((force & 1) != 0 && bytes[0] != 0) || records[0] >= records[1] ||
                    (bytes[0] >= 50000 && bytes[0] >= bytes[1] / 5);
  if (!pays) return false;
  end_ = 10248;
  std::vector<Head> kept;
  for (Head head : heads_) {
    if (head.id == 0) continue;
    std::string record = file_.substr(head.position, head.size);
    head.position = end_;
    PutNumber(&record, 0, end_);
    Write(end_, record);
    kept.push_back(head);
    end_ += head.size;
  }
  heads_ = kept;
  file_.resize(end_);
  return dirty_ = true;
}

void Model::SetCategory(uint32_t number, std::string const &bytes) {
  Write(8 + 80 * number, bytes);
}

void Model::Reopen() {
  if (!dirty_) heads_ = clean_;
  clean_ = heads_;
  dirty_ = false;
}

std::string Model::Closed() const {
  std::vector<Head> const &heads = dirty_ ? heads_ : clean_;
  std::string bytes =
      file_ + Number(0xFFFFFFFF) + Number(static_cast<uint32_t>(heads.size())) + Number(lastId_);
  for (Head const &head : heads) bytes += head.Bytes();
  return bytes + Number(end_ + 4) + Number(static_cast<uint32_t>(8 + 124 * heads.size())) +
         Number(0x526F6C6F);
}

std::vector<uint32_t> Model::Ids() const {
  std::vector<uint32_t> ids;
  for (Head const &head : heads_)
    if (head.id != 0) ids.push_back(head.id);
  return ids;
}

std::string Model::Body(uint32_t id) const {
  size_t const i = Find(id);
  return i == kNowhere ? "!" : file_.substr(heads_[i].position + 124, heads_[i].size - 124);
}

Cards Model::All() const {
  Cards cards;
  for (Head const &head : heads_)
    if (head.id != 0)
      cards[head.id] = {file_.substr(head.position + 124, head.size - 124), head.names,
                        List(head.set)};
  return cards;
}

namespace {

class ModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    path_ = home_.path() + "/book";
    ASSERT_EQ(Rolodex::Create(path_.c_str()), 0);
    ASSERT_EQ(book_.Open(path_.c_str(), 0), 0);
  }

  uint32_t Pick(uint32_t count) { return static_cast<uint32_t>(random_() % count); }
  uint32_t PickId() {
    std::vector<uint32_t> const ids = model_.Ids();
    return ids.empty() || Pick(20) == 0 ? Pick(40) : ids[Pick(static_cast<uint32_t>(ids.size()))];
  }
  std::string PickBody() {
    constexpr uint32_t kSizes[] = {4, 5, 8, 64, 128, 129, 132, 248, 372, 373, 5000};
    return BodyOf(kSizes[Pick(std::size(kSizes))], static_cast<char>('a' + Pick(26)));
  }
  std::string PickName() {
    constexpr char const *kNames[] = {"",       "Al",  "AL",
                                      "al\xE9", "Bob", "a name of more than 31 characters"};
    return kNames[Pick(std::size(kNames))];
  }
  Categories PickSet() {
    if (Pick(10) == 0) return {255};
    Categories set = {0};
    for (set[0] = static_cast<unsigned char>(Pick(3)); set.size() <= set[0];)
      set.push_back(static_cast<unsigned char>(Pick(140)));
    return set;
  }

  void Create() {
    CardContent const card = {PickBody(), {PickName(), PickName(), PickName()}, PickSet()};
    ASSERT_EQ(book_.Add(card.body, card.names, card.categories), model_.Create(card));
  }
  void CreateMany() {
    std::vector<CardContent> contents(Pick(6));
    std::vector<CallCard> cards(contents.size());
    std::vector<PCardStorage *> pointers;
    std::vector<CardNames> names;
    std::vector<unsigned char const *> sets;
    for (size_t i = 0; i < contents.size(); i++) {
      contents[i] = {PickBody(), {PickName(), PickName(), PickName()}, PickSet()};
      Book::SetBody(&cards[i], contents[i].body);
      pointers.push_back(&cards[i]);
    }
    for (CardContent const &c : contents) {
      names.push_back({c.names[0].c_str(), c.names[1].c_str(), c.names[2].c_str()});
      sets.push_back(c.categories.data());
    }
    std::vector<uint32_t> ids(contents.size());
    auto const count = static_cast<uint32_t>(contents.size());
    ASSERT_EQ(book_.CreateCards(count, pointers.data(), names.data(), sets.data(), ids.data()),
              count);
    for (size_t i = 0; i < contents.size(); i++) ASSERT_EQ(ids[i], model_.Create(contents[i]));
  }
  void Change() {
    uint32_t const id = PickId();
    switch (Pick(5)) {
      case 0: {
        std::string const body = PickBody();
        ASSERT_EQ(book_.Save(id, body) != 0, model_.Save(id, body)) << id;
        break;
      }
      case 1:
        ASSERT_EQ(book_.DeleteCard(id) != 0, model_.Delete(id)) << id;
        break;
      case 2: {
        std::string const name = PickName();
        book_.SetCardName(id, nullptr, name.c_str(), nullptr);
        model_.SetNames(id, {std::nullopt, name, std::nullopt});
        break;
      }
      case 3: {
        Categories const set = PickSet();
        book_.SetCardCategories(id, set.data());
        model_.SetCategories(id, set);
        break;
      }
      default:
        Select();
    }
  }
  void Select() {
    std::string const label = PickName();
    uint32_t const category = Pick(128);
    std::vector<uint32_t> ids = model_.Ids();
    ids.push_back(PickId());
    auto const size = static_cast<uint32_t>(4 * ids.size());
    char *const block = NewMem(size);
    std::copy_n(reinterpret_cast<char const *>(ids.data()), size, block);
    ASSERT_EQ(book_.Select(block, "_LABEL", CSEquals, label.c_str(), category),
              model_.SelectLabel(ids, label, category));
    _DisposeMem(block);
  }
  void Rarely() {
    switch (Pick(4)) {
      case 0: {
        Categories const add = PickSet(), remove = PickSet(), filter = PickSet();
        ASSERT_EQ(book_.ApplyCategory(add.data(), remove.data(), filter.data()) != 0,
                  model_.Apply(add, remove, filter));
        break;
      }
      case 1: {
        auto const force = static_cast<int32_t>(Pick(4));
        ASSERT_EQ(book_.Compact(force) != 0, model_.Compact(force));
        break;
      }
      case 2: {
        CategoryInfo info = {"a category", Pick(100), "more"};
        uint32_t const number = Pick(128);
        book_.SetCategoryInfo(number, &info);
        std::string bytes(80, '\0');
        bytes.replace(0, 10, "a category").replace(68, 4, "more");
        PutNumber(&bytes, 64, info.number);
        model_.SetCategory(number, bytes);
        break;
      }
      default:
        Reopen();
    }
  }
  void Find() {
    std::string const name = PickName().substr(0, 31);
    std::vector<uint32_t> found;
    uint32_t cursor = 0;
    while (uint32_t const id = book_.FindCard(nullptr, name.c_str(), nullptr, &cursor))
      found.push_back(id);
    std::vector<uint32_t> expected;
    auto const fold = [](std::string text) {
      for (char &c : text) c = static_cast<char>(std::toupper(c & 0x7F));
      return text;
    };
    Cards const all = model_.All();
    for (uint32_t const id : model_.Ids())
      if (fold(all.at(id).names[1]) == fold(name)) expected.push_back(id);
    ASSERT_EQ(found, expected) << name;
  }
  void Reopen() {
    book_.Close();
    ASSERT_EQ(ContentOf(path_), model_.Closed());
    model_.Reopen();
    ASSERT_EQ(book_.Open(path_.c_str(), 0), 0);
  }
  void Run(uint32_t seed, int steps) {
    random_.seed(seed);
    for (int i = 0; i < steps && !HasFatalFailure(); i++) {
      uint32_t const kind = Pick(40);
      kind < 10   ? Create()
      : kind < 36 ? Change()
      : kind < 37 ? CreateMany()
      : kind < 38 ? Find()
                  : Rarely();
    }
    if (HasFatalFailure()) return;
    ASSERT_EQ(book_.Ids(), model_.Ids());
    ASSERT_EQ(book_.All(), model_.All());
    Reopen();
  }

  FilesInMemory const inMemory_;
  TempHome home_;
  std::string path_;
  Book book_;
  Model model_;
  std::mt19937 random_;
};

TEST_F(ModelTest, SameResultsAndBytes) {
  int const rounds = std::getenv("ZOLT_SLOW") != nullptr ? 3000 : 60;
  for (int seed = 1; seed <= rounds && !HasFatalFailure(); seed++) {
    SCOPED_TRACE(seed);
    book_.Close();
    SetUp();
    model_ = {};
    Run(static_cast<uint32_t>(seed), 300);
  }
}

// As many free records and cards as fill several leaves of every table.
TEST_F(ModelTest, SameWithManyCards) {
  random_.seed(7);
  for (int i = 0; i < 4000; i++) Create();
  for (int i = 0; i < 3000 && !HasFatalFailure(); i++) {
    uint32_t const id = 1 + Pick(4000);
    if (Pick(3) == 0) {
      std::string const body = PickBody();
      ASSERT_EQ(book_.Save(id, body) != 0, model_.Save(id, body));
    } else {
      ASSERT_EQ(book_.DeleteCard(id) != 0, model_.Delete(id));
    }
    if (Pick(4) == 0) Create();
    if (Pick(200) == 0) Find();
  }
  Run(8, 200);
}

}  // namespace
}  // namespace zolt::testing
