#include <algorithm>
#include <filesystem>
#include <set>

#include "tools/zolt/book_cards.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/confirm.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/output_file.h"
#include "tools/zolt/progress.h"
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

std::string NameOfFile(CallCard *card, uint32_t id) {
  constexpr size_t kKey = 24;
  if (*card->GetKey() == '\0') return "id-" + std::to_string(id);
  return Hex(std::string_view(card->GetKey(), kKey)).substr(2);
}

// The bytes that the library writes for a card.
std::string BytesOf(CallCard *card, Form const &form, std::string const &scratch) {
  if (form.format == CardFormatNone) {
    SaveVCard(card, VCard3, scratch);
  } else {
    SaveCardAs(card, form.format, scratch);
  }
  return ReadInput(scratch);
}

int Export(Call const &call) {
  Form const &form = FormFrom(call.arguments);
  std::string const folder(call.operands[0]);
  if (form.format == CardFormatText) NeedSectionNames(call);
  Book book(call, Book::Access::read);
  std::error_code error;
  if (!call.settings.dryRun) fs::create_directories(folder, error);
  if (error) throw SystemFailure(folder, error.value());
  ScratchFolder const scratch;
  std::set<std::string> kept;
  size_t written = 0;
  size_t same = 0;
  {
    std::vector<uint32_t> const ids = book.Ids();
    Progress progress(call.settings, "exporting", ids.size());
    for (uint32_t const id : ids) {
      progress.Step();
      std::unique_ptr<CallCard> const card = CardFromBook(&book, id);
      // A card without a key would get another one each time.
      char const none[32] = {};
      if (*card->GetKey() == '\0' && form.format == CardFormatBinary) card->SetKey(none);
      std::string const name = NameOfFile(card.get(), id) + std::string(form.ending);
      std::string const path = fs::path(folder) / name;
      std::string const bytes = BytesOf(card.get(), form, scratch.File("card"));
      kept.insert(name);
      if (IsThere(path) && ReadInput(path) == bytes) {
        same++;
        continue;
      }
      written++;
      if (call.settings.dryRun) continue;
      OutputFile file(path);
      file.out().Write(bytes);
      file.Finish();
    }
  }
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
  if (!call.settings.quiet && !call.settings.json) {
    WriteError("zolt: " + std::to_string(written) + " written, " + std::to_string(same) +
               " unchanged" +
               (gone.empty() ? "" : ", " + std::to_string(gone.size()) + " removed") +
               (call.settings.dryRun ? " (not written)" : ""));
  }
  return kDone;
}

}  // namespace

Verb const kRolodexExport = {
    .group = "rolodex",
    .name = "export",
    .operands = "DIR",
    .summary = "a file for each card",
    .options = {OptionId::file, OptionId::format, OptionId::prune},
    .least = 1,
    .most = 1,
    .run = Export,
    .description =
        "Writes a file for each card into a folder, named for its key or else its number: card\n"
        "files, or with --format text or vcard. A file that would be the same is not touched.\n"
        "With --prune files of that form which no card has are removed, which needs a yes.",
    .examples =
        "  zolt rolodex export cards/\n  zolt rolodex export vcards/ --format vcard --prune\n",
};

}  // namespace zolt::tool
