#include <algorithm>
#include <filesystem>
#include <map>

#include "tools/zolt/book_cards.h"
#include "tools/zolt/card_source.h"
#include "tools/zolt/confirm.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/outcome.h"
#include "tools/zolt/progress.h"
#include "tools/zolt/text.h"

namespace zolt::tool {

namespace {

namespace fs = std::filesystem;

// The files that are named, and those in the folders that are; in the order of their names.
std::vector<std::string> FilesOf(Call const &call) {
  std::vector<std::string> files;
  for (std::string_view const operand : call.operands) {
    if (!fs::is_directory(operand)) {
      files.emplace_back(operand);
      continue;
    }
    std::vector<std::string> inFolder;
    for (fs::directory_entry const &entry : fs::directory_iterator(operand)) {
      bool const hidden = entry.path().filename().string().starts_with('.');
      if (entry.is_regular_file() && !hidden) inFolder.push_back(entry.path());
    }
    std::ranges::sort(inFolder);
    files.insert(files.end(), inFolder.begin(), inFolder.end());
  }
  return files;
}

// The cards of a book by key, and those without one by content.
class Contents {
 public:
  explicit Contents(Book *book) {
    book->EachCard("reading the book", [&](uint32_t id) { Add(book, id); });
  }

  std::optional<uint32_t> Keyed(std::string const &key) const { return Find(byKey_, key); }
  std::optional<uint32_t> Like(std::string const &bytes) const { return Find(byContent_, bytes); }

  void Add(Book *book, uint32_t id) {
    PCardStorage card;
    book->Load(id, &card);
    if (std::string const key = KeyIn(&card); !key.empty()) {
      byKey_.emplace(key, id);
    } else {
      byContent_.emplace(std::hash<std::string>()(ListOf(&card)), id);
    }
  }

 private:
  static std::optional<uint32_t> Find(std::map<std::string, uint32_t> const &map,
                                      std::string const &key) {
    auto const found = map.find(key);
    return found == map.end() ? std::nullopt : std::optional(found->second);
  }
  static std::optional<uint32_t> Find(std::map<size_t, uint32_t> const &map,
                                      std::string const &bytes) {
    auto const found = map.find(std::hash<std::string>()(bytes));
    return found == map.end() ? std::nullopt : std::optional(found->second);
  }

  std::map<std::string, uint32_t> byKey_;
  std::map<size_t, uint32_t> byContent_;
};

struct Counts {
  size_t read = 0;
  size_t added = 0;
  size_t changed = 0;
  size_t refused = 0;
  size_t removed = 0;
  int code = kDone;
};

class Import {
 public:
  explicit Import(Call const &call)
      : call_(call), book_(call, Book::Access::write), contents_(&book_) {}

  int Run() {
    std::vector<std::string> const files = FilesOf(call_);
    {
      Progress progress(call_.settings, "importing", files.size());
      for (std::string const &file : files) {
        progress.Step();
        Take(file);
      }
    }
    if (call_.arguments.Has(OptionId::prune)) Prune();
    book_.Close();
    Tell();
    bool const changes = counts_.added + counts_.changed + counts_.removed > 0;
    return std::max(counts_.code, CodeOfChange(call_, changes));
  }

 private:
  void Take(std::string const &file) {
    try {
      std::unique_ptr<CallCard> const card = LoadCard(call_, file);
      counts_.read++;
      Put(file, CardForBook(card.get(), fs::path(file).stem()));
    } catch (ToolError const &error) {
      Report(error, call_.settings.json, false);
      counts_.refused++;
      counts_.code = std::max(counts_.code, static_cast<int>(error.code));
    }
  }

  void Put(std::string const &file, NewCard const &card) {
    std::string const list = ListOf(card.list.get());
    if (!card.key.empty()) {
      auto const [first, isFirst] =
          given_.try_emplace(card.key, Given{file, std::hash<std::string>()(list)});
      if (!isFirst && first->second.content == std::hash<std::string>()(list)) return;
      if (!isFirst) {
        throw ToolError(kNo, "several", file, "has the key of " + first->second.file,
                        "only that one is taken; give one of them a key of its own");
      }
    }
    std::optional<uint32_t> const known =
        card.key.empty() ? contents_.Like(list) : contents_.Keyed(card.key);
    bool const same = known && IsSame(*known, list);
    // Of two contents with one hash the cards tell more.
    if (!known || (card.key.empty() && !same)) {
      counts_.added++;
      if (call_.settings.dryRun) return;
      uint32_t const id = AddToBook(&book_, card);
      contents_.Add(&book_, id);
      kept_.push_back(id);
      return;
    }
    kept_.push_back(*known);
    if (same) return;
    counts_.changed++;
    if (!call_.settings.dryRun) SaveInBook(&book_, *known, card);
  }

  bool IsSame(uint32_t id, std::string const &list) {
    PCardStorage present;
    book_.Load(id, &present);
    return ListOf(&present) == list;
  }

  // Removes the cards that none of the files has.
  void Prune() {
    if (counts_.refused > 0) {
      WriteError("zolt: nothing is removed, since not all files could be read");
      return;
    }
    std::ranges::sort(kept_);
    std::vector<uint32_t> gone;
    for (uint32_t const id : book_.Ids())
      if (!std::ranges::binary_search(kept_, id)) gone.push_back(id);
    if (gone.empty()) return;
    Confirm("remove " + std::to_string(gone.size()) + " cards that no file has", call_.settings);
    counts_.removed = gone.size();
    if (call_.settings.dryRun) return;
    for (uint32_t const id : gone)
      if (book_.rolodex().DeleteCard(id) == 0) throw BookFailure(book_.path());
  }

  void Tell() const {
    std::string const read = std::to_string(counts_.read);
    std::string const added = std::to_string(counts_.added);
    std::string const changed = std::to_string(counts_.changed);
    std::string const refused = std::to_string(counts_.refused);
    std::string const removed = std::to_string(counts_.removed);
    if (call_.settings.json) {
      call_.out.Write("{\"schema\":1,\"read\":" + read + ",\"added\":" + added + ",\"changed\":" +
                      changed + ",\"refused\":" + refused + ",\"removed\":" + removed + "}\n");
    } else if (!call_.settings.quiet) {
      WriteError("zolt: " + read + " read, " + added + " added, " + changed + " changed, " +
                 refused + " refused" + (counts_.removed > 0 ? ", " + removed + " removed" : "") +
                 (call_.settings.dryRun ? " (not written)" : ""));
    }
  }

  struct Given {
    std::string file;
    size_t content;  // a hash
  };

  Call const &call_;
  Book book_;
  Contents contents_;
  std::map<std::string, Given> given_;  // what the files had, by key
  std::vector<uint32_t> kept_;
  Counts counts_;
};

int RunImport(Call const &call) {
  return Import(call).Run();
}

}  // namespace

Verb const kRolodexImport = {
    .group = "rolodex",
    .name = "import",
    .operands = "FILE|DIR...",
    .summary = "bring cards into a book, each once",
    .options = {OptionId::file, OptionId::prune},
    .least = 1,
    .most = kAnyNumber,
    .run = RunImport,
    .description =
        "Reads card files and card texts, and those in folders. A card with a key that the book\n"
        "has replaces that one if it differs; one without a key is added if no card is like it.\n"
        "So a second import adds nothing. A file that cannot be read, or has the key of another\n"
        "one and other content, is told, and the others go on. With --prune cards that none of the "
        "files has are removed, which needs a yes.",
    .examples = "  zolt rolodex import cards/\n",
};

}  // namespace zolt::tool
