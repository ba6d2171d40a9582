// A card database made of any bytes: it is checked, opened by a reader and a writer, read whole,
// changed, closed and opened again, and nothing that was acknowledged is gone.

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "zolt41/foundation/mem_block.h"
#include "zolt41/platform/system/file_calls.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_check.h"

namespace {

constexpr size_t kFront = 10248;

// The path of a file in memory that is kept for all runs. What is made beside it does not stay.
std::string const &Path() {
  static std::string const path = "/dev/shm/rolodex-fuzz-" + std::to_string(getpid());
  static bool const noSync = [] {
    zolt::TheFileCalls().sync = [](int) { return 0; };
    std::atexit([] { unlink(Path().c_str()); });
    return true;
  }();
  return noSync ? path : path;
}

void Write(std::string const &bytes) {
  FILE *const file = std::fopen(Path().c_str(), "wb");
  if (file == nullptr || std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) abort();
  std::fclose(file);
}

std::vector<uint32_t> ReadAll(Rolodex *book) {
  std::vector<uint32_t> ids;
  uint32_t cursor = 0;
  PCardStorage card;
  while (uint32_t const id = book->FindCard(nullptr, nullptr, nullptr, &cursor)) {
    char names[3][32];
    unsigned char categories[129];
    ids.push_back(id);
    book->LoadCard(id, &card);
    book->GetCardName(id, names[0], names[1], names[2]);
    book->GetCardCategories(id, categories);
  }
  // So often that tables of the names are made.
  for (int i = 0; i < 4; i++)
    for (uint32_t found = 0; book->FindCard("", "", nullptr, &found) != 0;) continue;
  char *block = NewMem(0);
  book->SelectByCategory(nullptr, nullptr, nullptr, &block);
  book->Select(block, "_Label", CSContains, "a", 5);
  book->Select(block, "FN", CSContains, "a", 6);
  _DisposeMem(block);
  return ids;
}

uint32_t Change(Rolodex *book, std::vector<uint32_t> const &ids) {
  PCardStorage card;
  card.AddProp("FN", 0, 0, "fuzz", 5);
  unsigned char const five[] = {1, 5};
  uint32_t const added = book->CreateCard(&card, "added", nullptr, nullptr, five);
  PCardStorage *const cards[] = {&card, &card};
  book->CreateCards(2, cards, nullptr, nullptr, nullptr);
  for (size_t i = 0; i < ids.size(); i++) {
    if (i % 3 == 0) book->DeleteCard(ids[i]);
    if (i % 3 == 1) book->SaveCard(ids[i], &card);
    if (i % 3 == 2) book->SetCardName(ids[i], "changed", "", nullptr);
  }
  book->ApplyCategory(five, nullptr, nullptr);
  book->Compact(1);
  return added;
}

// A database that was repaired has at least the cards that opening finds whole.
void Repair(zolt::RolodexReport const &report) {
  std::string const target = Path() + ".repaired";
  char const *const path = Path().c_str();
  uint32_t cards = 0;
  Rolodex book;
  if (zolt::RepairRolodex(&path, 1, target.c_str(), &cards) == 0 &&
      (book.Open(target.c_str(), 1) != 0 || ReadAll(&book).size() != cards || cards < report.sound))
    abort();
  book.Close();
  unlink(target.c_str());
}

void Use(std::string const &bytes) {
  Write(bytes);
  zolt::RolodexReport report;
  zolt::CheckRolodex(Path().c_str(), nullptr, nullptr, &report);
  Repair(report);
  Rolodex book;
  if (book.Open(Path().c_str(), 1) == 0) ReadAll(&book);
  book.Close();
  if (book.Open(Path().c_str(), 0) == 0) {
    uint32_t const added = Change(&book, ReadAll(&book));
    std::vector<uint32_t> const ids = ReadAll(&book);
    book.Close();
    // What one session leaves another one finds.
    if (book.Open(Path().c_str(), 1) != 0 || ReadAll(&book) != ids) abort();
    PCardStorage card;
    if (added != 0 && (book.LoadCard(added, &card) == 0 || card.PropCount() != 1)) abort();
  }
  book.Close();
  for (int i = 1; i < 4; i++) unlink((Path() + ".lost-" + std::to_string(i)).c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(uint8_t const *data, size_t size) {
  std::string const bytes(reinterpret_cast<char const *>(data), size);
  Use(bytes);
  // Most bytes are spent behind the front.
  std::string front(kFront, '\0');
  front.replace(0, 4, "\x6F\x6C\x6F\x52");
  Use(front + bytes);
  front.replace(0, 4, "\x52\x6F\x6C\x6F");
  Use(front + bytes);
  return 0;
}
