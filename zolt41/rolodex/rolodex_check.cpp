#include "zolt41/rolodex/rolodex_check.h"

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <unordered_set>

#include "zolt41/foundation/afs_file.h"
#include "zolt41/platform/system/file.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/card_record.h"
#include "zolt41/rolodex/category_table.h"
#include "zolt41/rolodex/record_scan.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/with_memory.h"

namespace zolt {
namespace {

constexpr int32_t kNotWritten = -1;

CardFinding FindingOf(FoundRecord const &record) {
  CardEntry const &entry = record.entry;
  CardFinding finding = {record.state,     record.whole, entry.id(),
                         entry.position(), entry.size(), {}};
  for (uint32_t i = 0; i < kCardNames; i++) entry.name(i).copy(finding.names[i], kCardNameSize - 1);
  return finding;
}

void Count(FoundRecord const &record, RolodexReport *report) {
  if (record.entry.free()) {
    report->freeRecords++;
    report->freeBytes += record.entry.size();
    return;
  }
  uint32_t *const counts[] = {&report->sound, &report->cut, &report->lost};
  ++*counts[static_cast<int32_t>(record.state)];
}

// Gives out ids that no card has: above all that there are, while there are such.
class NewIds {
 public:
  void Take(uint32_t id) {
    taken_.insert(id);
    last_ = std::max(last_, id);
  }
  uint32_t Next() {
    while (taken_.contains(++last_)) continue;
    return last_;
  }

 private:
  std::unordered_set<uint32_t> taken_ = {0};
  uint32_t last_ = 0;
};

// A new database that cards are put into with the ids that they had.
class Repaired : public Rolodex {
 public:
  void SetCategories(std::string_view table) {
    std::array<CategoryInfo, kCategoryCount> infos;
    ReadCategoryTable(table, infos);
    for (uint32_t i = 0; i < kCategoryCount; i++) SetCategoryInfo(i, &infos[i]);
  }

  bool Put(FoundRecord const &record, NewIds *newIds) {
    CardEntry const &entry = record.entry;
    uint32_t id = entry.id();
    if (CardIndex(id) >= 0) {
      auto const [first, last] = renumbered_.equal_range(id);
      bool there = IsThere(id, record);
      for (auto other = first; other != last; ++other)
        there = there || IsThere(other->second, record);
      if (there) return true;
      uint32_t const given = newIds->Next();
      renumbered_.emplace(id, given);
      id = given;
    }
    PCardStorage card;
    card.Set(record.body.data(), static_cast<int32_t>(record.body.size()));
    std::array<std::string, kCardNames> names;
    for (uint32_t i = 0; i < kCardNames; i++) names[i] = entry.name(i);
    unsigned char categories[1 + kCategoryCount];
    CategoryList(entry.categories(), categories);
    bool const added =
        AddCard(&card, id, names[0].c_str(), names[1].c_str(), names[2].c_str(), categories) == 0;
    cards_ += added ? 1 : 0;
    return added;
  }
  uint32_t cards() const { return cards_; }

 private:
  bool IsThere(uint32_t id, FoundRecord const &record) {
    PCardStorage card;
    if (LoadCard(id, &card) == 0) return false;
    CardBody const body(&card);
    // As it was stored: what is no list became an empty one.
    card.Set(record.body.data(), static_cast<int32_t>(record.body.size()));
    CardBody const other(&card);
    return body.good() && other.good() && body.bytes() == other.bytes();
  }

  uint32_t cards_ = 0;
  std::multimap<uint32_t, uint32_t> renumbered_;  // the ids that cards of an id got
};

// Puts the cards of the files into a database that is open.
int32_t Collect(char const *const *paths, uint32_t count, Repaired *repaired) {
  NewIds newIds;
  bool hasCategories = false;
  for (uint32_t i = 0; i < count; i++) {
    ScannedFile file;
    int32_t const code = ScanRolodex(
        paths[i], [&](FoundRecord const &record) { newIds.Take(record.entry.id()); }, &file);
    if (code != 0) return code;
    if (file.database && !hasCategories) repaired->SetCategories(file.categories);
    hasCategories = hasCategories || file.database;
  }
  for (uint32_t i = 0; i < count; i++) {
    ScannedFile file;
    bool good = true;
    auto const put = [&](FoundRecord const &record) {
      if (record.whole) good = good && repaired->Put(record, &newIds);
    };
    int32_t const code = ScanRolodex(paths[i], put, &file);
    if (code != 0 || !good) return code != 0 ? code : kNotWritten;
  }
  return 0;
}

}  // namespace

int32_t CheckRolodex(char const *path, void (*tell)(void *context, CardFinding const &finding),
                     void *context, RolodexReport *report) {
  *report = {};
  ScannedFile file;
  int32_t const code = ScanRolodex(
      path,
      [&](FoundRecord const &record) {
        if (record.again) return;
        Count(record, report);
        if (tell != nullptr && !record.entry.free()) tell(context, FindingOf(record));
      },
      &file);
  report->database = file.database;
  report->clean = file.clean;
  return code;
}

int32_t RepairRolodex(char const *const *paths, uint32_t count, char const *target,
                      uint32_t *cards) {
  if (int32_t const code = AFS_LZCreateFile(target, 0, 0); code != 0) return code;
  Repaired repaired;
  int32_t code = Rolodex::Create(target);
  if (code == 0) code = repaired.Open(target, 0);
  auto const collect = [&] { return Collect(paths, count, &repaired); };
  if (code == 0) code = WithMemory(kNotWritten, collect);
  if (code == 0) ClearFailure();
  repaired.Close();
  if (code == 0 && ZOLTLastFailure(nullptr, 0) != 0) code = kNotWritten;
  if (code != 0) DeleteFileA(target);
  *cards = repaired.cards();
  return code;
}

}  // namespace zolt
