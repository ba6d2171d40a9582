#ifndef ZOLT41_BENCH_CARD_STORES_H_
#define ZOLT41_BENCH_CARD_STORES_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zolt41/zolt41.h"

namespace zolt::bench {

// Cards of about 1 KiB: a hundred different lists, and a name of its own for each card. A card is
// known by its number, which is also its id in every store.
class CardWork {
 public:
  CardWork();

  PCardStorage *card(uint32_t number) const { return cards_[number % cards_.size()].get(); }
  std::string const &list(uint32_t number) const { return lists_[number % lists_.size()]; }
  // "Ada Lovelace 000123"; good until the next call.
  char const *name(uint32_t number) const;

 private:
  std::vector<std::unique_ptr<PCardStorage>> cards_;
  std::vector<std::string> lists_;
  mutable char name_[32];
};

// What a program would keep cards in instead. A read fills a PCardStorage in all of them, and one
// that finds nothing ends the program.

// One table with an index on the name, a log (WAL, synchronous NORMAL), statements prepared once.
class SqliteCards {
 public:
  SqliteCards(std::string const &path, CardWork const &work);
  ~SqliteCards();
  SqliteCards(SqliteCards const &) = delete;
  SqliteCards &operator=(SqliteCards const &) = delete;

  // Each on its own, or many in one transaction.
  void Insert(uint32_t id);
  void InsertAll(uint32_t first, uint32_t count);
  void Load(uint32_t id, PCardStorage *card);
  void Delete(uint32_t id);
  // The three names.
  void FindById(uint32_t id);
  uint32_t FindByName(char const *name);
  // How many names contain a text: by the index of names, or by the table.
  uint32_t CountLike(char const *text, bool inTable = false);

 private:
  struct Statements;
  CardWork const &work_;
  std::unique_ptr<Statements> statements_;
};

// Keys are ids in the order of their bytes; the names stand before the list. With or without a sync
// at each commit.
class LmdbCards {
 public:
  LmdbCards(std::string const &path, CardWork const &work, bool sync);
  ~LmdbCards();
  LmdbCards(LmdbCards const &) = delete;
  LmdbCards &operator=(LmdbCards const &) = delete;

  void Insert(uint32_t id);
  void InsertAll(uint32_t first, uint32_t count);
  void Load(uint32_t id, PCardStorage *card);
  void Delete(uint32_t id);

 private:
  struct Environment;
  CardWork const &work_;
  std::unique_ptr<Environment> environment_;
};

class LevelCards {
 public:
  LevelCards(std::string const &path, CardWork const &work);
  ~LevelCards();
  LevelCards(LevelCards const &) = delete;
  LevelCards &operator=(LevelCards const &) = delete;

  void Insert(uint32_t id);
  void InsertAll(uint32_t first, uint32_t count);
  void Load(uint32_t id, PCardStorage *card);
  void Delete(uint32_t id);

 private:
  struct Database;
  CardWork const &work_;
  std::unique_ptr<Database> database_;
};

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_CARD_STORES_H_
