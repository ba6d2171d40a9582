#ifndef ZOLT41_TOOLS_ZOLT_BOOK_H_
#define ZOLT41_TOOLS_ZOLT_BOOK_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/zolt/book_file.h"
#include "tools/zolt/card_keys.h"
#include "tools/zolt/card_property.h"
#include "tools/zolt/verbs.h"

namespace zolt::tool {

// What stands in a card's head. Names are local text.
struct CardHead {
  uint32_t id;
  std::string names[3];
  std::vector<uint8_t> categories;
};

// An open database, closed with this. Throws where it cannot be opened; one that another program
// has open is waited for. To read, and in a dry run, the file is not changed, whatever its state,
// and one of which cards would be left out is not opened. To write, it is put in order; what that
// cuts off is told on standard error.
class Book {
 public:
  enum class Access { read, write };

  Book(Call const &call, Access access);

  std::string const &path() const { return path_; }
  Rolodex &rolodex() { return rolodex_; }

  // The categories that have a name, in UTF-8.
  std::vector<std::pair<uint8_t, std::string>> CategoryNames();
  // "0,Friends,17", or one name with commas in it. Throws for what is neither a number from 0 to
  // 127 nor the name of one category.
  std::vector<uint8_t> CategoriesFrom(std::string_view text);

  // Throws if the last operation on the database failed.
  void CheckDone() const;
  // To be called after the last change. Throws if it fails.
  void Close();

  std::vector<uint32_t> Ids(std::vector<uint8_t> const &required = {});
  // Calls for every card in file order; `what` is being done, for those who wait.
  void EachCard(char const *what, std::function<void(uint32_t id)> const &visit);
  CardHead Head(uint32_t id);
  // The card's properties, with what only this tool keeps in it left in.
  std::vector<CardProperty> Properties(uint32_t id);
  // Throws if the card cannot be read.
  void Load(uint32_t id, PCardStorage *card);

  // The cards that an operand names: id:N, key:..., name:TEXT, N or TEXT. Several end the verb with
  // 1 and are listed on standard error, unless --first or --all is given.
  std::vector<uint32_t> Find(std::string_view operand);
  uint32_t FindOne(std::string_view operand);

 private:
  int32_t OpenCopy();
  void TellNewPieces(std::vector<std::string> const &known);
  std::vector<uint32_t> Named(std::string_view text);
  std::vector<uint32_t> Keyed(std::string_view key);
  std::vector<uint8_t> CategoriesNamed(std::string_view name);
  uint8_t CategoryFrom(std::string_view word);
  [[noreturn]] void FailWithSeveral(std::string_view operand, std::vector<uint32_t> const &ids);

  Call const &call_;
  std::string path_;
  Rolodex rolodex_;
};

// The name of a category, "" if it has none; local text.
std::string NameOf(CategoryInfo const &info);
// "0,3,17"
std::string CategoriesText(std::vector<uint8_t> const &categories);
// Throws a usage error for what is no number from 0 to 127.
uint8_t CategoryNumber(std::string_view text);
// As the database takes them; each counts once.
std::vector<unsigned char> CategoryListOf(std::vector<uint8_t> const &categories);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_BOOK_H_
