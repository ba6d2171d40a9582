#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/key.h"
#include "tests/support/raw_hive.h"
#include "tests/support/temp_home.h"

namespace zolt {
namespace {

using testing::Key;
using testing::RawHive;

// The blocks between fences in the description of the format.
std::vector<std::string> Blocks() {
  std::ifstream page(ZOLT_DOCS "/formats/hive.md");
  std::vector<std::string> blocks;
  bool inside = false;
  for (std::string line; std::getline(page, line);) {
    if (line.starts_with("```")) {
      inside = !inside;
      if (inside) blocks.emplace_back();
    } else if (inside) {
      blocks.back() += line + "\n";
    }
  }
  return blocks;
}

TEST(HiveFormat, IsAsItsDescriptionSays) {
  std::vector<std::string> const blocks = Blocks();
  ASSERT_EQ(blocks.size(), 2u);
  testing::TempHome home;
  std::string path;
  {
    Key const software(HKEY_CURRENT_USER, "Software");
    Key const maker(software.handle, "Veltrane");
    Key const product(maker.handle, "Tessaly");
    Key const version(product.handle, "5.0");
    Key const conferencing(version.handle, "Conferencing");
    Key const audio(conferencing.handle, "Audio");
    audio.Set("Volume", "70");
    audio.SetBytes("Mask", REG_BINARY, std::string("\x00\xFF", 2));
  }
  RawHive raw(home.UserHive());
  EXPECT_EQ(raw.Run("SELECT group_concat(sql||';','\n')||'\n' FROM sqlite_schema"
                    " WHERE sql IS NOT NULL AND name<>'sqlite_sequence'"),
            blocks[0]);
  EXPECT_EQ(
      raw.Run("WITH RECURSIVE path(id,text) AS (SELECT id,name FROM key WHERE parent=0"
              " UNION ALL SELECT k.id,text||'\\'||k.name FROM key k JOIN path ON k.parent=path.id)"
              " SELECT group_concat(text||' | '||name||' | '||type||' | '||hex(data),'\n')||'\n'"
              " FROM (SELECT * FROM value JOIN path ON path.id=value.key ORDER BY place)"),
      blocks[1]);
  EXPECT_EQ(raw.Run("SELECT layout||' '||code_page FROM hive"), "1 1252");
  EXPECT_EQ(raw.Run("PRAGMA application_id"), std::to_string(0x5A4F4C54));
}

}  // namespace
}  // namespace zolt
