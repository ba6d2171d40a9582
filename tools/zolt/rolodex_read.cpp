#include <sys/stat.h>

#include <algorithm>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>

#include "tools/zolt/book_cards.h"
#include "tools/zolt/card_documents.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/confirm.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/outcome.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/property_table.h"
#include "tools/zolt/table.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

using Json = nlohmann::ordered_json;

std::string LineOf(Json const &document) {
  return document.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

int Info(Call const &call) {
  Book book(call, Book::Access::read);
  struct stat status {};
  stat(book.path().c_str(), &status);
  size_t const cards = book.Ids().size();
  if (call.settings.json) {
    Json document = {
        {"schema", 1}, {"file", book.path()}, {"cards", cards}, {"size", status.st_size}};
    document["categories"] = Json::array();
    for (auto const &[category, name] : book.CategoryNames())
      document["categories"].push_back({{"category", category}, {"name", name}});
    call.out.Write(LineOf(document));
    return kDone;
  }
  Table table(call.settings, call.out, 2);
  table.Add({"file", book.path()});
  table.Add({"cards", std::to_string(cards)});
  table.Add({"size", std::to_string(status.st_size)});
  for (auto const &[category, name] : book.CategoryNames())
    table.Add({"category " + std::to_string(category), name});
  table.Finish();
  return kDone;
}

int List(Call const &call) {
  Book book(call, Book::Access::read);
  std::vector<uint8_t> required;
  for (std::string_view const word : call.arguments.Values(OptionId::category))
    for (uint8_t const category : book.CategoriesFrom(word)) required.push_back(category);
  WriteHeads(&book, book.Ids(required), call);
  return kDone;
}

void ShowCard(Book *book, uint32_t id, Call const &call) {
  std::vector<CardProperty> properties = book->Properties(id);
  std::erase_if(properties,
                [](CardProperty const &property) { return property.name == kKeyProperty; });
  WriteProperties(properties, call);
}

// One that was asked for is an object, all that are so named are an array of them.
void WriteCardDocuments(Book *book, std::vector<uint32_t> const &ids, Call const &call) {
  std::string documents;
  for (uint32_t const id : ids) {
    std::vector<CardProperty> const properties = book->Properties(id);
    documents += (documents.empty() ? "" : ",\n") + CardInBookDocument(book->Head(id), &properties);
  }
  call.out.Write(call.arguments.Has(OptionId::all) ? "[" + documents + "]\n" : documents + "\n");
}

int Get(Call const &call) {
  Book book(call, Book::Access::read);
  std::vector<uint32_t> const ids = book.Find(call.operands[0]);
  std::string const file(call.arguments.Value(OptionId::output));
  if (!call.arguments.Has(OptionId::output)) {
    if (call.settings.json) {
      WriteCardDocuments(&book, ids, call);
      return kDone;
    }
    for (uint32_t const id : ids) ShowCard(&book, id, call);
    return kDone;
  }
  if (file.empty() || file == "-") Refuse("-o", "names no file");
  if (ids.size() > 1) Refuse("-o", "takes one card");
  if (IsThere(file)) Confirm("write over " + file, call.settings);
  std::unique_ptr<CallCard> const card = CardFromBook(&book, ids.front());
  if (!call.settings.dryRun) SaveCardAs(card.get(), CardFormatBinary, file);
  return TellFile(file, call);
}

using Properties = std::vector<CardProperty>;

bool HasText(CardHead const &head, Properties const &properties, std::string const &text) {
  return std::ranges::any_of(TextsOf(head, properties),
                             [&text](std::string const &each) { return Contains(each, text); });
}

// Lists the cards of the book that are taken.
int ListThose(Call const &call,
              std::function<bool(CardHead const &, Properties const &)> const &takes) {
  Book book(call, Book::Access::read);
  std::vector<uint32_t> ids;
  book.EachCard("searching", [&](uint32_t id) {
    if (takes(book.Head(id), book.Properties(id))) ids.push_back(id);
  });
  WriteHeads(&book, ids, call);
  return ids.empty() ? kNo : kDone;
}

int Find(Call const &call) {
  std::string const text(call.operands[0]);
  return ListThose(call, [&text](CardHead const &head, Properties const &properties) {
    return HasText(head, properties, text);
  });
}

// As mail programs read it: a heading line, then address, name and type with tabs between.
int Query(Call const &call) {
  std::string const text(call.operands[0]);
  Book book(call, Book::Access::read);
  std::string lines;
  Json documents = Json::array();
  book.EachCard("searching", [&](uint32_t id) {
    CardHead const head = book.Head(id);
    Properties const properties = book.Properties(id);
    if (!HasText(head, properties, text)) return;
    for (CardProperty const &property : properties) {
      std::optional<std::string> const address = TextOfProperty(property);
      if (!SameName(property.name, "EMAIL") || !address || address->empty()) continue;
      std::string const name = ToUtf8(head.names[0]);
      lines +=
          Escape(*address) + "\t" + Escape(name) + "\t" + Escape(FlagsText(property.flags)) + "\n";
      documents.push_back({{"schema", 1},
                           {"address", *address},
                           {"name", name},
                           {"flags", FlagNames(property.flags)}});
    }
  });
  std::string const heading =
      std::to_string(documents.size()) + (documents.size() == 1 ? " address\n" : " addresses\n");
  call.out.Write(call.settings.json ? LineOf(documents) : heading + lines);
  return documents.empty() ? kNo : kDone;
}

struct Condition {
  std::string property;
  CSOper oper;
  std::string value;  // UTF-8
};

Condition ConditionFrom(std::string_view expression) {
  size_t const equals = expression.find('=');
  if (equals == std::string_view::npos || equals == 0) {
    Refuse(std::string(expression), "is no condition", "it is PROPERTY=V, *=V, ^=V or $=V");
  }
  std::string_view property = expression.substr(0, equals);
  struct Row {
    char sign;
    CSOper oper;
  };
  CSOper oper = CSEquals;
  for (Row const row : {Row{'*', CSContains}, Row{'^', CSBeginsWith}, Row{'$', CSEndsWith}}) {
    if (!property.ends_with(row.sign)) continue;
    oper = row.oper;
    property.remove_suffix(1);
    break;
  }
  return {PropertyName(property), oper, std::string(expression.substr(equals + 1))};
}

bool Compares(std::string const &text, CSOper oper, std::string const &value) {
  std::string const a = Folded(text);
  std::string const b = Folded(value);
  switch (oper) {
    case CSContains:
      return a.find(b) != std::string::npos;
    case CSBeginsWith:
      return a.starts_with(b);
    case CSEndsWith:
      return a.ends_with(b);
    case CSEquals:
      break;
  }
  return a == b;
}

bool Meets(CardHead const &head, Properties const &properties, Condition const &condition) {
  if (SameName(condition.property, "_Label")) {
    return Compares(ToUtf8(head.names[0]), condition.oper, condition.value);
  }
  return std::ranges::any_of(properties, [&condition](CardProperty const &property) {
    std::optional<std::string> const text = TextOfProperty(property);
    return SameName(property.name, condition.property) && text &&
           Compares(*text, condition.oper, condition.value);
  });
}

int Select(Call const &call) {
  std::vector<Condition> conditions;
  for (std::string_view const operand : call.operands) conditions.push_back(ConditionFrom(operand));
  return ListThose(call, [&conditions](CardHead const &head, Properties const &properties) {
    return std::ranges::all_of(
        conditions, [&](Condition const &condition) { return Meets(head, properties, condition); });
  });
}

int Dupes(Call const &call) {
  Book book(call, Book::Access::read);
  std::map<std::string, std::vector<uint32_t>> groups;
  book.EachCard("comparing",
                [&](uint32_t id) { groups[Folded(book.Head(id).names[0])].push_back(id); });
  std::vector<uint32_t> twins;
  for (auto const &[name, ids] : groups)
    if (ids.size() > 1) twins.insert(twins.end(), ids.begin(), ids.end());
  WriteHeads(&book, twins, call);
  return twins.empty() ? kDone : kNo;
}

constexpr OptionSet kBookOnly = {OptionId::file};

}  // namespace

Verb const kRolodexInfo = {
    .group = "rolodex",
    .name = "info",
    .operands = "",
    .summary = "what a book holds",
    .options = kBookOnly,
    .least = 0,
    .most = 0,
    .run = Info,
    .description = "Shows the file, the number of cards, the size, and the names of categories.",
    .examples = "  zolt rolodex info\n",
};

Verb const kRolodexList = {
    .group = "rolodex",
    .name = "list",
    .operands = "",
    .summary = "the cards of a book",
    .options = {OptionId::file, OptionId::category},
    .least = 0,
    .most = 0,
    .run = List,
    .description =
        "Lists number, three names and categories of each card, or of those that are in all\n"
        "categories given, by their numbers or the names that rolodex category gave them.",
    .examples = "  zolt rolodex list\n  zolt rolodex list --category Friends --category 7\n",
};

Verb const kRolodexGet = {
    .group = "rolodex",
    .name = "get",
    .operands = "CARD",
    .summary = "a card of a book",
    .options = {OptionId::file, OptionId::first, OptionId::all, OptionId::output},
    .least = 1,
    .most = 1,
    .run = Get,
    .description =
        "Shows the properties of a card, or with -o writes it as a card file. A card is named\n"
        "id:N, key:KEY, name:TEXT, or just N or TEXT: the first name, or a part of it. Several\n"
        "are 1 and are listed, unless --first or --all is given.",
    .examples = "  zolt rolodex get 12\n  zolt rolodex get 'Anna Bell' -o anna.card\n",
};

Verb const kRolodexFind = {
    .group = "rolodex",
    .name = "find",
    .operands = "TEXT",
    .summary = "cards in which a text stands",
    .options = kBookOnly,
    .least = 1,
    .most = 1,
    .run = Find,
    .description =
        "Lists the cards that have TEXT in their names, e-mail addresses or numbers, without\n"
        "regard to case. It only reads, and ends with 1 if there is none.",
    .examples = "  zolt rolodex find bell\n",
};

Verb const kRolodexQuery = {
    .group = "rolodex",
    .name = "query",
    .operands = "TEXT",
    .summary = "addresses for a mail program",
    .options = kBookOnly,
    .least = 1,
    .most = 1,
    .run = Query,
    .description =
        "Prints a heading line, and then e-mail address, name and type with tabs between, as mail\n"
        "programs want it. Ends with 1 if there is none.",
    .examples =
        "  zolt rolodex query bell\n  set query_command = \"zolt rolodex query %s\"   # mutt\n",
};

Verb const kRolodexSelect = {
    .group = "rolodex",
    .name = "select",
    .operands = "EXPR...",
    .summary = "cards that meet conditions",
    .options = kBookOnly,
    .least = 1,
    .most = kAnyNumber,
    .run = Select,
    .description =
        "Lists the cards that meet all conditions: PROPERTY=V, PROPERTY*=V (contains),\n"
        "PROPERTY^=V (begins with), PROPERTY$=V (ends with); _Label is the first name. Case does\n"
        "not matter. Nothing is written. Ends with 1 if there is none.",
    .examples = "  zolt rolodex select 'ORG*=north' 'TEL^=+44'\n",
};

Verb const kRolodexDupes = {
    .group = "rolodex",
    .name = "dupes",
    .operands = "",
    .summary = "cards with the same name",
    .options = kBookOnly,
    .least = 0,
    .most = 0,
    .run = Dupes,
    .description =
        "Lists the cards whose first name another card has too; ends with 1 if there are any.",
    .examples = "  zolt rolodex dupes\n",
};

}  // namespace zolt::tool
