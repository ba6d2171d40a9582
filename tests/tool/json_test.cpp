#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/tool/tool_fixture.h"

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
