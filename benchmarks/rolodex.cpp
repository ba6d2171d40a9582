// The card database beside what a program would keep cards in instead: bench_rolodex COUNT measures
// with so many cards, and names every figure by them.

#include <fcntl.h>
#include <leveldb/db.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "benchmarks/card_stores.h"
#include "benchmarks/measure.h"

namespace {

using namespace zolt::bench;

constexpr int kRounds = 7;
constexpr uint32_t kSingles = 1000;  // of single operations in a round
constexpr uint32_t kSynced = 20;     // of those that wait for a disk
constexpr char kCommonText[] = "lace 0000001";

class OurCards : public CardQueries {
 public:
  OurCards(std::string const &path, CardWork const &work) : path_(path), work_(work) {
    if (access(path.c_str(), F_OK) != 0) Require(Rolodex::Create(path.c_str()) == 0, "no new file");
    Open();
  }

  ~OurCards() override { _DisposeMem(list_); }

  void Open() { Require(book_.Open(path_.c_str(), 0) == 0, "our file did not open"); }
  void Close() { book_.Close(); }
  void Insert(uint32_t id) override {
    Require(book_.CreateCard(work_.card(id), work_.name(id), "", "", nullptr) != 0, "no new card");
  }
  void InsertAll(uint32_t first, uint32_t count) override {
    constexpr uint32_t kInOne = 10'000;
    for (uint32_t done = 0; done < count; done += kInOne)
      InsertMany(first + done, std::min(kInOne, count - done));
  }
  void Load(uint32_t id, PCardStorage *card) override {
    Require(book_.LoadCard(id, card) != 0, "no card");
  }
  void Delete(uint32_t id) override { Require(book_.DeleteCard(id) != 0, "no card to delete"); }
  void FindById(uint32_t id) override {
    char names[3][32];
    Require(book_.GetCardName(id, names[0], names[1], names[2]) != 0, "no names");
  }
  uint32_t FindByName(char const *name) override {
    return book_.FindCard(name, nullptr, nullptr, nullptr);
  }
  // The cards that CountLike looks at.
  void ListAll() { book_.SelectByCategory(nullptr, nullptr, nullptr, &list_); }
  uint32_t CountLike(char const *text) override {
    return book_.Select(list_, "_Label", CSContains, text, 127);
  }
  Rolodex &book() { return book_; }

 private:
  void InsertMany(uint32_t first, uint32_t count) {
    std::vector<PCardStorage *> cards;
    std::vector<std::string> texts;
    std::vector<CardNames> names;
    for (uint32_t i = 0; i < count; i++) {
      cards.push_back(work_.card(first + i));
      texts.emplace_back(work_.name(first + i));
    }
    for (std::string const &text : texts) names.push_back({text.c_str(), "", ""});
    Require(book_.CreateCards(count, cards.data(), names.data(), nullptr, nullptr) == count,
            "not all cards were added");
  }

  std::string path_;
  CardWork const &work_;
  Rolodex book_;
  char *list_ = NewMem(0);
};

class Bench {
 public:
  explicit Bench(uint32_t count) : count_(count), ending_("." + std::to_string(count)) {}

  void Run() {
    Fills();
    Reads();
    Singles();
    Openings();
    Rebuilding();
    Compaction();
  }

 private:
  std::string File(char const *name) const {
    return WorkFile(std::string("cards") + ending_ + name);
  }

  void Note(std::string const &what, double time) const {
    Report("rolodex." + what + ending_, time);
  }
  template <typename Work>
  void Time(std::string const &what, uint32_t items, Work const &work) const {
    Stopwatch const watch;
    work();
    Note(what, watch.Nanoseconds() / items);
  }
  // Often enough to go by 100,000 cards.
  template <typename Work>
  void TimeWalks(std::string const &what, Work const &work) const {
    uint32_t const walks = std::max(100'000 / count_, 1U);
    Time(what, walks, [&] {
      for (uint32_t i = 0; i < walks; i++) work();
    });
  }
  uint32_t Any() { return 1 + static_cast<uint32_t>(random_() % count_); }

  // All cards in one go, into new files.
  void Fills() {
    for (int round = 0; round < (count_ > 100'000 ? 1 : 3); round++) {
      RemoveFiles();
      Time("fill.ours", count_, [&] {
        OurCards ours(File(".ours"), work_);
        ours.InsertAll(1, count_);
      });
      Time("fill.sqlite", count_, [&] {
        SqliteCards sqlite(File(".sqlite"), work_);
        sqlite.InsertAll(1, count_);
      });
      Time("fill.lmdb", count_,
           [&] { OpenLmdb(File(".lmdb"), work_, false)->InsertAll(1, count_); });
      Time("fill.leveldb", count_,
           [&] { OpenLevel(File(".leveldb"), work_)->InsertAll(1, count_); });
    }
  }
  void RemoveFiles() const {
    for (char const *name :
         {".ours", ".sqlite", ".sqlite-wal", ".sqlite-shm", ".lmdb", ".lmdb-lock"})
      unlink(File(name).c_str());
    leveldb::DestroyDB(File(".leveldb"), {});
  }

  void TimeLoads(char const *name, CardStore *store) {
    std::vector<uint32_t> ids(kSingles * 10);
    for (uint32_t &id : ids) id = Any();
    PCardStorage card;
    Time(std::string("load.") + name, kSingles * 10, [&] {
      for (uint32_t const id : ids) store->Load(id, &card);
    });
  }
  void TimeFinds(char const *name, CardQueries *store) {
    std::vector<uint32_t> ids(kSingles * 10);
    for (uint32_t &id : ids) id = Any();
    std::string const ending = std::string(".") + name;
    Time("find.id" + ending, kSingles * 10, [&] {
      for (uint32_t const id : ids) store->FindById(id);
    });
    std::vector<std::string> texts;
    for (uint32_t const id : ids) texts.emplace_back(work_.name(id));
    Time("find.name" + ending, kSingles * 10, [&] {
      for (size_t i = 0; i < ids.size(); i++)
        Require(store->FindByName(texts[i].c_str()) == ids[i], "another card was found");
    });
    uint32_t matches = 0;
    TimeWalks("select" + ending, [&] { matches = store->CountLike(kCommonText); });
    Require(matches == std::min(count_, 19U) - 9 || count_ < 19, "another number was selected");
  }

  void Reads() {
    OurCards ours(File(".ours"), work_);
    SqliteCards sqlite(File(".sqlite"), work_);
    auto const lmdb = OpenLmdb(File(".lmdb"), work_, false);
    auto const level = OpenLevel(File(".leveldb"), work_);
    for (int i = 0; i < 3; i++) ours.FindByName(work_.name(1));
    ours.ListAll();
    for (int round = 0; round < kRounds; round++) {
      TimeLoads("ours", &ours);
      TimeLoads("sqlite", &sqlite);
      TimeLoads("lmdb", lmdb.get());
      TimeLoads("leveldb", level.get());
      TimeFinds("ours", &ours);
      TimeFinds("sqlite", &sqlite);
      TimeWalks("select.sqlite_table", [&] { sqlite.CountLikeInTable(kCommonText); });
    }
  }

  void TimeInserts(char const *name, CardStore *store, uint32_t count, uint32_t first) {
    Time(std::string("insert.") + name, count, [&] {
      for (uint32_t i = 0; i < count; i++) store->Insert(first + i);
    });
  }
  // In each step a card is deleted, and another one is made.
  void TimeTurns(char const *name, CardStore *store, uint32_t count, uint32_t first,
                 uint32_t next) {
    Time(std::string("turn.") + name, count, [&] {
      for (uint32_t i = 0; i < count; i++) {
        store->Delete(first + i);
        store->Insert(next + i);
      }
    });
  }
  void Singles() {
    OurCards ours(File(".ours"), work_);
    SqliteCards sqlite(File(".sqlite"), work_);
    auto const lmdb = OpenLmdb(File(".lmdb"), work_, false);
    auto const synced = OpenLmdb(File(".synced"), work_, true);
    auto const level = OpenLevel(File(".leveldb"), work_);
    uint32_t next = count_ + 1;
    ours.FindByName(work_.name(1));
    // The first change takes the index away.
    ours.Insert(next);
    sqlite.Insert(next);
    lmdb->Insert(next);
    level->Insert(next++);
    for (int round = 0; round < kRounds; round++) {
      TimeInserts("ours", &ours, kSingles, next);
      TimeInserts("sqlite", &sqlite, kSingles, next);
      TimeInserts("lmdb", lmdb.get(), kSingles, next);
      TimeInserts("leveldb", level.get(), kSingles, next);
      TimeInserts("lmdb_synced", synced.get(), kSynced, next);
      next += kSingles;
      uint32_t const first = 1 + static_cast<uint32_t>(round) * (count_ / kRounds);
      uint32_t const turns = std::min(kSingles, count_ / kRounds);
      TimeTurns("ours", &ours, turns, first, next);
      TimeTurns("sqlite", &sqlite, turns, first, next);
      TimeTurns("lmdb", lmdb.get(), turns, first, next);
      TimeTurns("leveldb", level.get(), turns, first, next);
      next += turns;
    }
    last_ = next - 1;
  }

  // With a card that was there from the beginning, and with one that came to lie somewhere else.
  void Openings() {
    std::string const ours = File(".ours");
    auto const openAndLoad = [&](uint32_t id) {
      PCardStorage card;
      Rolodex book;
      Require(book.Open(ours.c_str(), 0) == 0 && book.LoadCard(id, &card) != 0, "no opening");
    };
    for (int round = 0; round < 3 * kRounds; round++) {
      Time("open.ours", 1, [&] { openAndLoad(count_); });
      Time("open.moved.ours", 1, [&] { openAndLoad(last_); });
      Time("open.sqlite", 1, [&] {
        PCardStorage card;
        SqliteCards(File(".sqlite"), work_).Load(count_, &card);
      });
    }
  }

  static off_t SizeOf(std::string const &path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_size : 0;
  }
  // Reads a file, and writes it to another one unless that is -1.
  static void Copy(int from, int to) {
    static std::vector<char> buffer(size_t{1} << 18);
    while (true) {
      ssize_t const count = read(from, buffer.data(), buffer.size());
      if (count <= 0) return;
      Require(to < 0 || write(to, buffer.data(), static_cast<size_t>(count)) == count, "no copy");
    }
  }

  // As after a kill in the first change; with what the system still has of the file in memory, and
  // without, as after its start.
  void Rebuilding() {
    std::string const path = File(".ours");
    for (int round = 0; round < 2 * 3; round++) {
      bool const cold = round % 2 == 1;
      std::string const ending = cold ? ".cold" : "";
      Require(truncate(path.c_str(), SizeOf(path) - 12) == 0, "no cut");
      if (cold) Forget(path);
      Time("read.file" + ending, 1, [&] {
        int const file = open(path.c_str(), O_RDONLY);
        Copy(file, -1);
        close(file);
      });
      if (cold) Forget(path);
      Rolodex book;
      Time("rebuild.ours" + ending, 1,
           [&] { Require(book.Open(path.c_str(), 0) == 0, "it was not made anew"); });
    }
  }
  static void Forget(std::string const &path) {
    int const file = open(path.c_str(), O_RDONLY);
    fsync(file);
    posix_fadvise(file, 0, 0, POSIX_FADV_DONTNEED);
    close(file);
  }

  // Of a file half of whose cards are deleted.
  void Compaction() {
    std::string const path = File(".ours");
    std::string const copy = File(".copy");
    OurCards ours(path, work_);
    uint32_t cursor = 0;
    std::vector<uint32_t> ids;
    while (uint32_t const id = ours.book().FindCard(nullptr, nullptr, nullptr, &cursor))
      ids.push_back(id);
    for (size_t i = 0; i < ids.size(); i += 2) ours.Delete(ids[i]);
    ours.Close();
    Time("copy.file", 1, [&] {
      int const from = open(path.c_str(), O_RDONLY);
      int const to = open(copy.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
      Copy(from, to);
      Require(fdatasync(to) == 0, "no sync");
      close(to);
      close(from);
    });
    unlink(copy.c_str());
    ours.Open();
    ours.FindById(ids[1]);
    Time("compact.ours", 1, [&] { Require(ours.book().Compact(1) == 1, "not compacted"); });
  }

  uint32_t count_;
  std::string ending_;
  CardWork work_;
  std::mt19937 random_;
  uint32_t last_ = 0;
};

}  // namespace

int main(int count, char **arguments) {
  Require(count == 2, "usage: bench_rolodex COUNT");
  uint32_t const cards = static_cast<uint32_t>(std::stoul(arguments[1]));
  ReportVersion("leveldb", std::to_string(leveldb::kMajorVersion) + "." +
                               std::to_string(leveldb::kMinorVersion));
  Bench(cards).Run();
}
