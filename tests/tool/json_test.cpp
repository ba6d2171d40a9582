#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/tool/tool_fixture.h"
#include "tools/zolt/verbs.h"

namespace zolt::testing {
namespace {

using nlohmann::json;

class JsonTest : public ToolTest {
 protected:
  static json Document(std::string const &line) {
    ToolResult const result = Run("--json " + line);
    EXPECT_EQ(result.code, 0) << line;
    EXPECT_EQ(result.err, "") << line;
    return json::parse(result.out);
  }
};

TEST_F(JsonTest, BytesAreBase64AndTextsUtf8) {
  Set({"Audio", "A", "\x01\t\"\u20ac", "B", "\xC2\x81"});
  for (std::string const bytes : {"0x", "0x00", "0x00ff", "0x00ff80"})
    Set({"-t", "bytes", "Audio", bytes, bytes});
  SetForeign(HKEY_CURRENT_USER, "Long", REG_SZ, std::string(300, 'x'));
  json const expected = json::parse(R"([["A","text","\u0001\t\"\u20ac"],["B","text","\u0081"],
    ["0x","bytes",""],["0x00","bytes","AA=="],["0x00ff","bytes","AP8="],
    ["0x00ff80","bytes","AP+A"]])");
  json const list = Document("prefs list Audio");
  ASSERT_EQ(list.size(), 7u);
  for (size_t i = 0; i < expected.size(); i++) {
    EXPECT_EQ(list[i]["name"], expected[i][0]);
    EXPECT_EQ(list[i]["kind"], expected[i][1]);
    EXPECT_EQ(list[i][expected[i][1] == "text" ? "value" : "base64"], expected[i][2]);
  }
  EXPECT_EQ(list[6]["kind"], "unreadable");
}

TEST_F(JsonTest, ValuesChangesAndStores) {
  Set({"-L", "system", "Audio", "V", "1"});
  Set({"-t", "bytes", "Audio", "V", "0x00"});
  EXPECT_EQ(Run("--json prefs get Audio V").out,
            R"({"schema":1,"section":"Conferencing:Audio","id":"0x41554449","name":"V",)"
            R"("level":"system","kind":"text","value":"1"})"
            "\n");
  EXPECT_EQ(Document("prefs get Audio None --default \u00e9"), json::parse(R"({"schema":1,
    "section":"Conferencing:Audio","id":"0x41554449","name":"None","level":null,"kind":"text",
    "value":"é"})"));
  EXPECT_EQ(Document("prefs explain Audio V")["stores"], json::parse(R"([
    {"level":"user","kind":"bytes","base64":"AA==","answers":false,"answersBytes":true},
    {"level":"system","kind":"text","value":"1","answers":true,"answersBytes":false}])"));
  json const changes = Document("prefs set Audio V 2 W 3");
  ASSERT_EQ(changes.size(), 2u);
  EXPECT_EQ(changes[0]["old"], json::parse(R"({"kind":"bytes","base64":"AA=="})"));
  EXPECT_EQ(changes[1], json::parse(R"({"schema":1,"section":"Conferencing:Audio",
    "id":"0x41554449","name":"W","level":"user","old":null,"new":"3","changed":true})"));
  EXPECT_EQ(Document("prefs set Audio W 3")[0]["changed"], false);
  EXPECT_EQ(Document("prefs unset Audio W")[0]["new"], nullptr);
}

TEST_F(JsonTest, AnErrorIsOneObject) {
  Set({"Audio", "Volume", "70"});
  ToolResult const result = Run("--json prefs get Audio Volum");
  EXPECT_EQ(result.code, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(json::parse(result.err), json::parse(R"({"error":{"code":1,"kind":"absent",
    "subject":"Conferencing:Audio Volum","message":"no such value",
    "hint":"did you mean Volume?"}})"));
  EXPECT_EQ(json::parse(Run("prefs get --jsn --json").err)["error"]["kind"], "usage");
}

// In a home with a section, a card and a book, each line as a dry run first.
TEST_F(JsonTest, EveryVerbWritesOneDocument) {
  Set({"Audio", "V", "1"});
  std::string const card = Path("a");
  std::string const book = Path("contacts.rolodex");
  auto const file = [](std::string const &path) {
    return R"({"schema":1,"file":")" + path + R"(","changed":true})";
  };
  auto const ben = [](char const *categories) {
    return std::string(R"({"schema":1,"id":1,"names":["Ben","","b@x"],"categories":[)") +
           categories;
  };
  struct Row {
    std::string line;
    std::string dry;   // what it must be; "" is not looked at
    std::string done;  // "" as dry
  };
  Row const rows[] = {
      {"card new " + card, file(card), ""},
      {"card set " + card + " FN Anna", "", ""},
      {"card convert --to text " + card + " " + Path("t"), file(Path("t")), ""},
      {"card vcard " + card + " -o " + Path("v"), file(Path("v")), ""},
      {"card vcard " + card + " --profile classic",
       R"({"schema":1,"vcard":"BEGIN:VCARD\r\nFN;ENCODING=QUOTED-PRINTABLE;CHARSET=ISO-8859-1:Anna\r\n)"
       R"(END:VCARD\r\n"})",
       ""},
      {"card show " + card, "", ""},
      {"card get " + card + " FN", "", ""},
      {"card prefs " + card + " set Audio V 1", "", ""},
      {"card diff " + card + " " + card, "[]", ""},
      {"card unset " + card + " FN", "", ""},
      {"card check " + card, "", ""},
      {"rolodex create", file(book), ""},
      {"rolodex new Ben --email b@x", "[]", "[1]"},
      {"rolodex category 3 Friends", R"({"schema":1,"category":3,"name":"Friends","changed":true})",
       ""},
      {"rolodex category 3", R"({"schema":1,"category":3,"name":"Friends"})", ""},
      {"rolodex tag Ben +Friends", "[" + ben("") + R"(],"changed":true}])",
       "[" + ben("3") + R"(],"changed":true}])"},
      {"rolodex tag Ben +Friends", "[" + ben("3") + R"(],"changed":false}])", ""},
      {"rolodex info", "", ""},
      {"rolodex query b@", R"([{"schema":1,"address":"b@x","name":"Ben","flags":["HOME"]}])", ""},
      {"rolodex get 1", "", ""},
      {"rolodex get Ben --all", "", ""},
      {"rolodex get 1 -o " + Path("b"), file(Path("b")), ""},
      {"rolodex replace 1 " + Path("b"), "", ""},
      {"rolodex rename 1 Ben", "", ""},
      {"rolodex edit 1", "", ""},
      {"rolodex list", "", ""},
      {"rolodex find b@", "", ""},
      {"rolodex select FN=Ben", "", ""},
      {"rolodex dupes", "[]", ""},
      {"rolodex add " + card, "[]", "[2]"},
      {"rolodex import " + card, "", ""},
      {"rolodex export " + Path("out"), "", ""},
      {"rolodex compact", "", ""},
      {"rolodex check", "", ""},
      {"rolodex rm 1", "[" + ben("3") + R"(],"changed":true}])", ""},
      {"prefs get Audio V", "", ""},
      {"prefs set Audio V 2", "", ""},
      {"prefs list", "", ""},
      {"prefs explain Audio V", "", ""},
      {"prefs items Audio L --add 1", "", ""},
      {"prefs dump", "", ""},
      {"prefs load " + Path("p"), "", ""},
      {"prefs diff " + Path("p"), "[]", ""},
      {"prefs edit Audio", "[]", ""},
      {"prefs unset Audio V", "", ""},
      {"prefs clear Audio", "", ""},
      {"unregister", "", ""},
      {"net status", "", ""},
      {"net address", "", ""},
      {"doctor", "", ""},
  };
  WriteContent(Path("p"), Run("prefs dump").out);
  for (Row const &row : rows) {
    for (char const *const options : {"--json -n ", "--json "}) {
      SCOPED_TRACE(options + row.line);
      ToolResult const result = Run(options + row.line, {.environment = {"EDITOR=true"}});
      bool const ours = row.line.find("net ") != 0 && row.line != "doctor";
      EXPECT_TRUE(result.code == 0 || !ours) << result.code << result.err;
      bool const dry = std::string_view(options).find("-n") != std::string_view::npos;
      std::string const &wanted = dry || row.done.empty() ? row.dry : row.done;
      // A machine without an address has that as an error.
      bool const failed = !ours && result.out.empty();
      EXPECT_TRUE(json::accept(failed ? result.err : result.out)) << result.out;
      if (!wanted.empty()) {
        EXPECT_EQ(result.out, wanted + "\n");
      }
    }
  }
  // Those go elsewhere or need more, and are tried with that.
  for (tool::Verb const *const verb : tool::Verbs()) {
    std::string const name = tool::NameOf(*verb);
    bool const elsewhere = name == "prefs watch" || name == "prefs wait" || name == "open" ||
                           name == "mail" || name == "register" || name == "completion";
    EXPECT_TRUE(elsewhere || std::ranges::any_of(rows,
                                                 [&name](Row const &row) {
                                                   return (row.line + " ").starts_with(name + " ");
                                                 }))
        << name;
  }
}

// A section that is only read is not registered, and still has the id that registering gives it.
TEST_F(JsonTest, TheIdIsTheLibrarys) {
  std::string const outer(70, 'o');
  for (auto const &[section, id] : {std::pair(outer + ":Inner:Most", "0x0B7ABC40"),
                                    {"Audio:Inner", "0xA0E390BD"},
                                    {"Conferencing:Inner", "0x00CAE779"}}) {
    Set({section, "V", "1"});
    EXPECT_EQ(Document("prefs get " + section + " V")["id"], id) << section;
  }
}

}  // namespace
}  // namespace zolt::testing
