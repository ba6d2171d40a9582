#include <algorithm>
#include <filesystem>
#include <set>

#include "tools/zolt/book_cards.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/card_text_loss.h"
#include "tools/zolt/confirm.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/outcome.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/scratch_folder.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

namespace fs = std::filesystem;

struct Form {
  std::string_view name;
  std::string_view ending;
  int32_t format;  // or CardFormatNone for a vCard
};

constexpr Form kForms[] = {{"card", ".card", CardFormatBinary},
                           {"text", ".txt", CardFormatText},
                           {"vcard", ".vcf", CardFormatNone}};

Form const &FormFrom(Arguments const &arguments) {
  std::string_view const word =
      arguments.Has(OptionId::format) ? arguments.Value(OptionId::format) : "card";
  for (Form const &form : kForms)
    if (form.name == word) return form;
  Refuse("--format " + std::string(word), "no such form", "it is card, text or vcard");
}

// For the card's key, else its number; cards that share a key are numbered.
std::string NameOfFile(CallCard const &card, uint32_t id, std::string_view ending,
                       std::set<std::string> const &taken) {
  constexpr size_t kShown = 24;
  std::string const key = KeyOf(card);
  std::string const stem = key.empty() ? "id-" + std::to_string(id)
                                       : Hex(std::string_view(key).substr(0, kShown)).substr(2);
  std::string name = stem + std::string(ending);
  for (int number = 2; taken.contains(name); number++)
    name = stem + "-" + std::to_string(number) + std::string(ending);
  return name;
}

// Asks once for all cards of which text cannot hold everything.
void ConfirmLosses(Book *book, Settings const &settings) {
  size_t cards = 0;
  std::string first;
  book->EachCard("looking", [&](uint32_t id) {
    if (LostInText(CardFromBook(book, id).get()).empty()) return;
    if (cards++ == 0) first = "card " + std::to_string(id) + " " + ToUtf8(book->Head(id).names[0]);
  });
  if (cards == 0) return;
  Confirm("write card text, which loses a part of " + std::to_string(cards) +
              (cards == 1 ? " card: " : " cards, the first of them ") + first,
          settings);
}

// The bytes that the library writes for a card.
std::string BytesOf(CallCard *card, Form const &form, VCardProfile profile,
                    std::string const &scratch) {
  if (form.format == CardFormatNone) {
    SaveVCard(card, profile, scratch);
  } else {
    SaveCardAs(card, form.format, scratch);
  }
  return ReadInput(scratch);
}

int Export(Call const &call) {
  Form const &form = FormFrom(call.arguments);
  VCardProfile const profile = ProfileOption(call.arguments);
  if (call.arguments.Has(OptionId::profile) && form.format != CardFormatNone) {
    Refuse("", "--profile goes with --format vcard");
  }
  std::string const folder(call.operands[0]);
  if (form.format == CardFormatText) NeedSectionNames(call);
  Book book(call, Book::Access::read);
  if (form.format == CardFormatText) ConfirmLosses(&book, call.settings);
  std::error_code error;
  if (!call.settings.dryRun) fs::create_directories(folder, error);
  if (error) throw SystemFailure(folder, error.value());
  ScratchFolder const scratch;
  std::set<std::string> kept;
  size_t written = 0;
  size_t same = 0;
  book.EachCard("exporting", [&](uint32_t id) {
    std::unique_ptr<CallCard> const card = CardFromBook(&book, id);
    // A card without a key would get another one each time.
    char const none[kKeySize] = {};
    if (KeyOf(*card).empty() && form.format == CardFormatBinary) card->SetKey(none);
    std::string const name = NameOfFile(*card, id, form.ending, kept);
    std::string const path = fs::path(folder) / name;
    std::string const bytes = BytesOf(card.get(), form, profile, scratch.File("card"));
    kept.insert(name);
    if (IsThere(path) && ReadInput(path) == bytes) {
      same++;
      return;
    }
    written++;
    if (call.settings.dryRun) return;
    OutputFile file(path);
    file.out().Write(bytes);
    file.Finish();
  });
  std::vector<fs::path> gone;
  if (call.arguments.Has(OptionId::prune) && fs::is_directory(folder)) {
    for (fs::directory_entry const &entry : fs::directory_iterator(folder)) {
      std::string const name = entry.path().filename().string();
      if (name.ends_with(form.ending) && !kept.contains(name)) gone.push_back(entry.path());
    }
  }
  if (!gone.empty()) {
    Confirm("remove " + std::to_string(gone.size()) + " files of cards that the book does not have",
            call.settings);
  }
  for (fs::path const &path : gone)
    if (!call.settings.dryRun) fs::remove(path);
  if (call.settings.json) {
    call.out.Write("{\"schema\":1,\"written\":" + std::to_string(written) + ",\"unchanged\":" +
                   std::to_string(same) + ",\"removed\":" + std::to_string(gone.size()) + "}\n");
  } else if (!call.settings.quiet) {
    WriteError("zolt: " + std::to_string(written) + " written, " + std::to_string(same) +
               " unchanged" +
               (gone.empty() ? "" : ", " + std::to_string(gone.size()) + " removed") +
               (call.settings.dryRun ? " (not written)" : ""));
  }
  return CodeOfChange(call, written + gone.size() > 0);
}

}  // namespace

Verb const kRolodexExport = {
    .group = "rolodex",
    .name = "export",
    .operands = "DIR",
    .summary = "a file for each card",
    .options = {OptionId::file, OptionId::format, OptionId::profile, OptionId::prune},
    .least = 1,
    .most = 1,
    .run = Export,
    .description =
        "Writes a file for each card into a folder, named for its key or else its number: card\n"
        "files, or with --format text or vcard, of which --profile says the version; cards that\n"
        "share a key are numbered. A file that would be the same is not touched. With --prune\n"
        "files of that form which no card has are removed, which needs a yes.",
    .examples =
        "  zolt rolodex export cards/\n"
        "  zolt rolodex export vcards/ --format vcard --profile 4.0 --prune\n",
};

}  // namespace zolt::tool
