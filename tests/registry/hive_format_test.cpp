#include "tests/support/format_page.h"
#include "tests/support/key.h"
#include "tests/support/raw_hive.h"

namespace zolt::testing {
namespace {

TEST(HiveFormat, IsAsItsDescriptionSays) {
  std::string const page = ContentOf(ZOLT_DOCS "/formats/hive.md");
  size_t const schema = page.find("```sql\n") + 7;
  TempHome home;
  {
    HKEY key = HKEY_CURRENT_USER;
    for (char const *name : {"Software", "Veltrane", "Tessaly", "5.0", "Conferencing"})
      ASSERT_EQ(RegCreateKeyA(key, name, &key), ERROR_SUCCESS);
    Key const audio(key, "Audio");
    audio.Set("Volume", "70");
    audio.SetBytes("Mask", REG_BINARY, std::string("\x00\xFF", 2));
  }
  RawHive raw(home.UserHive());
  EXPECT_EQ(raw.Run("SELECT group_concat(sql||';','\n')||'\n' FROM sqlite_schema"
                    " WHERE sql IS NOT NULL AND name<>'sqlite_sequence'"),
            page.substr(schema, page.find("```", schema) - schema));
  EXPECT_EQ(
      raw.Run("WITH RECURSIVE path(id,text) AS (SELECT id,name FROM key WHERE parent=0"
              " UNION ALL SELECT k.id,text||'\\'||k.name FROM key k JOIN path ON k.parent=path.id)"
              " SELECT group_concat(text||' | '||name||' | '||type||' | '||hex(data),'\n')||'\n'"
              " FROM (SELECT * FROM value JOIN path ON path.id=value.key ORDER BY place)"),
      ExampleOf("hive.md"));
  EXPECT_EQ(raw.Run("SELECT layout||' '||code_page FROM hive"), "1 1252");
  EXPECT_EQ(raw.Run("PRAGMA application_id"), std::to_string(0x5A4F4C54));
}

}  // namespace
}  // namespace zolt::testing
