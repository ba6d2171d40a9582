#ifndef ZOLT41_ROLODEX_CATEGORY_TABLE_H_
#define ZOLT41_ROLODEX_CATEGORY_TABLE_H_

#include <span>
#include <string>
#include <string_view>

#include "zolt41/rolodex/rolodex.h"

namespace zolt {

// The records of categories as they are stored.
std::string StoredCategory(CategoryInfo const &info);
void ReadCategoryTable(std::string_view table, std::span<CategoryInfo> categories);

}  // namespace zolt

#endif  // ZOLT41_ROLODEX_CATEGORY_TABLE_H_
