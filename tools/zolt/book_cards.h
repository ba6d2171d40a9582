#ifndef ZOLT41_TOOLS_ZOLT_BOOK_CARDS_H_
#define ZOLT41_TOOLS_ZOLT_BOOK_CARDS_H_

#include <memory>
#include <string>
#include <vector>

#include "tools/zolt/book.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

// A card on its way into a book: its list with its key as a property, and the names that it gets:
// FN, else `otherwise`; ORG; the first EMAIL.
struct NewCard {
  std::unique_ptr<CallCard> list;
  std::string names[3];
  std::string key;  // 32 bytes, or ""
};

// The bytes of a card's list.
std::string ListOf(PCardStorage *card);

// The key that a card of a book has, or "".
std::string KeyIn(PCardStorage *card);

NewCard CardForBook(CallCard *card, std::string const &otherwise);
void NameCard(NewCard *card, std::string const &otherwise);
// Throws if that fails. Gives the id.
uint32_t AddToBook(Book *book, NewCard const &card);
// In the place of the card that has the id. Throws if that fails.
void SaveInBook(Book *book, uint32_t id, NewCard const &card);
// The card that has the id is just that, with its names.
bool IsInBook(Book *book, uint32_t id, NewCard const &card);

// A card of a book as a card of its own, without what only this tool keeps in it.
std::unique_ptr<CallCard> CardFromBook(Book *book, uint32_t id);

// The texts of a card that people look for: names, e-mail and numbers, in UTF-8.
std::vector<std::string> TextsOf(CardHead const &head, std::vector<CardProperty> const &properties);
// Contained, without regard to the case of ASCII letters.
bool Contains(std::string const &text, std::string const &part);

// Rows of heads: id, three names, categories; or with --json an array.
void WriteHeads(Book *book, std::vector<uint32_t> const &ids, Call const &call);
// With the properties, if they are not null.
std::string CardInBookDocument(CardHead const &head, std::vector<CardProperty> const *properties);

// Tells what became of cards, or would: "card ID NAME: what" on standard error, unless it is to be
// quiet; or with --json one document in the end, of one card or of several.
class CardNews {
 public:
  explicit CardNews(Call const &call) : call_(call) {}

  void Add(CardHead const &head, std::string const &what, bool changes);
  void FinishOne();
  void FinishSeveral();

 private:
  Call const &call_;
  std::string documents_;
};

// What was done, or in a dry run would be.
std::string Done(Call const &call, std::string const &what);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_BOOK_CARDS_H_
