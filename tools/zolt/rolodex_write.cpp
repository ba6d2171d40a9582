#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <set>

#include "tools/zolt/book_cards.h"
#include "tools/zolt/card_documents.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/confirm.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/help.h"
#include "tools/zolt/outcome.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

namespace fs = std::filesystem;

constexpr size_t kLongestName = 31;

int Create(Call const &call) {
  std::string const path = BookPath(call);
  if (IsThere(path)) Refuse(path, "exists");
  if (call.settings.dryRun) return TellFile(path, call);
  // Create empties what is there, so the file is made first, by one of all who try.
  if (AFS_LZCreateFile(path.c_str(), 0, 0) != 0) {
    if (IsThere(path)) Refuse(path, "exists");
    throw FileFailure(path);
  }
  if (Rolodex::Create(path.c_str()) != 0) {
    ToolError const failure = FileFailure(path);
    if (failure.code != kLocked) unlink(path.c_str());
    throw failure;
  }
  if (!call.settings.quiet && !call.settings.json) WriteError("zolt: " + Escape(path) + ": made");
  return TellFile(path, call);
}

// What is printed of cards that were added: their numbers, which those do not have yet that would
// be.
void WriteIds(std::vector<uint32_t> const &ids, size_t count, Call const &call) {
  if (call.settings.dryRun && !call.settings.quiet && !call.settings.json) {
    WriteError("zolt: " + Escape(BookPath(call)) + ": would get " + std::to_string(count) +
               (count == 1 ? " card" : " cards"));
  }
  std::string text;
  for (uint32_t const id : ids)
    text += (call.settings.json ? (text.empty() ? "[" : ",") : "") + std::to_string(id) +
            (call.settings.json ? "" : "\n");
  if (call.settings.json) text += text.empty() ? "[]\n" : "]\n";
  call.out.Write(text);
}

int Add(Call const &call) {
  std::vector<NewCard> cards;
  for (std::string_view const operand : call.operands) {
    std::unique_ptr<CallCard> const card = LoadCard(call, operand);
    cards.push_back(CardForBook(card.get(), fs::path(operand).stem()));
  }
  Book book(call, Book::Access::write);
  std::vector<uint32_t> ids;
  if (!call.settings.dryRun)
    for (NewCard const &card : cards) ids.push_back(AddToBook(&book, card));
  book.Close();
  WriteIds(ids, cards.size(), call);
  return CodeOfChange(call, true);
}

void AddText(PCardStorage *card, char const *name, uint32_t flags, std::string_view text) {
  std::string const value = PropertyValue(PropertyUnicode, text);
  card->AddProp(name, PropertyUnicode, flags, value.data(), static_cast<int32_t>(value.size()));
}

int New(Call const &call) {
  NewCard card;
  card.list = std::make_unique<CallCard>(CardFormatNone);
  AddText(card.list.get(), "FN", 0, call.operands[0]);
  for (std::string_view const email : call.arguments.Values(OptionId::email))
    AddText(card.list.get(), "EMAIL", PropertyHome, email);
  for (std::string_view const number : call.arguments.Values(OptionId::tel))
    AddText(card.list.get(), "TEL", PropertyHome | PropertyVoice, number);
  NameCard(&card, "");
  Book book(call, Book::Access::write);
  std::vector<uint32_t> ids;
  if (!call.settings.dryRun) ids.push_back(AddToBook(&book, card));
  book.Close();
  WriteIds(ids, 1, call);
  return CodeOfChange(call, true);
}

int Replace(Call const &call) {
  std::unique_ptr<CallCard> const card = LoadCard(call, call.operands[1]);
  NewCard const added = CardForBook(card.get(), fs::path(call.operands[1]).stem());
  Book book(call, Book::Access::write);
  uint32_t const id = book.FindOne(call.operands[0]);
  bool const changes = !IsInBook(&book, id, added);
  if (changes && !call.settings.dryRun) SaveInBook(&book, id, added);
  CardHead const head = book.Head(id);
  book.Close();
  CardNews news(call);
  news.Add(head, changes ? Done(call, "replaced") : "unchanged", changes);
  news.FinishOne();
  return CodeOfChange(call, changes);
}

int Remove(Call const &call) {
  Book book(call, Book::Access::write);
  std::vector<uint32_t> ids;
  for (std::string_view const operand : call.operands) {
    for (uint32_t const id : book.Find(operand))
      if (std::ranges::find(ids, id) == ids.end()) ids.push_back(id);
  }
  if (ids.size() > 1) Confirm("remove " + std::to_string(ids.size()) + " cards", call.settings);
  CardNews news(call);
  for (uint32_t const id : ids) {
    CardHead const head = book.Head(id);
    if (!call.settings.dryRun && book.rolodex().DeleteCard(id) == 0) throw BookFailure(book.path());
    news.Add(head, Done(call, "removed"), true);
  }
  book.Close();
  news.FinishSeveral();
  return CodeOfChange(call, true);
}

int Rename(Call const &call) {
  std::string const name = ToLocal(call.operands[1]);
  if (name.size() > kLongestName) {
    Refuse(std::string(call.operands[1]), "a name in a book has at most 31 bytes");
  }
  Book book(call, Book::Access::write);
  CardHead head = book.Head(book.FindOne(call.operands[0]));
  bool const changes = head.names[0] != name;
  if (changes && !call.settings.dryRun) {
    book.rolodex().SetCardName(head.id, name.c_str(), nullptr, nullptr);
    book.CheckDone();
  }
  book.Close();
  if (!call.settings.dryRun) head.names[0] = name;
  CardNews news(call);
  news.Add(head, changes ? Done(call, "renamed") : "unchanged", changes);
  news.FinishOne();
  return CodeOfChange(call, changes);
}

// "+3", "-Friends"
bool IsTag(std::string_view operand) {
  return operand.size() > 1 && (operand[0] == '+' || operand[0] == '-');
}

// Gives whether that changes the card.
bool TagCard(Book *book, uint32_t id, std::vector<uint8_t> const &add,
             std::vector<uint8_t> const &remove, bool write, CardNews *news) {
  CardHead head = book->Head(id);
  std::set<uint8_t> set(head.categories.begin(), head.categories.end());
  for (uint8_t const category : remove) set.erase(category);
  set.insert(add.begin(), add.end());
  std::vector<uint8_t> const categories(set.begin(), set.end());
  bool const changes = categories != head.categories;
  if (changes && write) {
    book->rolodex().SetCardCategories(id, CategoryListOf(categories).data());
    book->CheckDone();
    head.categories = categories;
  }
  std::string const now = categories.empty() ? "no category" : CategoriesText(categories);
  news->Add(head, changes ? (write ? "in " : "would be in ") + now : "unchanged", changes);
  return changes;
}

int Tag(Call const &call) {
  std::vector<std::string_view> tags;
  std::vector<std::string_view> cards;
  for (std::string_view const operand : call.operands)
    (IsTag(operand) ? tags : cards).push_back(operand);
  if (cards.empty() || tags.empty()) {
    Refuse("", "rolodex tag takes cards and categories", "usage: " + UsageOf(kRolodexTag));
  }
  Book book(call, Book::Access::write);
  std::vector<uint8_t> add;
  std::vector<uint8_t> remove;
  for (std::string_view const tag : tags) {
    std::vector<uint8_t> const named = book.CategoriesFrom(tag.substr(1));
    std::vector<uint8_t> &list = tag[0] == '+' ? add : remove;
    list.insert(list.end(), named.begin(), named.end());
  }
  CardNews news(call);
  bool const write = !call.settings.dryRun;
  bool changes = false;
  for (std::string_view const card : cards)
    for (uint32_t const id : book.Find(card))
      changes |= TagCard(&book, id, add, remove, write, &news);
  book.Close();
  news.FinishSeveral();
  return CodeOfChange(call, changes);
}

std::string CategoryDocument(uint8_t number, std::string const &name) {
  return "{\"schema\":1,\"category\":" + std::to_string(number) +
         ",\"name\":" + JsonText(ToUtf8(name));
}

int ShowCategory(uint8_t number, Call const &call) {
  Book book(call, Book::Access::read);
  std::string const name = NameOf(*book.rolodex().GetCategoryInfo(number));
  if (name.empty()) throw ToolError(kNo, "absent", std::string(call.operands[0]), "has no name");
  call.out.Write(
      (call.settings.json ? CategoryDocument(number, name) + "}" : Escape(ToUtf8(name))) + "\n");
  return kDone;
}

int Category(Call const &call) {
  uint8_t const number = CategoryNumber(call.operands[0]);
  if (call.operands.size() < 2) return ShowCategory(number, call);
  std::string const name = ToLocal(call.operands[1]);
  Book book(call, Book::Access::write);
  CategoryInfo info = *book.rolodex().GetCategoryInfo(number);
  if (name.size() >= sizeof info.text) {
    Refuse(std::string(call.operands[1]), "a category's name has at most 63 bytes");
  }
  bool const changes = name != NameOf(info);
  std::memset(info.text, 0, sizeof info.text);
  name.copy(info.text, name.size());
  if (changes && !call.settings.dryRun) {
    book.rolodex().SetCategoryInfo(number, &info);
    book.CheckDone();
  }
  book.Close();
  if (call.settings.json) {
    call.out.Write(CategoryDocument(number, name) + ",\"changed\":" + (changes ? "true" : "false") +
                   "}\n");
  } else if (!call.settings.quiet) {
    WriteError("category " + std::to_string(number) + ": " +
               (changes ? Done(call, "named") : "unchanged"));
  }
  return CodeOfChange(call, changes);
}

}  // namespace

Verb const kRolodexCreate = {
    .group = "rolodex",
    .name = "create",
    .operands = "",
    .summary = "make an empty book",
    .options = {OptionId::file},
    .least = 0,
    .most = 0,
    .run = Create,
    .description =
        "Makes a book: the file of -f, else that of ZOLT_ROLODEX, else contacts.rolodex in the\n"
        "home. It must not exist.",
    .examples = "  zolt rolodex create\n  zolt rolodex create -f team.rolodex\n",
};

Verb const kRolodexAdd = {
    .group = "rolodex",
    .name = "add",
    .operands = "CARD...",
    .summary = "put card files into a book",
    .options = {OptionId::file},
    .least = 1,
    .most = kAnyNumber,
    .run = Add,
    .description =
        "Adds card files or card texts, and prints the number of each. Names in the book are FN\n"
        "(else the file's name), ORG, and the first EMAIL. See rolodex import for what is to be\n"
        "there once.",
    .examples = "  zolt rolodex add anna.card\n",
};

Verb const kRolodexNew = {
    .group = "rolodex",
    .name = "new",
    .operands = "NAME",
    .summary = "a new card with a name",
    .options = {OptionId::file, OptionId::email, OptionId::tel},
    .least = 1,
    .most = 1,
    .run = New,
    .description = "Makes a card with that name, and addresses and numbers; prints its number.",
    .examples = "  zolt rolodex new 'Anna Bell' --email anna@example.org --tel 5551234\n",
};

Verb const kRolodexReplace = {
    .group = "rolodex",
    .name = "replace",
    .operands = "CARD FILE",
    .summary = "put a card file in the place of a card",
    .options = {OptionId::file, OptionId::first},
    .least = 2,
    .most = 2,
    .run = Replace,
    .description = "The card keeps its number and categories and gets the names of the new one.",
    .examples = "  zolt rolodex replace 12 anna.card\n",
};

Verb const kRolodexRemove = {
    .group = "rolodex",
    .name = "rm",
    .operands = "CARD...",
    .summary = "remove cards",
    .options = {OptionId::file, OptionId::first, OptionId::all},
    .least = 1,
    .most = kAnyNumber,
    .run = Remove,
    .description = "Removes cards for good. More than one needs a yes.",
    .examples = "  zolt rolodex rm 12\n",
};

Verb const kRolodexRename = {
    .group = "rolodex",
    .name = "rename",
    .operands = "CARD NAME",
    .summary = "give a card another name",
    .options = {OptionId::file, OptionId::first},
    .least = 2,
    .most = 2,
    .run = Rename,
    .description =
        "Changes the first name in the book, of at most 31 bytes; the card stays as it is.",
    .examples = "  zolt rolodex rename 12 'Anna Bell-Smith'\n",
};

Verb const kRolodexTag = {
    .group = "rolodex",
    .name = "tag",
    .operands = "CARD... [+CATEGORY] [-CATEGORY]",
    .summary = "put cards into categories and take them out",
    .options = {OptionId::file, OptionId::first, OptionId::all},
    .least = 2,
    .most = kAnyNumber,
    .run = Tag,
    .description =
        "A category is a number from 0 to 127, or the name that rolodex category gave it; several\n"
        "may stand behind one sign. An option of one letter stands alone here, as in -f FILE, and "
        "a\n"
        "name of one letter goes behind --. Ends with 1 for a name that no category has, or that\n"
        "several have.",
    .examples =
        "  zolt rolodex tag 12 +3 -7\n"
        "  zolt rolodex tag 'Anna Bell' +Friends,2 -Family\n",
    .signedNames = true,
};

Verb const kRolodexCategory = {
    .group = "rolodex",
    .name = "category",
    .operands = "N [NAME]",
    .summary = "the name of a category",
    .options = {OptionId::file},
    .least = 1,
    .most = 2,
    .run = Category,
    .description =
        "Prints the name of a category, or sets it; an empty one takes it away. rolodex tag and\n"
        "rolodex list take the name in place of the number.",
    .examples =
        "  zolt rolodex category 3 Friends\n"
        "  zolt rolodex list --category Friends\n",
};

}  // namespace zolt::tool
