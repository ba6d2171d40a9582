#include <cstring>
#include <string>

#include "zolt41/foundation/endian.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/rolodex/category_table.h"
#include "zolt41/rolodex/rolodex.h"
#include "zolt41/rolodex/rolodex_format.h"
#include "zolt41/rolodex/rolodex_state.h"
#include "zolt41/rolodex/with_memory.h"

using namespace zolt;

static_assert(sizeof(CategoryInfo) == kCategoryInfoSize);
static_assert(offsetof(CategoryInfo, number) == kCategoryNumberOffset);

namespace {

constexpr uint32_t kSetSize = sizeof(CategorySet);

CategorySet Changed(CategorySet set, CategorySet const &remove, CategorySet const &add) {
  for (uint32_t i = 0; i < set.size(); i++) set[i] = (set[i] & ~remove[i]) | add[i];
  return set;
}

}  // namespace

namespace zolt {

std::string StoredCategory(CategoryInfo const &info) {
  std::string bytes(reinterpret_cast<char const *>(&info), sizeof info);
  StoreLittle32(info.number, bytes.data() + kCategoryNumberOffset);
  return bytes;
}

void ReadCategoryTable(std::string_view table, std::span<CategoryInfo> categories) {
  for (CategoryInfo &info : categories) {
    std::memcpy(&info, table.data(), sizeof info);
    info.number = LoadLittle32(table.data() + kCategoryNumberOffset);
    table.remove_prefix(kCategoryInfoSize);
  }
}

}  // namespace zolt

void Rolodex::SetCardCategories(uint32_t id, unsigned char const *categories) {
  if (!BeginChange()) return;
  uint32_t const slot = state_->index->Find(id);
  if (slot == RolodexIndex::kNone) return;
  CardEntry entry = state_->index->at(slot);
  entry.set_categories(CategoryBits(categories));
  ChangeHead(slot, entry, kCategoriesOffset, kSetSize);
}

void Rolodex::GetCardCategories(uint32_t id, unsigned char *categories) {
  ClearFailure();
  CardEntry const *const entry = EntryOf(id);
  CategoryList(entry == nullptr ? CategorySet{} : entry->categories(), categories);
}

int32_t Rolodex::ApplyCategory(unsigned char const *add, unsigned char const *remove,
                               unsigned char const *filter) {
  if (!BeginChange()) return 0;
  RolodexIndex &index = *state_->index;
  CategorySet const added = CategoryBits(add);
  CategorySet const removed = CategoryBits(remove);
  CategorySet const wanted = CategoryBits(filter);
  bool changed = false;
  bool good = true;
  state_->file.Delay();
  index.ForEach([&](uint32_t slot) {
    CardEntry entry = index.at(slot);
    CategorySet const old = entry.categories();
    if (!good || entry.free() || !HasAll(old, wanted)) return;
    CategorySet const set = Changed(old, removed, added);
    if (set == old) return;
    entry.set_categories(set);
    good = ChangeHead(slot, entry, kCategoriesOffset, kSetSize);
    changed = changed || good;
  });
  // Also for those that were changed before a failure.
  return state_->file.SyncDelayed() && good && changed ? 1 : 0;
}

CategoryInfo *Rolodex::GetCategoryInfo(uint32_t index) {
  return index < kCategoryCount ? &categories_[index] : nullptr;
}

void Rolodex::SetCategoryInfo(uint32_t index, CategoryInfo const *info) {
  ClearFailure();
  if (!state_ || readOnly_ != 0 || index >= kCategoryCount || info == nullptr) return;
  categories_[index] = *info;
  WithMemory(false, [&] {
    std::string table;
    for (CategoryInfo const &each : categories_) table += StoredCategory(each);
    return state_->file.Write(kRolodexHead, table) &&
           (!state_->file.durable() || state_->file.Sync());
  });
}
