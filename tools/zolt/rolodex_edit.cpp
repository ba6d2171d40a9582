#include "tools/zolt/book_cards.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/card_text_loss.h"
#include "tools/zolt/editor.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/outcome.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

int EditCard(Call const &call) {
  NeedSectionNames(call);
  CardHead head{};
  std::vector<CardProperty> before;
  std::unique_ptr<CallCard> card;
  {
    // Others may use the book while the editor is open.
    Book book(call, Book::Access::read);
    head = book.Head(book.FindOne(call.operands[0]));
    before = book.Properties(head.id);
    card = CardFromBook(&book, head.id);
  }
  ConfirmLossInText(card.get(), call.settings);
  CardNews news(call);
  EditedText text("card.txt");
  SaveCardAs(card.get(), CardFormatText, text.file());
  std::string const shown = ReadInput(text.file());
  text.Edit();
  if (ReadInput(text.file()) == shown) {
    news.Add(head, "unchanged", false);
    news.FinishOne();
    return kDone;
  }
  return text.Apply([&] {
    std::unique_ptr<CallCard> const edited = LoadCard(call, text.file());
    if (std::string const key = KeyOf(*card); !key.empty()) edited->SetKey(key.data());
    Book book(call, Book::Access::write);
    bool const there = book.rolodex().GetCardName(head.id, nullptr, nullptr, nullptr) != 0;
    if (!there || book.Properties(head.id) != before) {
      throw ToolError(kNo, "expectation", std::string(call.operands[0]),
                      "was changed by another program meanwhile", "nothing is written");
    }
    NewCard const now = CardForBook(edited.get(), ToUtf8(head.names[0]));
    bool const changes = !IsInBook(&book, head.id, now);
    if (changes && !call.settings.dryRun) SaveInBook(&book, head.id, now);
    head = book.Head(head.id);
    book.Close();
    news.Add(head, changes ? Done(call, "changed") : "unchanged", changes);
    news.FinishOne();
    return CodeOfChange(call, changes);
  });
}

}  // namespace

Verb const kRolodexEdit = {
    .group = "rolodex",
    .name = "edit",
    .operands = "CARD",
    .summary = "change a card in an editor",
    .options = {OptionId::file, OptionId::first},
    .least = 1,
    .most = 1,
    .run = EditCard,
    .description =
        "Opens the card as card text in VISUAL or EDITOR, and saves what comes out. Text makes\n"
        "every string 16-bit; see docs/formats/card_text.md.",
    .examples = "  zolt rolodex edit 'Anna Bell'\n",
};

}  // namespace zolt::tool
