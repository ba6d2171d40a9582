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
  std::vector<std::unique_ptr<CallCard>> cards_;
  std::vector<std::string> lists_;
  mutable char name_[32];
};

// What cards are kept in. A read fills a PCardStorage in all of them, and one that finds nothing
// ends the program.
class CardStore {
 public:
  CardStore() = default;
  virtual ~CardStore() = default;
  CardStore(CardStore const &) = delete;
  CardStore &operator=(CardStore const &) = delete;

  // Each on its own, or many in one transaction, or in few.
  virtual void Insert(uint32_t id) = 0;
  virtual void InsertAll(uint32_t first, uint32_t count) = 0;
  virtual void Load(uint32_t id, PCardStorage *card) = 0;
  virtual void Delete(uint32_t id) = 0;
};

class CardQueries : public CardStore {
 public:
  // The three names.
  virtual void FindById(uint32_t id) = 0;
  virtual uint32_t FindByName(char const *name) = 0;
  // How many names contain a text.
  virtual uint32_t CountLike(char const *text) = 0;
};

// What a program would take instead of ours.

// One table with an index on the name, a log (WAL, synchronous NORMAL), statements prepared once.
class SqliteCards : public CardQueries {
 public:
  SqliteCards(std::string const &path, CardWork const &work);
  ~SqliteCards() override;

  void Insert(uint32_t id) override;
  void InsertAll(uint32_t first, uint32_t count) override;
  void Load(uint32_t id, PCardStorage *card) override;
  void Delete(uint32_t id) override;
  void FindById(uint32_t id) override;
  uint32_t FindByName(char const *name) override;
  // By the index of names, or by the table.
  uint32_t CountLike(char const *text) override;
  uint32_t CountLikeInTable(char const *text);

 private:
  struct Statements;
  CardWork const &work_;
  std::unique_ptr<Statements> statements_;
};

// Keys are ids in the order of their bytes; the names stand before the list. LMDB with or without a
// sync at each commit.
std::unique_ptr<CardStore> OpenLmdb(std::string const &path, CardWork const &work, bool sync);
std::unique_ptr<CardStore> OpenLevel(std::string const &path, CardWork const &work);

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_CARD_STORES_H_
