#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/tool/tool_fixture.h"
#include "tools/zolt/verbs.h"

namespace zolt::testing {
namespace {

using nlohmann::json;

class JsonTest : public ToolTest {
 protected:
  static json Document(std::string const &line) {
    ToolResult const result = Run("--json " + line);
    EXPECT_EQ(std::to_string(result.code) + result.err, "0") << line;
    return json::parse(result.out);
  }
};

TEST_F(JsonTest, BytesAreBase64AndTextsUtf8) {
  Set({"Audio", "A", "\x01\t\"\u20ac", "B", "\xC2\x81"});
  for (std::string const bytes : {"0x", "0x00", "0x00ff", "0x00ff80"})
    Set({"-t", "bytes", "Audio", bytes, bytes});
  SetForeign("Long", REG_SZ, std::string(300, 'x'));
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

// In one home, each line as a dry run first; ~ is the home.
TEST_F(JsonTest, EveryVerbWritesOneDocument) {
  Set({"Audio", "V", "1"});
  WriteContent(Path("p"), Run("prefs dump").out);
  auto const here = [this](std::string text) {
    for (size_t at = 0; (at = text.find('~', at)) != std::string::npos;)
      text.replace(at, 1, home_.path());
    return text;
  };
  std::string const head = R"({"schema":1,"id":1,"names":["Ben","","b@x"],"categories":)";
  struct Row {
    std::string lines;      // with | between
    std::string dry = {};   // what they must write; "" is not looked at
    std::string done = {};  // "" as dry
  };
  Row const rows[] = {
      {"card new ~/a", R"({"schema":1,"file":"~/a","changed":true})"},
      {"card set ~/a FN Anna|card show ~/a|card get ~/a FN|card prefs ~/a set Audio V 1"},
      {"card convert --to text ~/a ~/t", R"({"schema":1,"file":"~/t","changed":true})"},
      {"card vcard ~/a -o ~/v", R"({"schema":1,"file":"~/v","changed":true})"},
      {"card vcard ~/a --profile classic",
       R"({"schema":1,"vcard":"BEGIN:VCARD\r\nFN;ENCODING=QUOTED-PRINTABLE;CHARSET=ISO-8859-1:Anna\r\n)"
       R"(END:VCARD\r\n"})"},
      {"card diff ~/a ~/a|prefs diff ~/p|prefs edit Audio", "[]"},
      {"card unset ~/a FN|card check ~/a"},
      {"rolodex create", R"({"schema":1,"file":"~/contacts.rolodex","changed":true})"},
      {"rolodex new Ben --email b@x", "[]", "[1]"},
      {"rolodex category 3 Friends",
       R"({"schema":1,"category":3,"name":"Friends","changed":true})"},
      {"rolodex category 3", R"({"schema":1,"category":3,"name":"Friends"})"},
      {"rolodex tag Ben +Friends", "[" + head + R"([],"changed":true}])",
       "[" + head + R"([3],"changed":true}])"},
      {"rolodex tag Ben +Friends", "[" + head + R"([3],"changed":false}])"},
      {"rolodex query b@", R"([{"schema":1,"address":"b@x","name":"Ben","flags":["HOME"]}])"},
      {"rolodex get 1 -o ~/b", R"({"schema":1,"file":"~/b","changed":true})"},
      {"rolodex info|rolodex get 1|rolodex get Ben --all|rolodex list|rolodex find b@|rolodex edit "
       "1"},
      {"rolodex select FN=Ben|rolodex replace 1 ~/b|rolodex rename 1 Ben|rolodex compact"},
      {"rolodex dupes", "[]"},
      {"rolodex add ~/a", "[]", "[2]"},
      {"rolodex import ~/a|rolodex export ~/out|rolodex check"},
      {"rolodex rm 1", "[" + head + R"([3],"changed":true}])"},
      {"prefs get Audio V|prefs set Audio V 2|prefs list|prefs explain Audio V|prefs dump"},
      {"prefs items Audio L --add 1|prefs load ~/p|prefs unset Audio V|prefs clear Audio"},
      {"unregister|net status|net address|doctor"}};
  std::string all = "|";
  for (Row const &row : rows) {
    all += row.lines + "|";
    std::istringstream lines(row.lines);
    for (std::string line; std::getline(lines, line, '|');) {
      for (std::string const options : {"--json -n ", "--json "}) {
        SCOPED_TRACE(options + line);
        ToolResult const result = Run(options + here(line), {.environment = {"EDITOR=true"}});
        // What a machine lacks is told as an error.
        bool const machine = line.starts_with("net ") || line == "doctor";
        EXPECT_TRUE(result.code == 0 || machine) << result.code << result.err;
        std::string const said = machine && result.out.empty() ? result.err : result.out;
        EXPECT_TRUE(json::accept(said)) << said;
        bool const dry = options.ends_with("-n ") || row.done.empty();
        EXPECT_EQ(said, row.dry.empty() ? said : here(dry ? row.dry : row.done) + "\n");
      }
    }
  }
  // These go elsewhere or have no end, and are tried with that.
  all += "prefs watch|prefs wait|open|mail|register|completion|";
  for (tool::Verb const *const verb : tool::Verbs())
    EXPECT_NE(all.find("|" + tool::NameOf(*verb)), std::string::npos) << tool::NameOf(*verb);
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
