#ifndef ZOLT41_TESTS_ROLODEX_MODEL_H_
#define ZOLT41_TESTS_ROLODEX_MODEL_H_

#include <strings.h>

#include <bitset>
#include <cctype>
#include <optional>

#include "tests/rolodex/book.h"

namespace zolt::testing {

using SomeNames = std::array<std::optional<std::string>, 3>;

// A database as its description has it, step by step over a list of heads and the bytes of a file,
// without any regard to speed or safety.
class Model {
 public:
  Model() : file_(kArea, '\0') { PutNumber(&file_, 0, 0x526F6C6F); }

  void Enter(uint32_t id, CardContent const &card) {
    Head head = {0, id, 0, SetOf(card.categories), card.names};
    for (std::string &name : head.names) name = name.substr(0, 31);
    Add(head, card.body);
    lastId_ = std::max(lastId_, id);
  }
  uint32_t Create(CardContent const &card) {
    Enter(lastId_ + 1, card);
    return lastId_;
  }
  bool Save(uint32_t id, std::string const &body) {
    if (Find(id) == nullptr) return false;
    Head const old = *Find(id);
    Delete(id);
    Add(old, body);
    return true;
  }
  bool Delete(uint32_t id) {
    if (Find(id) == nullptr) return false;
    auto head = heads_.begin() + CardIndex(id);
    head->id = 0;
    if (head != heads_.begin() && (head - 1)->id == 0) --head;
    while (head + 1 != heads_.end() && (head + 1)->id == 0) {
      head->size += (head + 1)->size;
      heads_.erase(head + 1);
    }
    WriteHead(*head);
    return true;
  }
  void SetNames(uint32_t id, SomeNames const &names) {
    Head *const head = Find(id);
    if (head == nullptr) return;
    for (size_t name = 0; name < 3; name++)
      if (names[name]) head->names[name] = names[name]->substr(0, 31);
    WriteHead(*head);
  }
  void SetCategories(uint32_t id, Categories const &list) {
    Head *const head = Find(id);
    if (head == nullptr) return;
    head->set = SetOf(list);
    WriteHead(*head);
  }
  bool Apply(Categories const &add, Categories const &remove, Categories const &filter) {
    bool changed = false;
    for (Head &head : heads_) {
      Set const set = (head.set & ~SetOf(remove)) | SetOf(add);
      if (head.id == 0 || (head.set & SetOf(filter)) != SetOf(filter) || set == head.set) continue;
      head.set = set;
      WriteHead(head);
      changed = true;
    }
    return changed;
  }
  // With the equal operator on the first name.
  uint32_t SelectLabel(Ids const &ids, std::string const &label, uint32_t category) {
    uint32_t count = 0;
    for (Head &head : heads_)
      if (head.id != 0) head.set.reset(category);
    for (uint32_t const id : ids) {
      Head *const head = Find(id);
      if (head == nullptr || strcasecmp(head->names[0].c_str(), label.c_str()) != 0) continue;
      head->set.set(category);
      count++;
    }
    return count;
  }
  uint32_t FindCard(SomeNames const &names, uint32_t *cursor) const {
    for (size_t i = *cursor; i < heads_.size(); i++) {
      bool equal = heads_[i].id != 0;
      for (size_t name = 0; name < 3; name++)
        equal = equal && (!names[name] || IsFoundBy(heads_[i].names[name], *names[name]));
      if (!equal) continue;
      *cursor = static_cast<uint32_t>(i) + 1;
      return heads_[i].id;
    }
    return 0;
  }
  bool Compact(int32_t force) {
    uint64_t bytes[2] = {};
    size_t records[2] = {};
    for (Head const &head : heads_) {
      bytes[head.id != 0] += head.size;
      records[head.id != 0]++;
    }
    bool const pays = ((force & 1) != 0 && bytes[0] != 0) || records[0] >= records[1] ||
                      (bytes[0] >= 50000 && bytes[0] >= bytes[1] / 5);
    if (!pays) return false;
    std::erase_if(heads_, [](Head const &head) { return head.id == 0; });
    end_ = kArea;
    for (Head &head : heads_) {
      std::string record = file_.substr(head.position, head.size);
      PutNumber(&record, 0, end_);
      Write(end_, record);
      head.position = end_;
      end_ += head.size;
    }
    file_.resize(end_);
    return dirty_ = true;
  }
  void SetCategory(uint32_t number, std::string const &bytes) { Write(8 + 80 * number, bytes); }
  // As after a clean close and an opening.
  void Reopen() {
    if (!dirty_) heads_ = clean_;
    clean_ = heads_;
    dirty_ = false;
  }

  // The file after a close.
  std::string Closed() const {
    std::vector<Head> const &heads = dirty_ ? heads_ : clean_;
    std::string bytes =
        file_ + Number(0xFFFFFFFF) + Number(static_cast<uint32_t>(heads.size())) + Number(lastId_);
    for (Head const &head : heads) bytes += head.Bytes();
    return bytes + Number(end_ + 4) + Number(static_cast<uint32_t>(8 + 124 * heads.size())) +
           Number(0x526F6C6F);
  }
  // In file order.
  Ids AllIds() const {
    Ids ids;
    for (Head const &head : heads_)
      if (head.id != 0) ids.push_back(head.id);
    return ids;
  }
  int32_t CardIndex(uint32_t id) const {
    for (size_t i = 0; i < heads_.size(); i++)
      if (id != 0 && heads_[i].id == id) return static_cast<int32_t>(i);
    return -1;
  }
  CardContent Card(uint32_t id) const {
    int32_t const index = CardIndex(id);
    if (index < 0) return {"!", {}};
    Head const &head = heads_[static_cast<size_t>(index)];
    Categories list = {0};
    for (size_t i = 0; i < 128; i++)
      if (head.set[i]) list.push_back(static_cast<unsigned char>(i));
    list[0] = static_cast<unsigned char>(list.size() - 1);
    if (head.set.all()) list = {255};
    return {file_.substr(head.position + 124, head.size - 124), head.names, list};
  }
  Cards All() const {
    Cards cards;
    for (uint32_t const id : AllIds()) cards[id] = Card(id);
    return cards;
  }

 private:
  using Set = std::bitset<128>;
  struct Head {
    uint32_t position, id, size;
    Set set;
    Names names;
    std::string Bytes() const {
      std::string bytes = Number(position) + Number(id) + Number(size);
      for (size_t word = 0; word < 4; word++)
        bytes += Number(static_cast<uint32_t>((set >> 32 * word & Set(0xFFFFFFFF)).to_ulong()));
      for (std::string name : names) {
        name.resize(32);
        bytes += name;
      }
      return bytes;
    }
  };

  static std::string Number(uint32_t number) {
    std::string bytes(4, '\0');
    PutNumber(&bytes, 0, number);
    return bytes;
  }
  static std::string Folded(std::string name) {
    for (char &c : name) c = static_cast<char>(std::toupper(c & 0x7F));
    return name;
  }
  // What folds to a NUL ends a name, too.
  static bool IsFoundBy(std::string const &name, std::string const &wanted) {
    return Folded(name) == Folded(wanted) || Folded(name).starts_with(Folded(wanted) + '\0');
  }
  static Set SetOf(Categories const &list) {
    Set set;
    if (list[0] == 255) return set.set();
    for (size_t i = 1; i <= list[0]; i++)
      if (list[i] < 128) set.set(list[i]);
    return set;
  }
  Head *Find(uint32_t id) {
    int32_t const index = CardIndex(id);
    return index < 0 ? nullptr : &heads_[static_cast<size_t>(index)];
  }
  void Write(size_t position, std::string const &bytes) {
    file_.resize(std::max(file_.size(), position + bytes.size()));
    file_.replace(position, bytes.size(), bytes);
  }
  void WriteHead(Head const &head) {
    Write(head.position, head.Bytes());
    dirty_ = true;
  }
  void Add(Head head, std::string const &body) {
    auto const s = static_cast<uint32_t>(body.size());
    auto best = heads_.end();
    uint32_t extra = 0x7FFFFFFF;
    for (auto i = heads_.begin(); i != heads_.end() && extra != 0; ++i) {
      uint32_t const f = i->size;
      if (i->id != 0 || (f != s + 124 && (f <= s + 248 || f - s - 124 >= extra))) continue;
      best = i;
      extra = f - s - 124;
    }
    head.size = s + 124;
    head.position = best == heads_.end() ? end_ : best->position;
    if (best == heads_.end()) {
      heads_.push_back(head);
      end_ += head.size;
    } else if (extra == 0) {
      *best = head;
    } else {
      best->position += head.size;
      best->size = extra;
      WriteHead(*best);
      heads_.insert(best, head);
    }
    WriteHead(head);
    Write(head.position + 124, body);
  }

  std::string file_;  // up to the end mark
  std::vector<Head> heads_;
  std::vector<Head> clean_;  // the heads as the file has them, while it is clean
  uint32_t end_ = kArea;
  uint32_t lastId_ = 0;
  bool dirty_ = false;
};

}  // namespace zolt::testing

#endif  // ZOLT41_TESTS_ROLODEX_MODEL_H_
