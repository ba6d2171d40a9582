#include "tools/zolt/book_cards.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <nlohmann/json.hpp>

#include "tools/zolt/card_documents.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/progress.h"
#include "tools/zolt/table.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr uint32_t kNowhere = 0xFFFFFFFF;
constexpr size_t kNameLength = 31;

std::unique_ptr<CallCard> CopyOf(PCardStorage *card) {
  auto copy = std::make_unique<CallCard>(CardFormatNone);
  std::string const list = ListOf(card);
  copy->Set(list.data(), static_cast<int32_t>(list.size()));
  return copy;
}

std::string TextOf(PCardStorage *card, char const *name) {
  for (CardProperty const &property : PropertiesOf(card)) {
    std::optional<std::string> const text = TextOfProperty(property);
    if (SameName(property.name, name) && text && !text->empty()) return *text;
  }
  return "";
}

// Takes away what keeps the key; gives that, or "".
std::string TakeKey(PCardStorage *card) {
  std::string key = KeyIn(card);
  for (uint32_t at = 0; (at = card->FindProp(kKeyProperty, 0, 0, 0, nullptr)) != kNowhere;)
    card->DeleteProp(at);
  return key;
}

// What the code page lacks becomes a question mark: it is a name to look at, and the card has it
// whole.
std::string LocalName(std::string const &utf8) {
  std::string local;
  for (size_t at = 0; at < utf8.size();) {
    size_t end = at + 1;
    while (end < utf8.size() && (utf8[end] & 0xC0) == 0x80) end++;
    try {
      local += ToLocal(utf8.substr(at, end - at));
    } catch (ToolError const &) {
      local += '?';
    }
    at = end;
  }
  return local;
}

}  // namespace

std::string ListOf(PCardStorage *card) {
  char *const block = card->Get();
  if (block == nullptr) throw std::bad_alloc();
  std::string list(block, GetMemSize(block));
  _DisposeMem(block);
  return list;
}

std::string KeyIn(PCardStorage *card) {
  uint32_t length = 0;
  uint32_t const place = card->FindProp(kKeyProperty, 0, 0, 0, nullptr);
  char const *const value = card->GetPropA(place, &length, nullptr, nullptr, nullptr);
  std::string key(value == nullptr ? "" : std::string(value, length));
  return IsKey(key) ? key : "";
}

void NameCard(NewCard *card, std::string const &otherwise) {
  std::string const full = TextOf(card->list.get(), "FN");
  card->names[0] = LocalName(full.empty() ? otherwise : full);
  card->names[1] = LocalName(TextOf(card->list.get(), "ORG"));
  card->names[2] = LocalName(TextOf(card->list.get(), "EMAIL"));
}

NewCard CardForBook(CallCard *card, std::string const &otherwise) {
  card->SavePrefs();
  NewCard added;
  added.list = CopyOf(card);
  added.key = KeyOf(*card);
  // A card that brings one as a property is one that a book had.
  std::string const brought = TakeKey(added.list.get());
  if (added.key.empty()) added.key = brought;
  if (!added.key.empty()) {
    added.list->AddProp(kKeyProperty, PropertyData, PropertyLocal, added.key.data(), kKeySize);
  }
  NameCard(&added, otherwise);
  return added;
}

uint32_t AddToBook(Book *book, NewCard const &card) {
  uint32_t const id =
      book->rolodex().CreateCard(card.list.get(), card.names[0].c_str(), card.names[1].c_str(),
                                 card.names[2].c_str(), nullptr);
  if (id == 0) throw BookFailure(book->path());
  return id;
}

void SaveInBook(Book *book, uint32_t id, NewCard const &card) {
  if (book->rolodex().SaveCard(id, card.list.get()) == 0) throw BookFailure(book->path());
  book->rolodex().SetCardName(id, card.names[0].c_str(), card.names[1].c_str(),
                              card.names[2].c_str());
  book->CheckDone();
}

bool IsInBook(Book *book, uint32_t id, NewCard const &card) {
  CardHead const head = book->Head(id);
  for (size_t i = 0; i < std::size(head.names); i++)
    if (head.names[i] != card.names[i].substr(0, kNameLength)) return false;
  PCardStorage present;
  book->Load(id, &present);
  return ListOf(&present) == ListOf(card.list.get());
}

std::unique_ptr<CallCard> CardFromBook(Book *book, uint32_t id) {
  auto card = std::make_unique<CallCard>(CardFormatBinary);
  book->Load(id, card.get());
  std::string const key = TakeKey(card.get());
  if (!key.empty()) card->SetKey(key.data());
  return card;
}

std::vector<std::string> TextsOf(CardHead const &head,
                                 std::vector<CardProperty> const &properties) {
  std::vector<std::string> texts;
  for (std::string const &name : head.names) texts.push_back(ToUtf8(name));
  for (CardProperty const &property : properties) {
    bool const looked = std::ranges::any_of(
        std::initializer_list<char const *>{"FN", "N", "ORG", "EMAIL", "TEL", "FAX", "X-BRNDL-IP"},
        [&property](char const *name) { return SameName(property.name, name); });
    std::optional<std::string> text = looked ? TextOfProperty(property) : std::nullopt;
    if (text) texts.push_back(std::move(*text));
  }
  return texts;
}

bool Contains(std::string const &text, std::string const &part) {
  return Folded(text).find(Folded(part)) != std::string::npos;
}

namespace {

Json HeadObject(CardHead const &head) {
  Json document;
  document["schema"] = 1;
  document["id"] = head.id;
  document["names"] = {ToUtf8(head.names[0]), ToUtf8(head.names[1]), ToUtf8(head.names[2])};
  document["categories"] = head.categories;
  return document;
}

std::string TextOf(Json const &document) {
  return document.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::string CardInBookDocument(CardHead const &head, std::vector<CardProperty> const *properties) {
  Json document = HeadObject(head);
  if (properties != nullptr) document["properties"] = Json::parse(PropertiesDocument(*properties));
  return TextOf(document);
}

void WriteHeads(Book *book, std::vector<uint32_t> const &ids, Call const &call) {
  Progress progress(call.settings, "listing", ids.size());
  Table table(call.settings, call.out, 4);
  std::string documents;
  for (uint32_t const id : ids) {
    progress.Step();
    CardHead const head = book->Head(id);
    if (call.settings.json) {
      documents += (documents.empty() ? "" : ",\n") + CardInBookDocument(head, nullptr);
      continue;
    }
    table.Add({std::to_string(id), ToUtf8(head.names[0]), ToUtf8(head.names[1]),
               ToUtf8(head.names[2]), CategoriesText(head.categories)});
  }
  table.Finish();
  if (call.settings.json) call.out.Write("[" + documents + "]\n");
}

void CardNews::Add(CardHead const &head, std::string const &what, bool changes) {
  if (call_.settings.json) {
    Json document = HeadObject(head);
    document["changed"] = changes;
    documents_ += (documents_.empty() ? "" : ",\n") + TextOf(document);
  } else if (!call_.settings.quiet) {
    WriteError(
        Escape("card " + std::to_string(head.id) + " " + ToUtf8(head.names[0]) + ": " + what));
  }
}

void CardNews::FinishOne() {
  if (call_.settings.json) call_.out.Write(documents_ + "\n");
}

void CardNews::FinishSeveral() {
  if (call_.settings.json) call_.out.Write("[" + documents_ + "]\n");
}

std::string Done(Call const &call, std::string const &what) {
  return (call.settings.dryRun ? "would be " : "") + what;
}

}  // namespace zolt::tool
